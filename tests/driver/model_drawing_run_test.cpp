#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace kelvorig {
namespace {

using test::CliResult;
using test::ReadFile;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

const char* kModel = R"({
    "channelMap": [3, -1, 5],
    "modelPoints": [[0.01, -0.02, 0.045], [0.09, 0, 0], [0, 0.055, 0.5]],
    "modelNormals": [[0, 0, 1], [2, 0, 0], [0, 0.6, 0.8]]
})";

std::string Drawing(const std::string& modelPath, const std::string& marker)
{
    return "/* From " + modelPath +
           "*/\n"
           "\n"
           "\n"
           "$fn = 40;\n"
           "\n"
           "scale([1000, 1000, 1000]) {\n"
           "}\n"
           "\n"
           "sensors = [\n"
           "\t[ [ 3, \"lime\" ], [ 0.01, -0.02, 0.045], -0, [1, 0, 0] ],\n"
           "\t[ [ -1, \"lime\" ], [ 0.09, 0, 0], -90, [0, -1, 0] ],\n"
           "\t[ [ 5, \"lime\" ], [ 0, 0.055, 0.5], -36.8699, [1, 0, 0] ],\n"
           "];\n"
           "\n"
           "scale([1000, 1000, 1000])\n"
           "\tconstellation();\n"
           "\n"
           "module constellation() {\n"
           "\tfor(s = sensors)\n"
           "\t\ttranslate(s[1])\n"
           "\t\t\trotate(s[2], s[3])\n"
           "\t\t\t\tsensor(s[0]);\n"
           "}\n"
           "\n"
           "module sensor(spec) {\n"
           "\tcolor(spec[1])\n" +
           marker + "}\n";
}

