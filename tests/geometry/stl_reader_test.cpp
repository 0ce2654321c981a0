#include "geometry/stl_reader.h"

#include "support/cli_runner.h"
#include "support/random_draws.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace kelvorig {
namespace {

using test::BinaryStl;
using test::MakeBox;
using test::MakeTetrahedron;
using test::TempDir;
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
    const TempDir dir;
    test::WriteFile(dir.File("mesh.stl"), contents);
    ReadResult result;
    testing::internal::CaptureStderr();
    result.ok = ReadStlFile(dir.File("mesh.stl"), result.vertices, result.facets, result.normals);
    result.err = testing::internal::GetCapturedStderr();
    for (size_t at = result.err.find(dir.path()); at != std::string::npos; at = result.err.find(dir.path()))
        result.err.replace(at, dir.path().size() + 1, "");
    return result;
}

std::string BadFormat(int code)
{
    return "IOError: mesh.stl bad format (" + std::to_string(code) + ").\n";
}

// A file taken for binary whose facet count runs past its end fails in the field where the bytes run out.
std::string BinaryShortReadMessage(const std::string& bytes)
{
    const size_t rest = (bytes.size() - 84) % 50;
    return BadFormat(rest < 12 ? 3 : (rest < 48 ? 4 : 5));
}

const std::string kFacet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n  vertex 0 1 0\n endloop\nendfacet\n";

