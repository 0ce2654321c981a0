#include "driver/command_line.h"

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

// Every switch sets its field. Switches ignore case, the last path wins, a value is taken
// whatever it looks like, numbers are leading scans, and the quality range is put in order.
// (What stops the loop is in the command-line table.)
TEST(ReadCommandLine, EverySwitchSetsItsFieldLeniently)
{
    const auto [ok, o] = Parse({"/MODEL",
                                "a.json",
                                "/Model",
                                "/generate",
                                "/withscadnormals",
                                "/verifycoverage",
                                "100",
                                "/sensors",
                                "s.stl",
                                "/obstacles",
                                "a.stl",
                                "/outmodel",
                                "o.json",
                                "/OutScad",
                                "x.scad",
                                "/maxincidenceangle",
                                "75",
                                "/maxsurfaceangle",
                                "12.5",
                                "/coolingrate",
                                " 0.5x",
                                "/nsensors",
                                "12abc",
                                "/norientations",
                                "-7",
                                "/niterations",
                                "99999999999",
                                "/angleresolutiondegrees",
                                "2",
                                "/distancebasemeters",
                                "3.5",
                                "/qualityrange",
                                "5",
                                "2",
                                "/srbtiltdegrees",
                                "-12.5",
                                "/basestationsensitivity",
                                "/obstacles",
                                "b.stl",
                                "/threads",
                                "6x"});
    ASSERT_TRUE(ok);
    EXPECT_TRUE(!o.generate && o.withScadNormals && o.baseStationSensitivity);
    EXPECT_EQ(std::tie(o.modelPath, o.sensorsPath, o.outModelPath, o.outScadPath),
              std::make_tuple("/generate", "s.stl", "o.json", "x.scad"));
    EXPECT_EQ(o.obstaclePaths, (std::vector<std::string>{"a.stl", "b.stl"}));
    EXPECT_EQ(std::tie(o.verifyCoverage, o.nSensors, o.nOrientations, o.nIterations, o.threads),
              std::make_tuple(100, 12, -7, INT32_MAX, 6));
    EXPECT_EQ(std::tie(o.maxIncidenceAngle, o.maxSurfaceAngle, o.coolingRate, o.angleResolutionDegrees,
                       o.distanceBaseMeters, o.qualityLow, o.qualityHigh, o.srbTiltRadians),
              std::make_tuple(75.0, 12.5, 0.5, 2.0, 3.5, 2.0, 5.0, -12.5 * 0.005555555555555556 * 3.141592653589793));
    const CommandOptions inOrder = Parse({"/qualityrange", "1", "4"}).second;
    EXPECT_EQ(std::tie(inOrder.qualityLow, inOrder.qualityHigh), std::make_tuple(1.0, 4.0));
}

} // namespace
} // namespace kelvorig
