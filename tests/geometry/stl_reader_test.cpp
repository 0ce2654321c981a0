#include "geometry/stl_reader.h"

#include "geometry/random_draws.h"

#include "support/cli_runner.h"
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
using test::WriteFile;

struct ReadResult
{
    bool ok = false;
    std::string err;
    FloatLists vertices;
    IndexLists facets;
    FloatLists normals;
};

ReadResult Read(const std::string& path)
{
    ReadResult result;
    testing::internal::CaptureStderr();
    result.ok = ReadStlFile(path, result.vertices, result.facets, result.normals);
    result.err = testing::internal::GetCapturedStderr();
    return result;
}

ReadResult ReadContents(const std::string& contents)
{
    const TempDir dir;
    WriteFile(dir.File("mesh.stl"), contents);
    ReadResult result = Read(dir.File("mesh.stl"));
    // Messages name the path as given; make them independent of the directory.
    for (size_t at = result.err.find(dir.path()); at != std::string::npos; at = result.err.find(dir.path()))
        result.err.replace(at, dir.path().size() + 1, "");
    return result;
}

// What a binary read of `bytes` with an absurd facet count reports: the message of the
// field in which the bytes run out.
std::string BinaryShortReadMessage(const std::string& bytes)
{
    const size_t rest = (bytes.size() - 84) % 50;
    const int code = rest < 12 ? 3 : (rest < 48 ? 4 : 5);
    return "IOError: mesh.stl bad format (" + std::to_string(code) + ").\n";
}

int32_t CountField(const std::string& bytes)
{
    uint32_t word = 0;
    for (int k = 3; k >= 0; --k)
        word = (word << 8) | static_cast<unsigned char>(bytes[80 + k]);
    return static_cast<int32_t>(word);
}

const std::string kFacet = "facet normal 0 0 1\n outer loop\n  vertex 0 0 0\n  vertex 1 0 0\n  vertex 0 1 0\n endloop\nendfacet\n";

TEST(StlReaderTest, TextFacetsBecomeATriangleSoup)
{
    const ReadResult result = ReadContents(TextStl(MakeTetrahedron(2.0f)));
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.err, "");
    ASSERT_EQ(result.facets.size(), 4u);
    ASSERT_EQ(result.vertices.size(), 12u);
    ASSERT_EQ(result.normals.size(), 4u);
    for (int32_t t = 0; t < 4; ++t)
        EXPECT_EQ(result.facets[t], (std::vector<int32_t>{3 * t, 3 * t + 1, 3 * t + 2}));
    EXPECT_EQ(result.vertices[3], (std::array<float, 3>{0.0f, 0.0f, 0.0f}));
    EXPECT_EQ(result.vertices[4], (std::array<float, 3>{2.0f, 0.0f, 0.0f}));
    EXPECT_EQ(result.vertices[5], (std::array<float, 3>{0.0f, 0.0f, 2.0f}));
    EXPECT_EQ(result.normals[1], (std::array<float, 3>{0.0f, -1.0f, 0.0f}));
}

TEST(StlReaderTest, BinaryFacetsBecomeATriangleSoup)
{
    const test::TestMesh box = MakeBox(Eigen::Vector3f(2, 4, 6));
    const ReadResult result = ReadContents(BinaryStl(box));
    ASSERT_TRUE(result.ok) << result.err;
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

TEST(StlReaderTest, SharedEdgesAndZeroNormalsAreKeptAsWritten)
{
    const ReadResult result = ReadContents(
        "solid pair\nfacet normal 0 0 0\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
        "facet normal 0 0 1\nouter loop\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid pair\n");
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.vertices.size(), 6u);
    EXPECT_EQ(result.normals[0], (std::array<float, 3>{0.0f, 0.0f, 0.0f}));
    EXPECT_EQ(result.vertices[1], result.vertices[3]);
}

