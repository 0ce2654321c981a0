#include "geometry/stl_reader.h"
#include "optimiser/mesh_surface.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kelvorig {
namespace {

using test::TempDir;

// "@" in an argument or a message stands for the test's folder.
std::string InFolder(std::string text, const std::string& folder)
{
    for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + folder.size()))
        text.replace(at, 1, folder);
    return text;
}

// Each line ends at once with one clear message and status 1, before any heavy work.
TEST(HostileInput, RefusedWithAMessageNamingTheCause)
{
    TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)));
    test::WriteFile(dir.File("model.json"), R"({"channelMap": [0], "modelPoints": [[0.05, 0, 0]]})");
    test::WriteFile(dir.File("deep.json"), std::string(1001, '[') + "\n");
    std::filesystem::create_directory(dir.File("folder.json"));
    const std::vector<std::string> generate = {"/generate", "/nsensors", "8", "/sensors", "@/box.stl", "/outmodel",
                                               "@/out.json"};
    struct Case
    {
        std::vector<std::string> arguments;
        std::vector<std::string> prefix;
        const char* err;
    } cases[] = {
        {{"/model", "@/model.json", "/angleresolutiondegrees", "1e-9"}, {},
         "/angleresolutiondegrees 1e-09 would make a grid of 6.48e+22 rows: more than the 100000000 a report can take\n"},
        {{"/niterations", "2000000000"}, generate,
         "the anneal would make about 3.1e+12 moves (/nsensors 8, /niterations 2000000000, /coolingrate 0.96, "
         "/restarts 1): more than the 1000000000 a run can finish\n"},
        {{"/niterations", "100000", "/restarts", "7"}, generate,
         "the anneal would make about 1.09e+09 moves (/nsensors 8, /niterations 100000, /coolingrate 0.96, "
         "/restarts 7): more than the 1000000000 a run can finish\n"},
        {{"/coolingrate", "0.99999999999"}, generate,
         "the anneal would make about 1.91e+13 moves (/nsensors 8, /niterations 3, /coolingrate 0.99999999999, "
         "/restarts 1): more than the 1000000000 a run can finish\n"},
        {{"/verifycoverage", "2000000000", "/outscad", "@/out.scad", "/sensors", "@/box.stl"}, {},
         "/verifycoverage 2000000000 is more than the 10000000 seats one drawing can show\n"},
        {{"/maxsurfaceangle", "nan"}, generate, "/maxsurfaceangle nan: the angle must be from -180 to 180 degrees\n"},
        {{"/maxsurfaceangle", "-181"}, generate, "/maxsurfaceangle -181: the angle must be from -180 to 180 degrees\n"},
        {{"/norientations", "2000000000"}, generate,
         "/norientations 2000000000 is more than the 1000000 orientations an anneal can sample\n"},
        {{"/model", "@/deep.json"}, {},
         "couldn't parse standalone pharoscope_config @/deep.json: Exceeded stackLimit in readValue().\n"},
        {{"/model", "@/folder.json"}, {}, "couldn't read @/folder.json: is a directory\n"},
        {{"/model", "@/model.json", "/sensors", "@"}, {},
         "IOError: @ is a directory.\nCould not build tracked surface from \"@\"\n"},
    };
    for (const Case& c : cases)
    {
        std::vector<std::string> line = c.prefix;
        line.insert(line.end(), c.arguments.begin(), c.arguments.end());
        for (std::string& argument : line)
            argument = InFolder(argument, dir.path());
        const test::CliResult result = test::RunKelvorig(line);
        EXPECT_EQ(result.status, 1) << c.arguments[1];
        EXPECT_EQ(result.err, InFolder(c.err, dir.path())) << c.arguments[1];
        EXPECT_EQ(result.out, "");
    }
}

TEST(HostileInput, MovesPerTemperatureAreCountedIn64Bits)
{
    test::MeshSurface box;
    PlacementLayout layout(8);
    const SensorPlacementAnnealer annealer(layout, box.surface(), 2'000'000'000, 20, 0.5, -1.0, -1.0, 1u);
    EXPECT_EQ(annealer.movesPerTemperature(), 16'000'000'000);
}

TEST(HostileInput, StlBytesInMemoryReadAsTheFileDoes)
{
    TempDir dir;
    const test::TestMesh box = test::MakeBox(Eigen::Vector3f(0.1f, 0.2f, 0.3f));
    for (const std::string& bytes : {test::BinaryStl(box), test::TextStl(box)})
    {
        test::WriteFile(dir.File("box.stl"), bytes);
        FloatLists fileVertices, fileNormals, vertices, normals;
        IndexLists fileFacets, facets;
        ASSERT_TRUE(ReadStlFile(dir.File("box.stl"), fileVertices, fileFacets, fileNormals));
        ASSERT_TRUE(ReadStlBytes("box", bytes, vertices, facets, normals));
        EXPECT_EQ(vertices, fileVertices);
        EXPECT_EQ(facets, fileFacets);
        EXPECT_EQ(normals, fileNormals);
        EXPECT_EQ(facets.size(), 12u);
    }
}

} // namespace
} // namespace kelvorig