TEST(ModelDrawing, WritesTheWholeDrawingAndNoReport)
{
    const TempDir dir;
    WriteFile(dir.File("m.json"), kModel);
    const CliResult result = RunKelvorig({"/model", "m.json", "/outscad", "m.scad"}, dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(ReadFile(dir.File("m.scad")), Drawing("m.json", "\t\tcylinder(r = 0.0025, h = 0.001);\n"));
}

TEST(ModelDrawing, NormalsFlagDrawsCones)
{
    const TempDir dir;
    const std::string model = dir.File("m.json");
    WriteFile(model, kModel);
    const CliResult result =
        RunKelvorig({"/Model", model, "/OUTSCAD", dir.File("m.scad"), "/withscadnormals"}, dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(ReadFile(dir.File("m.scad")), Drawing(model, "\t\tcylinder(r1 = 0.0025, r2 = 0, h = 0.005);\n"));
}

TEST(ModelDrawing, TakesPrecedenceOverTheAnalysisSwitches)
{
    const TempDir dir;
    WriteFile(dir.File("m.json"), kModel);
    const CliResult result = RunKelvorig({"/model", "m.json", "/outscad", "old.scad", "/outscad", "m.scad",
                                          "/distancebasemeters", "3", "/basestationsensitivity", "/coolingrate", "1.0",
                                          "/qualityrange", "5", "2", "/obstacles", "ignored.stl"},
                                         dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
    EXPECT_FALSE(std::filesystem::exists(dir.File("old.scad")));
    EXPECT_EQ(ReadFile(dir.File("m.scad")), Drawing("m.json", "\t\tcylinder(r = 0.0025, h = 0.001);\n"));
}

// The drawing from its first line up to the sensor list, and from there to its end.
std::string Head(const std::string& drawing)
{
    return drawing.substr(0, drawing.find("sensors = ["));
}

std::string Rest(const std::string& drawing)
{
    return drawing.substr(drawing.find("sensors = ["));
}

TEST(ModelDrawing, ImportsTheSurfaceMeshesScaledToMillimetres)
{
    const TempDir dir;
    WriteFile(dir.File("m.json"), kModel);
    test::WriteBinaryStl(dir.File("shell_m.stl"), test::MakeBox(Eigen::Vector3f(0.18f, 0.11f, 0.09f)));
    test::WriteTextStl(dir.File("shell_mm.stl"), test::MakeBox(Eigen::Vector3f(180, 110, 90)));
    test::WriteBinaryStl(dir.File("strap.stl"), test::MakeBox(Eigen::Vector3f(20, 20, 20), Eigen::Vector3f(0, 0, -80)));

    const CliResult metres = RunKelvorig(
        {"/model", "m.json", "/sensors", "shell_m.stl", "/outscad", "m.scad", "/verifycoverage", "50"}, dir.path());
    EXPECT_EQ(metres.status, 0) << metres.err;
    // /verifycoverage draws no seats here: the model drawing comes first.
    EXPECT_EQ(Rest(ReadFile(dir.File("m.scad"))), Rest(Drawing("m.json", "\t\tcylinder(r = 0.0025, h = 0.001);\n")));
    EXPECT_EQ(Head(ReadFile(dir.File("m.scad"))), "/* From m.json*/\n"
                                                   "\n"
                                                   "\n"
                                                   "$fn = 40;\n"
                                                   "\n"
                                                   "scale([1000, 1000, 1000]) {\n"
                                                   "\tcolor(\"orange\") import(\"shell_m.stl\", convexity = 4);\n"
                                                   "}\n"
                                                   "\n");

    const CliResult millimetres = RunKelvorig(
        {"/model", "m.json", "/sensors", "shell_mm.stl", "/obstacles", "strap.stl", "/outscad", "mm.scad"}, dir.path());
    EXPECT_EQ(millimetres.status, 0) << millimetres.err;
    EXPECT_EQ(Head(ReadFile(dir.File("mm.scad"))), "/* From m.json*/\n"
                                                    "\n"
                                                    "\n"
                                                    "$fn = 40;\n"
                                                    "\n"
                                                    "scale([1, 1, 1]) {\n"
                                                    "\tcolor(\"orange\") import(\"shell_mm.stl\", convexity = 4);\n"
                                                    "\tcolor(\"white\") import(\"strap.stl\", convexity = 4);\n"
                                                    "}\n"
                                                    "\n");
}

TEST(ModelDrawing, UnwritableOutputIsNotAFailure)
{
    const TempDir dir;
    WriteFile(dir.File("m.json"), kModel);
    const CliResult result = RunKelvorig({"/model", "m.json", "/outscad", "no_such_dir/m.scad"}, dir.path());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
}

TEST(ModelDrawing, BundledExampleSitsOnTheBundledShell)
{
    const TempDir dir;
    const std::string examples = std::string(KELVORIG_SOURCE_DIR) + "/examples/";
    const CliResult result = RunKelvorig({"/model", examples + "example_sensors.json", "/sensors",
                                          examples + "hmd_shell.stl", "/outscad", dir.File("e.scad")});
    EXPECT_EQ(result.status, 0);
    // Every sensor of the example sits on the bundled shell: no warnings.
    EXPECT_EQ(result.err, "");
    const std::string text = ReadFile(dir.File("e.scad"));
    size_t rows = 0;
    for (size_t at = text.find("\"lime\""); at != std::string::npos; at = text.find("\"lime\"", at + 1))
        ++rows;
    EXPECT_EQ(rows, 14u);
}

TEST(ModelDrawing, OpenScadAcceptsTheDrawing)
{
    if (std::system("command -v openscad > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "openscad is not on PATH";
    const TempDir dir;
    WriteFile(dir.File("m.json"), kModel);
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(Eigen::Vector3f(180, 110, 90)));
    test::WriteTextStl(dir.File("strap.stl"), test::MakeBox(Eigen::Vector3f(20, 20, 20), Eigen::Vector3f(0, 0, -80)));
    ASSERT_EQ(RunKelvorig({"/model", "m.json", "/sensors", dir.File("shell.stl"), "/obstacles", "strap.stl",
                           "/outscad", "m.scad", "/withscadnormals"},
                          dir.path())
                  .status,
              0);
    const std::string command =
        "cd '" + dir.path() + "' && openscad -o out.csg m.scad > openscad.log 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadFile(dir.File("openscad.log"));
    EXPECT_TRUE(std::filesystem::exists(dir.File("out.csg")));
}

} // namespace
} // namespace kelvorig