TEST(StlReaderTest, EmptySolidsReadAsNoFacets)
{
    std::string zeroCount = BinaryStl(MakeTetrahedron(1.0f)).substr(0, 84);
    std::memset(zeroCount.data() + 80, 0, 4);
    std::string negativeCount = BinaryStl(MakeTetrahedron(1.0f));
    std::memset(negativeCount.data() + 80, 0xFF, 4);
    for (const std::string& contents : {std::string("solid empty\nendsolid empty\n"), std::string("solid\nendsolid"),
                                        zeroCount, negativeCount})
    {
        const ReadResult result = ReadContents(contents);
        EXPECT_TRUE(result.ok) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_TRUE(result.vertices.empty());
        EXPECT_TRUE(result.facets.empty());
        EXPECT_TRUE(result.normals.empty());
    }
}

TEST(StlReaderTest, TextFaultsAreReportedByPlace)
{
    const struct
    {
        std::string contents;
        std::string err;
    } cases[] = {
        {"", "IOError: mesh.stl too short.\n"},
        {" \n\t \r\n  ", "IOError: mesh.stl too short.\n"},
        {"solid", "IOError: mesh.stl too short.\n"},
        {"  solid", "IOError: mesh.stl too short.\n"},
        {"solid name", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\n" + kFacet, "IOError: mesh.stl bad format (1).\n"},
        {"solid name\nfacet normal 0 0\nouter loop\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\nfacet normal 0 zero 1\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\nfacet norm 0 0 1\nouter loop\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\nfacets normal 0 0 1\nouter loop\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\n" + kFacet + "endsolids name\n", "IOError: mesh.stl bad format (1).\n"},
        {"solid name\nfacet normal 0 0 1\n", "IOError: mesh.stl bad format (2).\n"},
        {"solid name\nfacet normal 0 0 1\nouter\n", "IOError: mesh.stl bad format (2).\n"},
        {"solid name\nfacet normal 0 0 1\ninner loop\n", "IOError: mesh.stl bad format (2).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loops\n", "IOError: mesh.stl bad format (2).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex 0 0\nendloop\n", "IOError: mesh.stl bad format (3).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex 0 0 z\n", "IOError: mesh.stl bad format (3).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex", "IOError: mesh.stl bad format (3).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\n", "IOError: mesh.stl bad format (4).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n", "IOError: mesh.stl bad format (4).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nVERTEX 0 0 0\n", "IOError: mesh.stl bad format (4).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nendfacet\n", "IOError: mesh.stl bad format (4).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nendloop\n", "IOError: mesh.stl bad format (5).\n"},
        {"solid name\nfacet normal 0 0 1\nouter loop\nendloop\nendsolid\n", "IOError: mesh.stl bad format (5).\n"},
        {"solid name\n" + kFacet.substr(0, kFacet.size() - 9) + "endfacets\n", "IOError: mesh.stl bad format (5).\n"},
    };
    for (const auto& c : cases)
    {
        const ReadResult result = ReadContents(c.contents);
        EXPECT_FALSE(result.ok) << c.contents;
        EXPECT_EQ(result.err, c.err) << c.contents;
    }
}

TEST(StlReaderTest, EndsolidEndsTheFileWhateverFollows)
{
    const ReadResult result = ReadContents("solid name\n" + kFacet + "endsolid\n garbage 1 2 ");
    EXPECT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.facets.size(), 1u);
}

TEST(StlReaderTest, FacetsKeepTheirOwnVertexCount)
{
    const ReadResult result = ReadContents(
        "solid quad\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\n"
        "endloop\nendfacet\nendsolid quad\n");
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.facets[0], (std::vector<int32_t>{0, 1, 2, 3}));
}

TEST(StlReaderTest, OverlongWordsAreReadWholeAndMatchNoKeyword)
{
    const std::string longWord(5000, 'w');
    EXPECT_EQ(ReadContents("solid name\n" + longWord + " normal 0 0 1\n").err, "IOError: mesh.stl bad format (1).\n");
    EXPECT_EQ(ReadContents("solid name\nendsolid" + longWord).err, "IOError: mesh.stl bad format (1).\n");
    EXPECT_EQ(ReadContents("solid name\nfacet normal 0 0 1 outer " + longWord + "\n").err,
              "IOError: mesh.stl bad format (2).\n");
    // A first word that isn't "solid" sends the file down the binary path.
    const std::string bytes = "solid" + longWord;
    EXPECT_EQ(ReadContents(bytes).err, BinaryShortReadMessage(bytes));
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
        {1, 1},   {79, 1},  {80, 2},  {83, 2},  {84, 3},  {95, 3},  {96, 4}, {107, 4}, {108, 4}, {119, 4},
        {120, 4}, {131, 4}, {132, 5}, {133, 5}, {134, 3}, {183, 5}, {584, 3}, {683, 5},
    };
    for (const auto& c : cases)
    {
        std::string contents = whole.substr(0, c.length);
        contents[0] = '\x01';  // non-printing: binary however short the file is
        const ReadResult result = ReadContents(contents);
        EXPECT_FALSE(result.ok) << c.length;
        EXPECT_EQ(result.err, "IOError: mesh.stl bad format (" + std::to_string(c.code) + ").\n") << c.length;
    }
}

