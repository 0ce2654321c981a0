#include "geometry/stl_reader.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace kelvorig {
namespace {

using test::BinaryStl;
using test::MakeBox;
using test::TextStl;

struct ReadResult
{
    bool ok = false;
    std::string err;
    FloatLists vertices;
    IndexLists facets;
    FloatLists normals;
};

// Reads `contents` from a file named mesh.stl; messages are made independent of its directory.
ReadResult ReadContents(const std::string& contents)
{
    const test::TempDir dir;
    test::WriteFile(dir.File("mesh.stl"), contents);
    ReadResult result;
    const Status read = ReadStlFile(dir.File("mesh.stl"), result.vertices, result.facets, result.normals);
    result.ok = read.ok();
    result.err = read.message();
    for (size_t at = result.err.find(dir.path()); at != std::string::npos; at = result.err.find(dir.path()))
        result.err.replace(at, dir.path().size() + 1, "");
    return result;
}

std::string BadFormat(int code)
{
    return "IOError: mesh.stl bad format (" + std::to_string(code) + ").\n";
}

// Text and binary facets, whatever trails them, become the same soup: three corners each in order.
TEST(StlReaderTest, GoodFilesBecomeATriangleSoup)
{
    const test::TestMesh box = MakeBox(Eigen::Vector3f(2, 4, 6));
    const std::string text = TextStl(box);
    // A control byte behind the first 256 bytes is not looked at; a binary header starting
    // with "solid" is binary when a non-printing byte comes within the first 256.
    std::string lateControl = text, solidHeader = BinaryStl(box);
    lateControl.insert(lateControl.size() - 5, 1, '\x07');
    solidHeader.replace(0, 12, "solid header");
    for (const std::string& contents : {text, BinaryStl(box), BinaryStl(box) + "trailing bytes\x01\x02", lateControl,
                                        solidHeader, text.substr(0, text.size() - 5) + "\n garbage 1 2 "})
    {
        const ReadResult result = ReadContents(contents);
        ASSERT_TRUE(result.ok && result.err.empty()) << result.err;
        ASSERT_EQ(std::make_pair(result.facets.size(), result.vertices.size()), std::make_pair(12ul, 36ul));
        for (size_t t = 0; t < 12; ++t)
        {
            const int32_t first = static_cast<int32_t>(3 * t);
            EXPECT_EQ(result.facets[t], (std::vector<int32_t>{first, first + 1, first + 2}));
            const Eigen::Vector3f n = box.FacetNormal(t);
            EXPECT_EQ(result.normals[t], (std::array<float, 3>{n.x(), n.y(), n.z()}));
            for (int k = 0; k < 3; ++k)
            {
                const Eigen::Vector3f& v = box.vertices[box.triangles[t][k]];
                EXPECT_EQ(result.vertices[3 * t + k], (std::array<float, 3>{v.x(), v.y(), v.z()}));
            }
        }
    }
    std::string zeroCount = BinaryStl(box).substr(0, 84), negativeCount = BinaryStl(box);
    std::memset(zeroCount.data() + 80, 0, 4);
    std::memset(negativeCount.data() + 80, 0xFF, 4);
    for (const std::string& contents : {std::string("solid empty\nendsolid empty\n"), zeroCount, negativeCount})
    {
        const ReadResult result = ReadContents(contents);
        EXPECT_TRUE(result.ok && result.err.empty()) << result.err;
        EXPECT_TRUE(result.vertices.empty() && result.facets.empty() && result.normals.empty());
    }
}

// Every way out of the reader, each with its one-line message. (Arbitrary bytes are the fuzz
// target's: fuzz/stl_reader_fuzz.cpp.)
TEST(StlReaderTest, FaultsAreReportedByPlace)
{
    const std::string facet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n  vertex 0 1 0\n "
                              "endloop\nendfacet\n";
    const std::string head = "solid name\nfacet normal 0 0 1\n";
    // Text faults by the code they report (0: too short); the last of code 1 has all of its first
    // 256 bytes printable, which makes it text however binary the rest.
    const std::pair<int, std::vector<std::string>> textFaults[] = {
        {0, {"", " \n\t \r\n  ", "  solid"}},
        {1,
         {"solid name\n", "solid name\n" + facet, "solid name\nfacet normal 0 zero 1\n",
          "solid name\nfacets normal 0 0 1\nouter loop\n", "solid name\n" + facet + "endsolids name\n",
          "solid header" + std::string(244, 'A') + "\x01\x01\x01\x01"}},
        {2, {head, head + "inner loop\n"}},
        {3, {head + "outer loop\nvertex 0 0\nendloop\n", head + "outer loop\nvertex 0 0 z\n"}},
        {4, {head + "outer loop\n", head + "outer loop\nVERTEX 0 0 0\n"}},
        {5,
         {head + "outer loop\nvertex 0 0 0\nendloop\n",
          "solid name\n" + facet.substr(0, facet.size() - 9) + "endfacets\n"}}};
    std::vector<std::pair<std::string, std::string>> cases;
    for (const auto& [code, texts] : textFaults)
        for (const std::string& text : texts)
            cases.emplace_back(text, code == 0 ? "IOError: mesh.stl too short.\n" : BadFormat(code));
    // Binary cut in the header, the count, a normal, each vertex, the attribute count; the first
    // byte is non-printing so that the file is binary however short it is.
    const std::string whole = BinaryStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    const std::pair<size_t, int> cuts[] = {{1, 1},   {79, 1},  {80, 2},  {83, 2},  {84, 3},  {95, 3},
                                           {96, 4},  {107, 4}, {108, 4}, {119, 4}, {120, 4}, {131, 4},
                                           {132, 5}, {133, 5}, {134, 3}, {183, 5}, {584, 3}, {683, 5}};
    for (const auto& [length, code] : cuts)
    {
        std::string cut = whole.substr(0, length);
        cut[0] = '\x01';
        cases.emplace_back(cut, BadFormat(code));
    }
    // A count beyond the file fails where the bytes end.
    std::string absurd = whole;
    std::memset(absurd.data() + 80, 0x7F, 4);
    cases.emplace_back(absurd, BadFormat(3));
    cases.emplace_back(absurd + std::string(20, '\0'), BadFormat(4));
    // A byte from 0x80 up, a control byte that isn't white space, or "SOLID" in capitals sends
    // text down the binary path, where it fails as far as its bytes reach.
    std::string withControl = TextStl(MakeBox(Eigen::Vector3f(1, 1, 1))), capitals = withControl;
    withControl[200] = '\x07';
    capitals.replace(0, 5, "SOLID");
    for (const std::string& bytes :
         {TextStl(MakeBox(Eigen::Vector3f(1, 1, 1)), "d\xC3\xA9vice"), withControl, capitals})
    {
        const size_t rest = (bytes.size() - 84) % 50;
        cases.emplace_back(bytes, BadFormat(rest < 12 ? 3 : (rest < 48 ? 4 : 5)));
    }
    for (const auto& [contents, err] : cases)
    {
        const ReadResult result = ReadContents(contents);
        EXPECT_FALSE(result.ok) << contents;
        EXPECT_EQ(result.err, err) << contents;
    }
}

// The fuzz targets read bytes in memory: that path must be the one a file takes.
TEST(StlReaderTest, BytesInMemoryReadAsTheFileDoes)
{
    for (const std::string& bytes : {BinaryStl(test::MakeTetrahedron(0.1f)), TextStl(MakeBox({1, 2, 3}))})
    {
        const ReadResult file = ReadContents(bytes);
        ReadResult memory;
        memory.ok = ReadStlBytes("mesh", bytes, memory.vertices, memory.facets, memory.normals).ok();
        EXPECT_TRUE(file.ok && memory.ok && file.vertices == memory.vertices && file.facets == memory.facets &&
                    file.normals == memory.normals);
    }
}

} // namespace
} // namespace kelvorig
