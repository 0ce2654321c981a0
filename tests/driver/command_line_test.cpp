#include "driver/command_line.h"

#include "support/angles.h"
#include "support/cli_runner.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;

// The usage text, byte for byte.
const std::string kUsage =
    "\n"
    "usage: kelvorig /generate /nsensors <count> [/model <immutable_points.json>] [/maxsurfaceangle <0.0>] "
    "[/outmodel <json>] [/outscad <scad>] [/withscadnormals] /sensors <stl> [/obstacles <stl>]... [/model <name>] "
    "[/coolingrate <~0.95>] [/norientations <~1000-5000>] [/niterations <~1-20>] [/qualityrange low high] "
    "[plot options below]\n"
    "\n"
    "usage: kelvorig /verifycoverage <1000-5000> /outscad <scad> /sensors <stl>\n"
    "\t(shows where sensors will fit)\n"
    "\n"
    "usage: kelvorig /model <name> [/sensors <stl>] [/obstacles <stl>]... /distancebasemeters <2.0> "
    "/angleresolutiondegrees <0.5> /maxincidenceangle <70.0> > results.txt\n"
    "\n"
    "usage: kelvorig /trackref_from_imu [imu_cad_info.json] -- Run with no args for sample file and "
    "instructions.\n"
    "\n"
    "usage: kelvorig /formatconvert <jsonformatnumber> [object.json] -- Reformat the existing model file. "
    "Valid format ids: {0,1}\n"
    "\n"
    "\t/sensors\tsurface to place sensors on (also occludes sensors) -- scale in meters or mm inferred by object "
    "size\n"
    "\t/obstacles\tsurface for occlusion only (also blocks impossible sensor placement) -- same scale as "
    "/sensors.  Multiple /obstacles allowed.\n"
    "\n";

struct Parsed
{
    bool ok = false;
    std::string err;
    CommandOptions options;
};

Parsed Parse(const std::vector<std::string>& arguments)
{
    Parsed parsed;
    testing::internal::CaptureStderr();
    parsed.ok = ReadCommandLine(arguments, parsed.options);
    parsed.err = testing::internal::GetCapturedStderr();
    return parsed;
}

TEST(ReadCommandLine, EverySwitchSetsItsFieldAndDefaultsAreTheRecordsOwn)
{
    const Parsed defaults = Parse({});
    EXPECT_TRUE(defaults.ok);
    EXPECT_EQ(defaults.options.maxIncidenceAngle, 60.0);
    EXPECT_EQ(defaults.options.coolingRate, 0.96);
    EXPECT_EQ(defaults.options.nOrientations, 1250);
    EXPECT_EQ(defaults.options.nSensors, -1);

    const Parsed parsed = Parse({"/generate", "/withscadnormals", "/verifycoverage", "100", "/model", "m.json",
                                 "/sensors", "s.stl", "/obstacles", "a.stl", "/outmodel", "o.json", "/outscad",
                                 "o.scad", "/maxincidenceangle", "70", "/maxsurfaceangle", "12.5", "/coolingrate",
                                 "0.9", "/nsensors", "16", "/norientations", "2000", "/niterations", "5",
                                 "/angleresolutiondegrees", "2", "/distancebasemeters", "3.5", "/qualityrange", "1",
                                 "4", "/srbtiltdegrees", "30", "/basestationsensitivity", "/obstacles", "b.stl"});
    ASSERT_TRUE(parsed.ok) << parsed.err;
    const CommandOptions& o = parsed.options;
    EXPECT_TRUE(o.generate && o.withScadNormals && o.baseStationSensitivity);
    EXPECT_EQ(o.verifyCoverage, 100);
    EXPECT_EQ(o.modelPath, "m.json");
    EXPECT_EQ(o.sensorsPath, "s.stl");
    EXPECT_EQ(o.obstaclePaths, (std::vector<std::string>{"a.stl", "b.stl"}));
    EXPECT_EQ(o.outModelPath, "o.json");
    EXPECT_EQ(o.outScadPath, "o.scad");
    EXPECT_EQ(o.maxIncidenceAngle, 70.0);
    EXPECT_EQ(o.maxSurfaceAngle, 12.5);
    EXPECT_EQ(o.coolingRate, 0.9);
    EXPECT_EQ(o.nSensors, 16);
    EXPECT_EQ(o.nOrientations, 2000);
    EXPECT_EQ(o.nIterations, 5);
    EXPECT_EQ(o.angleResolutionDegrees, 2.0);
    EXPECT_EQ(o.distanceBaseMeters, 3.5);
    EXPECT_EQ(o.qualityLow, 1.0);
    EXPECT_EQ(o.qualityHigh, 4.0);
    EXPECT_EQ(o.srbTiltRadians, DegreesToRadians(30.0));
}

