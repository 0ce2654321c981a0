#include "support/cli_runner.h"

#include <gtest/gtest.h>

#include <json/reader.h>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

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

} // namespace
} // namespace kelvorig
