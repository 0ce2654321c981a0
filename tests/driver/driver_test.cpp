#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <json/reader.h>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

// The front shell of a headset as a box, 180 x 110 x 90 mm, in metres.
const Eigen::Vector3f kShellSize(0.18f, 0.11f, 0.09f);

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(Loading, ModelThatCannotBeReadEndsTheRunWithTheLoadersMessage)
{
    const TempDir dir;
    WriteFile(dir.File("empty.json"), "");
    const struct
    {
        std::vector<std::string> arguments;
        std::string err;
    } cases[] = {
        {{"/model", "missing.json"}, "couldn't read missing.json: file is empty or does not exist\n"},
        {{"/model", "empty.json", "/outscad", "x.scad"}, "couldn't read empty.json: file is empty or does not exist\n"},
        {{"/model", "/generate"}, "couldn't read cfg/hmd//generate.json: file is empty or does not exist\n"},
        {{"/model", "NoSuchHeadset"}, "couldn't read cfg/hmd/NoSuchHeadset.json: file is empty or does not exist\n"},
        // The model is loaded before the surface is built.
        {{"/generate", "/model", "missing.json", "/sensors", "missing.stl", "/outmodel", "o.json", "/nsensors", "4"},
         "couldn't read missing.json: file is empty or does not exist\n"},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig(c.arguments, dir.path());
        EXPECT_EQ(result.status, 1) << c.arguments[1];
        EXPECT_EQ(result.err, c.err);
        EXPECT_EQ(result.out, "");
    }
}

TEST(Loading, BrokenStandaloneModelReportsTheParser)
{
    const TempDir dir;
    const std::string text = "{ \"channelMap\": [0, }";
    WriteFile(dir.File("broken.json"), text);
    Json::Value ignored;
    Json::Reader reader;
    ASSERT_FALSE(reader.parse(text, ignored, true));

    const CliResult result = RunKelvorig({"/model", "broken.json"}, dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "couldn't parse standalone pharoscope_config broken.json: " + reader.getFormattedErrorMessages() + "\n");
}

TEST(Loading, WrongTypedModelIsOneClearLineNotAnAbort)
{
    const TempDir dir;
    WriteFile(dir.File("typed.json"), R"({"channelMap": {"a": 1}, "modelPoints": 3})");
    const CliResult result = RunKelvorig({"/model", "typed.json", "/outscad", "x.scad"}, dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.rfind("kelvorig: error reading typed.json: ", 0), 0u) << result.err;
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
}

TEST(Loading, SurfaceThatCannotBeBuiltNamesEveryMesh)
{
    const TempDir dir;
    WriteFile(dir.File("m.json"), R"({"channelMap": [0], "modelPoints": [[0, 0, 0]], "modelNormals": [[0, 0, 1]]})");
    const struct
    {
        std::vector<std::string> arguments;
        std::string end;
    } cases[] = {
        {{"/model", "m.json", "/sensors", "missing.stl", "/obstacles", "a.stl", "/obstacles", "b 2.stl"},
         "Could not build tracked surface from \"missing.stl\" and \"a.stl\" and \"b 2.stl\"\n"},
        {{"/verifycoverage", "10", "/sensors", "missing.stl", "/outscad", "c.scad"},
         "Could not build tracked surface from \"missing.stl\"\n"},
        {{"/generate", "/sensors", "missing.stl", "/outscad", "g.scad", "/nsensors", "4"},
         "Could not build tracked surface from \"missing.stl\"\n"},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig(c.arguments, dir.path());
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(EndsWith(result.err, c.end)) << result.err;
        EXPECT_EQ(result.out, "");
    }
}

TEST(Loading, InputPointsOffTheSurfaceAreWarnedOfAndTheRunGoesOn)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(kShellSize));
    // The entry with id -1 is no sensor, so the warning counts the sensors from the second.
    WriteFile(dir.File("m.json"), R"({"channelMap": [-1, 4, 2],
        "modelPoints": [[0, 0, 0.045], [0.25, -1.5, 3], [0.09, 0.01, 0]],
        "modelNormals": [[0, 0, 1], [0, 0, 1], [1, 0, 0]]})");
    const CliResult result =
        RunKelvorig({"/model", "m.json", "/sensors", "shell.stl", "/outscad", "m.scad"}, dir.path());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "WARNING: Input model point 0 doesn't seem to be on the supplied sensor surface at "
                          "0.25 -1.5    3\n");
}

TEST(Loading, ImmutableSensorCountIsCheckedBeforeTheSurfaceWarnings)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(kShellSize));
    WriteFile(dir.File("m.json"), R"({"channelMap": [0, 1], "modelPoints": [[1, 1, 1], [2, 2, 2]],
        "modelNormals": [[0, 0, 1], [0, 0, 1]]})");
    const CliResult result = RunKelvorig(
        {"/generate", "/model", "m.json", "/sensors", "shell.stl", "/outmodel", "o.json", "/nsensors", "2"}, dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.rfind("Model of immutable sensors", 0), 0u) << result.err;
    EXPECT_EQ(result.err.find("WARNING"), std::string::npos) << result.err;
}

TEST(Loading, ObstaclesTakePartInBuildingTheSurface)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(kShellSize));
    WriteFile(dir.File("m.json"), R"({"channelMap": [0], "modelPoints": [[0, 0, 0.045]], "modelNormals": [[0, 0, 1]]})");
    const CliResult result = RunKelvorig(
        {"/model", "m.json", "/sensors", "shell.stl", "/obstacles", "missing.stl", "/outscad", "m.scad"}, dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(EndsWith(result.err, "Could not build tracked surface from \"shell.stl\" and \"missing.stl\"\n"))
        << result.err;
}

size_t CountRows(const std::string& drawing)
{
    size_t rows = 0;
    for (size_t at = drawing.find("\"lime\""); at != std::string::npos; at = drawing.find("\"lime\"", at + 1))
        ++rows;
    return rows;
}

TEST(Dispatch, CoverageComesBeforeGenerate)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(kShellSize));
    const CliResult result = RunKelvorig(
        {"/generate", "/nsensors", "4", "/verifycoverage", "6", "/sensors", "shell.stl", "/outscad", "c.scad"},
        dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(CountRows(test::ReadFile(dir.File("c.scad"))), 6u);
}

TEST(Dispatch, NegativeCoverageCountDrawsNoSeats)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(kShellSize));
    const CliResult result =
        RunKelvorig({"/verifycoverage", "-3", "/sensors", "shell.stl", "/outscad", "c.scad"}, dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(test::ReadFile(dir.File("c.scad")).find("sensors = [\n];\n"), std::string::npos);
}

} // namespace
} // namespace kelvorig