// Switches ignore case, the last path wins, a value is taken whatever it looks like,
// numbers are leading scans, the quality range is put in order and the tilt is in radians.
TEST(ReadCommandLine, ValuesAreReadLeniently)
{
    const Parsed parsed = Parse({"/MODEL", "a.json", "/Model", "/generate", "/nsensors", "12abc", "/coolingrate",
                                 " 0.5x", "/norientations", "-7", "/niterations", "99999999999", "/qualityrange",
                                 "5", "2", "/srbtiltdegrees", "-12.5", "/OutScad", "x.scad"});
    ASSERT_TRUE(parsed.ok);
    const CommandOptions& o = parsed.options;
    EXPECT_EQ(o.modelPath, "/generate");
    EXPECT_FALSE(o.generate);
    EXPECT_EQ(o.outScadPath, "x.scad");
    EXPECT_EQ(o.nSensors, 12);
    EXPECT_EQ(o.coolingRate, 0.5);
    EXPECT_EQ(o.nOrientations, -7);
    EXPECT_EQ(o.nIterations, INT32_MAX);
    EXPECT_EQ(o.qualityLow, 2.0);
    EXPECT_EQ(o.qualityHigh, 5.0);
    EXPECT_EQ(o.srbTiltRadians, -12.5 * 0.005555555555555556 * 3.141592653589793);
}

// A value that doesn't scan stops the loop silently and keeps the field; a half-read
// quality range is still put in order.
TEST(ReadCommandLine, ValueThatDoesNotScanStopsSilently)
{
    const Parsed parsed = Parse({"/nsensors", "4", "/nsensors", "many", "/generate"});
    EXPECT_FALSE(parsed.ok);
    EXPECT_EQ(parsed.err, "");
    EXPECT_EQ(parsed.options.nSensors, 4);
    EXPECT_FALSE(parsed.options.generate);

    const Parsed half = Parse({"/qualityrange", "x", "-3"});
    EXPECT_FALSE(half.ok);
    EXPECT_EQ(half.options.qualityLow, -3.0);
    EXPECT_EQ(half.options.qualityHigh, -1.0);
}

TEST(CommandLine, RefusedLinesPrintTheirMessageAndFail)
{
    const std::string needsSensors = "/generate requires /sensors <surface.stl>\n";
    const std::string needsOutput = "/generate output needs /outscad <foo.scad> and/or /outmodel <foo.json>\n";
    const std::string needsCount = "must specify /nsensors with /generate\n";
    const std::string neverFinish = "/coolingrate >= 1.0 would never finish\n";
    const std::string coverage = "/verifycoverage requires /sensors and /outscad\n";
    const std::string needsDevice = "/formatconvert needs a device file after the format number\n";
    const std::vector<std::string> generate = {"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors",
                                               "8"};
    const auto plus = [&](std::vector<std::string> tail)
    {
        tail.insert(tail.begin(), generate.begin(), generate.end());
        return tail;
    };
    const struct
    {
        std::vector<std::string> arguments;
        std::string err;
    } cases[] = {
        {{}, kUsage},
        // The generate checks, in their order.
        {{"/generate"}, needsSensors},
        {{"/GENERATE"}, needsSensors},
        {{"/generate", "/sensors", "s.stl"}, needsOutput},
        {{"/generate", "/sensors", "s.stl", "/outscad", "o.scad", "/nsensors", "0"}, needsCount},
        {{"/generate", "/sensors", "s.stl", "/outscad", "o.scad", "/nsensors", "-4"}, needsCount},
        {{"/generate", "/sensors", "s.stl", "/outscad", "o.scad"}, needsCount},
        {plus({"/coolingrate", "1.0"}), neverFinish},
        {plus({"/coolingrate", "1"}), neverFinish},
        {plus({"/coolingrate", "7"}), neverFinish},
        {plus({"/srbtiltdegrees", "10"}), "/srbtiltdegrees is not plumbed to /generate yet\n"},
        {{"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors", "33"},
         "/nsensors 33 is more than the 32 sensors kelvorig can evaluate\n"},
        // Coverage needs a surface and a drawing, with or without /generate.
        {{"/verifycoverage", "1000"}, coverage},
        {{"/verifycoverage", "-5", "/sensors", "s.stl"}, coverage},
        {{"/verifycoverage", "10", "/outscad", "c.scad"}, coverage},
        {plus({"/verifycoverage", "10"}), coverage},
        // No mode and no model.
        {{"/verifycoverage", "0"}, kUsage},
        {{"/sensors", "s.stl", "/outscad", "x.scad", "/coolingrate", "1.0"}, kUsage},
        // An argument error ends in the usage unless an earlier check fires.
        {{"/model", "m.json", "/nsensors", "abc"}, kUsage},
        {{"/model", "m.json", "stray"}, "Unrecognized command line argument [ stray ].\n" + kUsage},
        {{"/model"}, "Unrecognized command line switch [ /model ].\n" + kUsage},
        {{"/model", "m.json", "/qualityrange", "1"}, "Unrecognized command line switch [ /qualityrange ].\n" + kUsage},
        {{"/bogus", "/generate"}, "Unrecognized command line switch [ /bogus ].\n" + kUsage},
        {{"/generate2"}, "Unrecognized command line switch [ /generate2 ].\n" + kUsage},
        {{""}, "Unrecognized command line argument [  ].\n" + kUsage},
        // The loop stops at the unknown switch, so the generate checks speak first.
        {{"/generate", "/bogus", "/sensors", "s.stl"}, "Unrecognized command line switch [ /bogus ].\n" + needsSensors},
        {{"/generate", "/nsensors", "abc", "/sensors", "s.stl"}, needsSensors},
        // Format conversion needs a device file.
        {{"/formatconvert", "1"}, needsDevice},
        {{"/formatconvert", "abc"}, needsDevice},
        {{"/formatconvert", "7x"}, "Unrecognized json format [ 7x ]. Allowed values {0,1}\n" + needsDevice},
        {{"/formatconvert"}, "Unrecognized command line switch [ /formatconvert ].\n" + kUsage},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig(c.arguments);
        std::string line;
        for (const std::string& argument : c.arguments)
            line += argument + " ";
        EXPECT_EQ(result.status, 1) << line;
        EXPECT_EQ(result.err, c.err) << line;
        EXPECT_EQ(result.out, "") << line;
    }
}

