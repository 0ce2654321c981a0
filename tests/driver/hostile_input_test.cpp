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

// Each line ends at once with one clear message and status 1, before any heavy work. The
// lines run in the test's folder; no mesh is written, since nothing is loaded before the refusals.
TEST(HostileInput, RefusedWithAMessageNamingTheCause)
{
    test::TempDir dir;
    test::WriteFile(dir.File("model.json"), R"({"channelMap": [0], "modelPoints": [[0.05, 0, 0]]})");
    test::WriteFile(dir.File("deep.json"), std::string(1001, '[') + "\n");
    std::filesystem::create_directory(dir.File("folder.json"));
    const std::vector<std::string> generate = {"/generate", "/nsensors", "8", "/sensors", "no.stl", "/outmodel", "o"};
    struct Case
    {
        std::vector<std::string> arguments;
        std::vector<std::string> prefix;
        const char* err;
    } cases[] = {
        {{"/model", "model.json", "/angleresolutiondegrees", "1e-9"}, {},
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
        {{"/verifycoverage", "2000000000", "/outscad", "o.scad", "/sensors", "no.stl"}, {},
         "/verifycoverage 2000000000 is more than the 10000000 seats one drawing can show\n"},
        {{"/maxsurfaceangle", "nan"}, generate, "/maxsurfaceangle nan: the angle must be from -180 to 180 degrees\n"},
        {{"/maxsurfaceangle", "-181"}, generate, "/maxsurfaceangle -181: the angle must be from -180 to 180 degrees\n"},
        {{"/threads", "2000000000"}, generate, "/threads 2000000000 is more than the 1024 threads kelvorig can start\n"},
        {{"/norientations", "2000000000"}, generate,
         "/norientations 2000000000 is more than the 1000000 orientations an anneal can sample\n"},
        {{"/model", "deep.json"}, {},
         "couldn't parse standalone pharoscope_config deep.json: Exceeded stackLimit in readValue().\n"},
        {{"/model", "folder.json"}, {}, "couldn't read folder.json: is a directory\n"},
        {{"/model", "model.json", "/sensors", "folder.json"}, {},
         "IOError: folder.json is a directory.\nCould not build tracked surface from \"folder.json\"\n"},
    };
    for (const Case& c : cases)
    {
        std::vector<std::string> line = c.prefix;
        line.insert(line.end(), c.arguments.begin(), c.arguments.end());
        const test::CliResult result = test::RunKelvorig(line, dir.path());
        EXPECT_EQ(result.status, 1) << c.arguments[1];
        EXPECT_EQ(result.err + result.out, c.err) << c.arguments[1];
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
    test::TempDir dir;
    for (const std::string& bytes : {test::BinaryStl(test::MakeTetrahedron(0.1f)), test::TextStl(test::MakeBox({1, 2, 3}))})
    {
        test::WriteFile(dir.File("mesh.stl"), bytes);
        FloatLists vertices[2], normals[2];
        IndexLists facets[2];
        ASSERT_TRUE(ReadStlFile(dir.File("mesh.stl"), vertices[0], facets[0], normals[0]));
        ASSERT_TRUE(ReadStlBytes("mesh", bytes, vertices[1], facets[1], normals[1]));
        EXPECT_TRUE(vertices[0] == vertices[1] && facets[0] == facets[1] && normals[0] == normals[1]);
    }
}

} // namespace
} // namespace kelvorig
