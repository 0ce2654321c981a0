#include "driver/command_line.h"

#include "support/angles.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// Reads the arguments; messages go to a captured standard error and are dropped (the
// command-line table checks them).
std::pair<bool, CommandOptions> Parse(const std::vector<std::string>& arguments)
{
    CommandOptions options;
    testing::internal::CaptureStderr();
    const bool ok = ReadCommandLine(arguments, options);
    testing::internal::GetCapturedStderr();
    return {ok, options};
}

TEST(ReadCommandLine, EverySwitchSetsItsField)
{
    const auto [ok, o] = Parse({"/generate", "/withscadnormals", "/verifycoverage", "100", "/model", "m.json",
                                "/sensors", "s.stl", "/obstacles", "a.stl", "/outmodel", "o.json", "/outscad", "o.scad",
                                "/maxincidenceangle", "70", "/maxsurfaceangle", "12.5", "/coolingrate", "0.9",
                                "/nsensors", "16", "/norientations", "2000", "/niterations", "5",
                                "/angleresolutiondegrees", "2", "/distancebasemeters", "3.5", "/qualityrange", "1",
                                "4", "/srbtiltdegrees", "30", "/basestationsensitivity", "/obstacles", "b.stl",
                                "/threads", "3"});
    ASSERT_TRUE(ok);
    EXPECT_TRUE(o.generate && o.withScadNormals && o.baseStationSensitivity);
    EXPECT_EQ(std::tie(o.modelPath, o.sensorsPath, o.outModelPath, o.outScadPath),
              std::make_tuple("m.json", "s.stl", "o.json", "o.scad"));
    EXPECT_EQ(o.obstaclePaths, (std::vector<std::string>{"a.stl", "b.stl"}));
    EXPECT_EQ(std::tie(o.verifyCoverage, o.nSensors, o.nOrientations, o.nIterations, o.threads),
              std::make_tuple(100, 16, 2000, 5, 3));
    EXPECT_EQ(std::tie(o.maxIncidenceAngle, o.maxSurfaceAngle, o.coolingRate, o.angleResolutionDegrees,
                       o.distanceBaseMeters, o.qualityLow, o.qualityHigh, o.srbTiltRadians),
              std::make_tuple(70.0, 12.5, 0.9, 2.0, 3.5, 1.0, 4.0, DegreesToRadians(30.0)));
}

// Switches ignore case, the last path wins, a value is taken whatever it looks like, numbers
// are leading scans, and the quality range is put in order. (What stops the loop is in the
// command-line table.)
TEST(ReadCommandLine, ValuesAreReadLeniently)
{
    const auto [ok, o] = Parse({"/MODEL", "a.json", "/Model", "/generate", "/nsensors", "12abc", "/coolingrate",
                                " 0.5x", "/norientations", "-7", "/niterations", "99999999999", "/qualityrange", "5",
                                "2", "/srbtiltdegrees", "-12.5", "/OutScad", "x.scad", "/threads", "6x"});
    ASSERT_TRUE(ok);
    EXPECT_EQ(std::tie(o.modelPath, o.outScadPath, o.generate), std::make_tuple("/generate", "x.scad", false));
    EXPECT_EQ(std::tie(o.nSensors, o.nOrientations, o.nIterations, o.threads), std::make_tuple(12, -7, INT32_MAX, 6));
    EXPECT_EQ(std::tie(o.coolingRate, o.qualityLow, o.qualityHigh, o.srbTiltRadians),
              std::make_tuple(0.5, 2.0, 5.0, -12.5 * 0.005555555555555556 * 3.141592653589793));
}

} // namespace
} // namespace kelvorig