TEST(CommandLine, LineThatPassesTheChecksGoesOnToLoading)
{
    const std::vector<std::string> lines[] = {
        {"/generate", "/sensors", "missing.stl", "/outmodel", "o.json", "/nsensors", "32", "/coolingrate", "0.999"},
        {"/verifycoverage", "-5", "/sensors", "missing.stl", "/outscad", "c.scad", "/srbtiltdegrees", "4"},
        {"/generate", "/verifycoverage", "3", "/sensors", "missing.stl", "/outscad", "c.scad", "/nsensors", "2"},
    };
    const std::string surfaceMessage = "Could not build tracked surface from \"missing.stl\"\n";
    for (const std::vector<std::string>& line : lines)
    {
        const CliResult result = RunKelvorig(line);
        EXPECT_EQ(result.status, 1);
        ASSERT_GE(result.err.size(), surfaceMessage.size());
        EXPECT_EQ(result.err.substr(result.err.size() - surfaceMessage.size()), surfaceMessage) << result.err;
        EXPECT_EQ(result.err.find("usage"), std::string::npos) << result.err;
    }
}

TEST(CommandLine, FormatConversionWarnsOfAnUnknownFormatAndConverts)
{
    const TempDir dir;
    const std::string device = dir.File("device.json");
    test::WriteFile(device, R"({"device_class": "controller", "pharoscope_config": {"channelMap": [0]}})");

    const CliResult plain = RunKelvorig({"/formatconvert", "0", device});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.err, "");
    EXPECT_NE(plain.out.find("\"device_class\" : \"controller\""), std::string::npos) << plain.out;

    // Format 7 is only warned of: the file is converted to format 0, and nothing behind
    // the file is looked at.
    const CliResult seven = RunKelvorig({"/FORMATCONVERT", "7", device, "/bogus"});
    EXPECT_EQ(seven.status, 0);
    EXPECT_EQ(seven.err, "Unrecognized json format [ 7 ]. Allowed values {0,1}\n");
    EXPECT_EQ(seven.out, plain.out);

    const CliResult word = RunKelvorig({"/formatconvert", "json", device});
    EXPECT_EQ(word.status, 0);
    EXPECT_EQ(word.err, "");
    EXPECT_EQ(word.out, plain.out);
}

TEST(CommandLine, ImuToolTakesTheNextArgumentAsItsFile)
{
    const CliResult sample = RunKelvorig({"/model", "m.json", "/trackref_from_imu"});
    EXPECT_EQ(sample.status, 0) << sample.err;
    EXPECT_NE(sample.out.find("\"imu_plusz_in_trackref\""), std::string::npos) << sample.out;

    // "/generate" is the file here, and "/bogus" is never seen.
    const CliResult file = RunKelvorig({"/trackref_from_imu", "/generate", "/bogus"});
    EXPECT_EQ(file.status, 1);
    EXPECT_NE(file.err.find("/generate"), std::string::npos) << file.err;
    EXPECT_EQ(file.err.find("Unrecognized"), std::string::npos) << file.err;
    EXPECT_EQ(file.err.find("requires"), std::string::npos) << file.err;
}

} // namespace
} // namespace kelvorig