TEST(StlReaderTest, TextAndBinaryFacetsBecomeTheSameTriangleSoup)
{
    const test::TestMesh box = MakeBox(Eigen::Vector3f(2, 4, 6));
    for (const std::string& contents : {TextStl(box), BinaryStl(box), BinaryStl(box) + "trailing bytes\x01\x02"})
    {
        const ReadResult result = ReadContents(contents);
        ASSERT_TRUE(result.ok) << result.err;
        EXPECT_EQ(result.err, "");
        ASSERT_EQ(result.facets.size(), 12u);
        ASSERT_EQ(result.vertices.size(), 36u);
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
    // Text ends at endsolid whatever follows it.
    EXPECT_TRUE(ReadContents("solid name\n" + kFacet + "endsolid\n garbage 1 2 ").ok);
}

TEST(StlReaderTest, EmptySolidsReadAsNoFacets)
{
    std::string zeroCount = BinaryStl(MakeTetrahedron(1.0f)).substr(0, 84);
    std::memset(zeroCount.data() + 80, 0, 4);
    std::string negativeCount = BinaryStl(MakeTetrahedron(1.0f));
    std::memset(negativeCount.data() + 80, 0xFF, 4);
    for (const std::string& contents : {std::string("solid empty\nendsolid empty\n"), zeroCount, negativeCount})
    {
        const ReadResult result = ReadContents(contents);
        EXPECT_TRUE(result.ok) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(result.vertices.empty() && result.facets.empty() && result.normals.empty());
    }
}

TEST(StlReaderTest, TextFaultsAreReportedByPlace)
{
    const std::string head = "solid name\nfacet normal 0 0 1\n";
    const struct
    {
        std::string contents;
        std::string err;
    } cases[] = {
        {"", "IOError: mesh.stl too short.\n"},
        {" \n\t \r\n  ", "IOError: mesh.stl too short.\n"},
        {"  solid", "IOError: mesh.stl too short.\n"},
        {"solid name\n", BadFormat(1)},
        {"solid name\n" + kFacet, BadFormat(1)},
        {"solid name\nfacet normal 0 zero 1\n", BadFormat(1)},
        {"solid name\nfacets normal 0 0 1\nouter loop\n", BadFormat(1)},
        {"solid name\n" + kFacet + "endsolids name\n", BadFormat(1)},
        {head, BadFormat(2)},
        {head + "inner loop\n", BadFormat(2)},
        {head + "outer loop\nvertex 0 0\nendloop\n", BadFormat(3)},
        {head + "outer loop\nvertex 0 0 z\n", BadFormat(3)},
        {head + "outer loop\n", BadFormat(4)},
        {head + "outer loop\nVERTEX 0 0 0\n", BadFormat(4)},
        {head + "outer loop\nvertex 0 0 0\nendloop\n", BadFormat(5)},
        {"solid name\n" + kFacet.substr(0, kFacet.size() - 9) + "endfacets\n", BadFormat(5)},
    };
    for (const auto& c : cases)
    {
        const ReadResult result = ReadContents(c.contents);
        EXPECT_FALSE(result.ok) << c.contents;
        EXPECT_EQ(result.err, c.err) << c.contents;
    }
}

TEST(StlReaderTest, BinaryFaultsAreReportedByPlace)
{
    const std::string whole = BinaryStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    // Cut points: in the header, the count, a normal, each vertex, the attribute count.
    const struct
    {
        size_t length;
        int code;
    } cases[] = {
        {1, 1},   {79, 1},  {80, 2},  {83, 2},  {84, 3},  {95, 3},  {96, 4}, {107, 4}, {108, 4},
        {119, 4}, {120, 4}, {131, 4}, {132, 5}, {133, 5}, {134, 3}, {183, 5}, {584, 3}, {683, 5},
    };
    for (const auto& c : cases)
    {
        std::string contents = whole.substr(0, c.length);
        contents[0] = '\x01';  // non-printing: binary however short the file is
        const ReadResult result = ReadContents(contents);
        EXPECT_FALSE(result.ok) << c.length;
        EXPECT_EQ(result.err, BadFormat(c.code)) << c.length;
    }

    // A count beyond the file fails where the bytes end.
    std::string absurd = whole;
    const uint32_t count = 0x7FFFFFFFu;
    std::memcpy(absurd.data() + 80, &count, 4);
    EXPECT_EQ(ReadContents(absurd).err, BadFormat(3));
    EXPECT_EQ(ReadContents(absurd + std::string(20, '\0')).err, BadFormat(4));
}

TEST(StlReaderTest, ContentsAloneTellTextFromBinary)
{
    const test::TestMesh box = MakeBox(Eigen::Vector3f(1, 1, 1));
    // A binary header starting with "solid" is still binary when a non-printing byte comes
    // within the first 256 bytes...
    std::string binary = BinaryStl(box);
    binary.replace(0, 12, "solid header");
    EXPECT_EQ(ReadContents(binary).facets.size(), 12u);
    // ...and text when those bytes are all printable.
    const std::string printable = "solid header" + std::string(68, ' ') + std::string(176, 'A') + "\x01\x01\x01\x01";
    EXPECT_EQ(ReadContents(printable).err, BadFormat(1));

    // A byte from 0x80 up, a control byte that isn't white space, or "SOLID" in capitals
    // sends a text file down the binary path; a control byte behind the first 256 is not looked at.
    std::string accented = TextStl(box, "d\xC3\xA9vice");
    std::string withControl = TextStl(box);
    withControl[200] = '\x07';
    std::string capitals = TextStl(box);
    capitals.replace(0, 5, "SOLID");
    for (const std::string& bytes : {accented, withControl, capitals})
        EXPECT_EQ(ReadContents(bytes).err, BinaryShortReadMessage(bytes));
    std::string lateControl = TextStl(box);
    lateControl.insert(lateControl.size() - 5, 1, '\x07');
    EXPECT_EQ(ReadContents(lateControl).err, "");
}

TEST(StlReaderTest, DamagedFilesFailWithOneMessageOrReadWhole)
{
    const std::string text = TextStl(MakeTetrahedron(1.0f));
    const std::string binary = BinaryStl(MakeTetrahedron(1.0f));
    RandomEngine engine(3);
    for (int i = 0; i < 400; ++i)
    {
        std::string damaged = (i % 2 == 0) ? text : binary;
        for (int flips = static_cast<int>(engine() % 4); flips > 0; --flips)
            damaged[engine() % damaged.size()] = static_cast<char>(engine() & 0xFF);
        if (engine() % 2 == 0)
            damaged.resize(engine() % damaged.size());
        const ReadResult result = ReadContents(damaged);
        if (result.ok)
        {
            EXPECT_EQ(result.err, "");
            EXPECT_EQ(result.normals.size(), result.facets.size());
        }
        else
        {
            EXPECT_EQ(result.err.rfind("IOError: mesh.stl ", 0), 0u) << result.err;
            EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        }
    }
}

TEST(StlReaderTest, MissingFileCannotBeOpened)
{
    const TempDir dir;
    FloatLists vertices, normals;
    IndexLists facets;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ReadStlFile(dir.File("missing.stl"), vertices, facets, normals));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "IOError: " + dir.File("missing.stl") + " could not be opened...\n");
}

} // namespace
} // namespace kelvorig