TEST(StlReaderTest, BinaryBytesBehindTheLastFacetAreIgnored)
{
    const ReadResult result = ReadContents(BinaryStl(MakeBox(Eigen::Vector3f(1, 1, 1))) + "trailing bytes\x01\x02");
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.facets.size(), 12u);
}

TEST(StlReaderTest, CountBeyondTheFileFailsWhereTheBytesEnd)
{
    std::string bytes = BinaryStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    const uint32_t absurd = 0x7FFFFFFFu;
    std::memcpy(bytes.data() + 80, &absurd, 4);
    const ReadResult result = ReadContents(bytes);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.err, "IOError: mesh.stl bad format (3).\n");
    EXPECT_EQ(ReadContents(bytes + std::string(20, '\0')).err, "IOError: mesh.stl bad format (4).\n");
}

TEST(StlReaderTest, ContentsAloneTellTextFromBinary)
{
    // A binary file whose header starts with "solid" is binary when a non-printing byte
    // comes within the first 256 bytes...
    std::string binary = BinaryStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    binary.replace(0, 12, "solid header");
    const ReadResult asBinary = ReadContents(binary);
    EXPECT_TRUE(asBinary.ok) << asBinary.err;
    EXPECT_EQ(asBinary.facets.size(), 12u);

    // ...and read as text when its first 256 bytes are all printable.
    std::string printable = "solid header" + std::string(68, ' ') + std::string(176, 'A');
    printable += std::string(4, '\x01');
    EXPECT_EQ(ReadContents(printable).err, "IOError: mesh.stl bad format (1).\n");

    // A text file with a byte from 0x80 up in its name is taken for binary.
    const std::string accented = TextStl(MakeBox(Eigen::Vector3f(1, 1, 1)), "d\xC3\xA9vice");
    ASSERT_GT(CountField(accented), static_cast<int32_t>((accented.size() - 84) / 50));
    EXPECT_EQ(ReadContents(accented).err, BinaryShortReadMessage(accented));

    // A control byte that is not white space does the same...
    std::string withControl = TextStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    withControl[200] = '\x07';
    EXPECT_EQ(ReadContents(withControl).err, BinaryShortReadMessage(withControl));
    // ...but one behind the first 256 bytes is not looked at by the probe.
    std::string lateControl = TextStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    lateControl.insert(lateControl.size() - 5, "\x07");
    EXPECT_EQ(ReadContents(lateControl).err, "");

    // The keyword is case-sensitive: capitals go down the binary path.
    std::string capitals = TextStl(MakeBox(Eigen::Vector3f(1, 1, 1)));
    capitals.replace(0, 5, "SOLID");
    ASSERT_GT(CountField(capitals), static_cast<int32_t>((capitals.size() - 84) / 50));
    EXPECT_EQ(ReadContents(capitals).err, BinaryShortReadMessage(capitals));
}

TEST(StlReaderTest, DamagedFilesFailWithOneMessageOrReadWhole)
{
    const std::string text = TextStl(MakeTetrahedron(1.0f));
    const std::string binary = BinaryStl(MakeTetrahedron(1.0f));
    RandomEngine engine(3);
    for (int i = 0; i < 400; ++i)
    {
        std::string damaged = (i % 2 == 0) ? text : binary;
        // Flip a few bytes, then maybe cut the file short.
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
    const ReadResult result = Read(dir.File("missing.stl"));
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.err, "IOError: " + dir.File("missing.stl") + " could not be opened...\n");
    const ReadResult directory = Read(dir.path());
    EXPECT_FALSE(directory.ok);
}

} // namespace
} // namespace kelvorig
