#include "driver/command_line.h"

#include "geometry/angles.h"
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

void ExpectFails(const std::vector<std::string>& arguments, const std::string& err)
{
    const CliResult result = RunKelvorig(arguments);
    std::string line;
    for (const std::string& argument : arguments)
        line += argument + " ";
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_EQ(result.err, err) << line;
    EXPECT_EQ(result.out, "") << line;
}

TEST(ReadCommandLine, DefaultsAreTheRecordsOwn)
{
    const Parsed parsed = Parse({});
    EXPECT_TRUE(parsed.ok);
    EXPECT_EQ(parsed.options.maxIncidenceAngle, 60.0);
    EXPECT_EQ(parsed.options.coolingRate, 0.96);
    EXPECT_EQ(parsed.options.nOrientations, 1250);
    EXPECT_EQ(parsed.options.nSensors, -1);
}

TEST(ReadCommandLine, EverySwitchSetsItsField)
{
    const Parsed parsed = Parse({"/generate", "/withscadnormals", "/verifycoverage", "100", "/model", "m.json",
                                 "/sensors", "s.stl", "/obstacles", "a.stl", "/outmodel", "o.json", "/outscad",
                                 "o.scad", "/maxincidenceangle", "70", "/maxsurfaceangle", "12.5", "/coolingrate",
                                 "0.9", "/nsensors", "16", "/norientations", "2000", "/niterations", "5",
                                 "/angleresolutiondegrees", "2", "/distancebasemeters", "3.5", "/qualityrange", "1",
                                 "4", "/srbtiltdegrees", "30", "/basestationsensitivity", "/obstacles", "b.stl"});
    ASSERT_TRUE(parsed.ok) << parsed.err;
    const CommandOptions& o = parsed.options;
    EXPECT_TRUE(o.generate);
    EXPECT_TRUE(o.withScadNormals);
    EXPECT_TRUE(o.baseStationSensitivity);
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

TEST(ReadCommandLine, SwitchesIgnoreCaseAndLastPathWins)
{
    const Parsed parsed = Parse({"/MODEL", "a.json", "/Model", "B.JSON", "/OutScad", "x.scad", "/GENERATE"});
    ASSERT_TRUE(parsed.ok);
    EXPECT_EQ(parsed.options.modelPath, "B.JSON");
    EXPECT_EQ(parsed.options.outScadPath, "x.scad");
    EXPECT_TRUE(parsed.options.generate);
}

TEST(ReadCommandLine, ValuesAreTakenWhateverTheyLookLike)
{
    const Parsed parsed = Parse({"/model", "/generate"});
    ASSERT_TRUE(parsed.ok);
    EXPECT_EQ(parsed.options.modelPath, "/generate");
    EXPECT_FALSE(parsed.options.generate);
}

TEST(ReadCommandLine, NumbersAreLeadingScans)
{
    const Parsed parsed = Parse({"/nsensors", "12abc", "/coolingrate", " 0.5x", "/norientations", "-7"});
    ASSERT_TRUE(parsed.ok);
    EXPECT_EQ(parsed.options.nSensors, 12);
    EXPECT_EQ(parsed.options.coolingRate, 0.5);
    EXPECT_EQ(parsed.options.nOrientations, -7);
}

TEST(ReadCommandLine, ValueThatDoesNotScanStopsSilentlyAndKeepsTheField)
{
    const Parsed parsed = Parse({"/nsensors", "4", "/nsensors", "many", "/generate"});
    EXPECT_FALSE(parsed.ok);
    EXPECT_EQ(parsed.err, "");
    EXPECT_EQ(parsed.options.nSensors, 4);
    EXPECT_FALSE(parsed.options.generate);
}

TEST(ReadCommandLine, QualityRangeIsPutInOrderBeforeAFailureCounts)
{
    const Parsed swapped = Parse({"/qualityrange", "5", "2"});
    ASSERT_TRUE(swapped.ok);
    EXPECT_EQ(swapped.options.qualityLow, 2.0);
    EXPECT_EQ(swapped.options.qualityHigh, 5.0);

    const Parsed half = Parse({"/qualityrange", "x", "-3"});
    EXPECT_FALSE(half.ok);
    EXPECT_EQ(half.options.qualityLow, -3.0);
    EXPECT_EQ(half.options.qualityHigh, -1.0);
}

TEST(ReadCommandLine, TiltIsConvertedToRadiansAtOnce)
{
    const Parsed parsed = Parse({"/srbtiltdegrees", "-12.5"});
    ASSERT_TRUE(parsed.ok);
    EXPECT_EQ(parsed.options.srbTiltRadians, -12.5 * 0.005555555555555556 * 3.141592653589793);
}

TEST(ReadCommandLine, UnknownArgumentsAndSwitchesStopTheLoop)
{
    const struct
    {
        std::vector<std::string> arguments;
        std::string err;
    } cases[] = {
        {{"model.json", "/generate"}, "Unrecognized command line argument [ model.json ].\n"},
        {{"/bogus", "/generate"}, "Unrecognized command line switch [ /bogus ].\n"},
        {{"/generate", "/model"}, "Unrecognized command line switch [ /model ].\n"},
        {{"/qualityrange", "1"}, "Unrecognized command line switch [ /qualityrange ].\n"},
        {{"/formatconvert"}, "Unrecognized command line switch [ /formatconvert ].\n"},
        {{"/generate2"}, "Unrecognized command line switch [ /generate2 ].\n"},
        {{""}, "Unrecognized command line argument [  ].\n"},
    };
    for (const auto& c : cases)
    {
        const Parsed parsed = Parse(c.arguments);
        EXPECT_FALSE(parsed.ok);
        EXPECT_EQ(parsed.err, c.err);
        EXPECT_FALSE(parsed.options.generate && c.arguments[0] != "/generate");
    }
}

TEST(ScanNumbers, ReportWhetherANumberWasConverted)
{
    int32_t whole = 5;
    EXPECT_FALSE(ScanInt("", whole));
    EXPECT_FALSE(ScanInt("x1", whole));
    EXPECT_EQ(whole, 5);
    EXPECT_TRUE(ScanInt("+3.9", whole));
    EXPECT_EQ(whole, 3);
    EXPECT_TRUE(ScanInt("99999999999", whole));
    EXPECT_EQ(whole, INT32_MAX);

    double real = 5.0;
    EXPECT_FALSE(ScanDouble("abc", real));
    EXPECT_EQ(real, 5.0);
    EXPECT_TRUE(ScanDouble("1e-3mm", real));
    EXPECT_EQ(real, 1e-3);
}

TEST(CommandLine, NoArgumentsPrintTheUsage)
{
    ExpectFails({}, kUsage);
}

TEST(CommandLine, GenerateChecksInTheirOrder)
{
    ExpectFails({"/generate"}, "/generate requires /sensors <surface.stl>\n");
    ExpectFails({"/GENERATE"}, "/generate requires /sensors <surface.stl>\n");
    ExpectFails({"/generate", "/sensors", "s.stl"},
                "/generate output needs /outscad <foo.scad> and/or /outmodel <foo.json>\n");
    for (const std::string count : {"0", "-4"})
    {
        ExpectFails({"/generate", "/sensors", "s.stl", "/outscad", "o.scad", "/nsensors", count},
                    "must specify /nsensors with /generate\n");
    }
    ExpectFails({"/generate", "/sensors", "s.stl", "/outscad", "o.scad"}, "must specify /nsensors with /generate\n");
    for (const std::string rate : {"1.0", "1", "7"})
    {
        ExpectFails({"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors", "8", "/coolingrate", rate},
                    "/coolingrate >= 1.0 would never finish\n");
    }
}

TEST(CommandLine, CoverageNeedsSurfaceAndDrawingWithOrWithoutGenerate)
{
    ExpectFails({"/verifycoverage", "1000"}, "/verifycoverage requires /sensors and /outscad\n");
    ExpectFails({"/verifycoverage", "-5", "/sensors", "s.stl"}, "/verifycoverage requires /sensors and /outscad\n");
    ExpectFails({"/verifycoverage", "10", "/outscad", "c.scad"}, "/verifycoverage requires /sensors and /outscad\n");
    ExpectFails({"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors", "8", "/verifycoverage", "10"},
                "/verifycoverage requires /sensors and /outscad\n");
}

TEST(CommandLine, NoModeAndNoModelPrintsTheUsage)
{
    ExpectFails({"/verifycoverage", "0"}, kUsage);
    ExpectFails({"/sensors", "s.stl", "/outscad", "x.scad", "/coolingrate", "1.0"}, kUsage);
}

TEST(CommandLine, TiltIsRefusedUnderGenerate)
{
    ExpectFails({"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors", "8", "/srbtiltdegrees", "10"},
                "/srbtiltdegrees is not plumbed to /generate yet\n");
}

TEST(CommandLine, ArgumentErrorEndsInTheUsageUnlessAnEarlierCheckFires)
{
    ExpectFails({"/model", "m.json", "/nsensors", "abc"}, kUsage);
    ExpectFails({"/model", "m.json", "stray"}, "Unrecognized command line argument [ stray ].\n" + kUsage);
    ExpectFails({"/model"}, "Unrecognized command line switch [ /model ].\n" + kUsage);
    ExpectFails({"/model", "m.json", "/qualityrange", "1"},
                "Unrecognized command line switch [ /qualityrange ].\n" + kUsage);
    // The loop stops at the unknown switch, so the generate checks speak first.
    ExpectFails({"/generate", "/bogus", "/sensors", "s.stl"},
                "Unrecognized command line switch [ /bogus ].\n/generate requires /sensors <surface.stl>\n");
    ExpectFails({"/generate", "/nsensors", "abc", "/sensors", "s.stl"}, "/generate requires /sensors <surface.stl>\n");
}

TEST(CommandLine, GenerateTakesAtMostThirtyTwoSensors)
{
    ExpectFails({"/generate", "/sensors", "s.stl", "/outmodel", "o.json", "/nsensors", "33"},
                "/nsensors 33 is more than the 32 sensors kelvorig can evaluate\n");
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

TEST(CommandLine, FormatConversionNeedsADeviceFile)
{
    ExpectFails({"/formatconvert", "1"}, "/formatconvert needs a device file after the format number\n");
    ExpectFails({"/formatconvert", "abc"}, "/formatconvert needs a device file after the format number\n");
    ExpectFails({"/formatconvert", "7x"}, "Unrecognized json format [ 7x ]. Allowed values {0,1}\n"
                                          "/formatconvert needs a device file after the format number\n");
    ExpectFails({"/formatconvert"}, "Unrecognized command line switch [ /formatconvert ].\n" + kUsage);
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
