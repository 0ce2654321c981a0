#include "support/cli_runner.h"
#include "support/scad_drawing.h"
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
using test::kScadDisc;

const char* kModel = R"({
    "channelMap": [3, -1, 5],
    "modelPoints": [[0.01, -0.02, 0.045], [0.09, 0, 0], [0, 0.055, 0.5]],
    "modelNormals": [[0, 0, 1], [2, 0, 0], [0, 0.6, 0.8]]
})";

// The drawing's head as far as the sensor list: the mesh block holds `imports`.
std::string Head(const std::string& modelPath, const std::string& scale, const std::string& imports)
{
    return "/* From " + modelPath + "*/\n\n\n$fn = 40;\n\nscale([" + scale + "]) {\n" + imports + "}\n\n";
}

const std::string kRows = "sensors = [\n"
                          "\t[ [ 3, \"lime\" ], [ 0.01, -0.02, 0.045], -0, [1, 0, 0] ],\n"
                          "\t[ [ -1, \"lime\" ], [ 0.09, 0, 0], -90, [0, -1, 0] ],\n"
                          "\t[ [ 5, \"lime\" ], [ 0, 0.055, 0.5], -36.8699, [1, 0, 0] ],\n";

std::string Drawing(const std::string& modelPath, const std::string& marker)
{
    return Head(modelPath, "1000, 1000, 1000", "") + kRows + test::ScadDrawingTail(marker);
}

TEST(ModelDrawing, WritesTheWholeDrawingAndNoReport)
{
    const TempDir dir;
    const std::string model = dir.File("m.json");
    WriteFile(model, kModel);
    const struct
    {
        std::vector<std::string> arguments;
        std::string drawing;
    } cases[] = {
        {{"/model", "m.json", "/outscad", "m.scad"}, Drawing("m.json", kScadDisc)},
        {{"/Model", model, "/OUTSCAD", "m.scad", "/withscadnormals"},
         Drawing(model, "\t\tcylinder(r1 = 0.0025, r2 = 0, h = 0.005);\n")},
        // The drawing takes precedence over the analysis switches; the last /outscad counts.
        {{"/model", "m.json", "/outscad", "old.scad", "/outscad", "m.scad", "/distancebasemeters", "3",
          "/basestationsensitivity", "/coolingrate", "1.0", "/qualityrange", "5", "2", "/obstacles", "ignored.stl"},
         Drawing("m.json", kScadDisc)},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig(c.arguments, dir.path());
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(ReadFile(dir.File("m.scad")), c.drawing);
    }
    EXPECT_FALSE(std::filesystem::exists(dir.File("old.scad")));

    // An output that can't be written ends the run with a message.
    const CliResult unwritable = RunKelvorig({"/model", "m.json", "/outscad", "no_such_dir/m.scad"}, dir.path());
    EXPECT_EQ(unwritable.status, 1);
    EXPECT_EQ(unwritable.err, "cannot write no_such_dir/m.scad: No such file or directory\n");
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
    EXPECT_EQ(ReadFile(dir.File("m.scad")),
              Head("m.json", "1000, 1000, 1000", "\tcolor(\"orange\") import(\"shell_m.stl\", convexity = 4);\n") +
                  kRows + test::ScadDrawingTail(kScadDisc));

    const CliResult millimetres = RunKelvorig(
        {"/model", "m.json", "/sensors", "shell_mm.stl", "/obstacles", "strap.stl", "/outscad", "mm.scad"}, dir.path());
    EXPECT_EQ(millimetres.status, 0) << millimetres.err;
    const std::string mm = ReadFile(dir.File("mm.scad"));
    EXPECT_EQ(mm.substr(0, mm.find("sensors = [")),
              Head("m.json", "1, 1, 1",
                   "\tcolor(\"orange\") import(\"shell_mm.stl\", convexity = 4);\n"
                   "\tcolor(\"white\") import(\"strap.stl\", convexity = 4);\n"));
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
