#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <cmath>
#include <filesystem>

namespace kelvorig {
namespace {

Json::Value ReadJson(const std::string& path)
{
    Json::Value root;
    EXPECT_TRUE(Json::Reader().parse(test::ReadFile(path), root)) << path;
    return root;
}

// A band in millimetres open at both ends (radius 27 to 30, 40 high). Sensors 0 to 4 sit on its
// outer face looking out; sensor 5 on its inner face looks across the band at the far wall, 54 mm
// away. The warning, the summary and the page say so, for the layout analysed and for the same
// layout kept fixed under a generate run, which under /maxseatdepth also finds it too deep.
TEST(SeatReview, ASensorLookingIntoTheDeviceIsFlaggedWhereverTheLayoutIsUsed)
{
    test::TempDir dir;
    test::WriteBinaryStl(dir.File("band.stl"), test::Revolve({{27, 40}, {30, 40}, {30, 0}, {27, 0}}));
    // A lid just over the band, and a keep-out in its hole: the page draws both.
    test::WriteBinaryStl(dir.File("lid.stl"), test::MakeBox({20, 20, 2}, {0, 0, 42}));
    test::WriteBinaryStl(dir.File("hole.stl"), test::MakeBox({10, 10, 10}, {0, 0, 20}));
    test::WriteFile(dir.File("layout.json"), R"({"channelMap": [0, 1, 2, 3, 4, 5],
        "modelPoints": [[0.03, 0, 0.02], [-0.03, 0, 0.02], [0, 0.03, 0.02], [0, -0.03, 0.02],
                        [0.0212132, 0.0212132, 0.01], [0.027, 0, 0.02]],
        "modelNormals": [[1, 0, 0], [-1, 0, 0], [0, 1, 0], [0, -1, 0], [0.7071068, 0.7071068, 0], [-1, 0, 0]]})");
    const std::string facing = "faces into the device (its normal meets it 54.0 mm away)";
    const std::vector<std::string> common = {
        "/sensors", dir.File("band.stl"), "/model", dir.File("layout.json"), "/angleresolutiondegrees",
        "30",       "/norientations",     "40"};
    const struct
    {
        std::vector<std::string> more;
        std::string warning;
    } runs[] = {
        {{"/generate", "/nsensors", "8", "/niterations", "1", "/coolingrate", "0.5", "/seed", "2", "/maxseatdepth", "5",
          "/outmodel", dir.File("g.json")},
         facing + "; lies 57.0 mm under the hull (/maxseatdepth 5)"},
        {{"/obstacles", dir.File("lid.stl"), "/keepout", dir.File("hole.stl")}, facing},
    };
    for (const auto& run : runs)
    {
        std::vector<std::string> arguments = common;
        arguments.insert(arguments.end(), run.more.begin(), run.more.end());
        arguments.insert(arguments.end(), {"/outsummary", dir.File("s.json"), "/outhtml", dir.File("r.html")});
        const test::CliResult result = test::RunKelvorig(arguments);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_NE(result.err.find("\nWARNING: sensor 5 " + run.warning + "\n"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find("WARNING: sensor", result.err.find("WARNING: sensor") + 1), std::string::npos)
            << "one sensor only: " << result.err;
        const Json::Value sensors = ReadJson(dir.File("s.json"))["sensors"];
        for (Json::ArrayIndex i = 0; i < sensors.size(); ++i)
        {
            EXPECT_EQ(sensors[i]["problems"].size(), i == 5 ? (run.more.size() == 4 ? 1u : 2u) : 0u) << i;
            EXPECT_EQ(sensors[i]["normal"].size(), 3u);
        }
        EXPECT_EQ(sensors[5]["problems"][0].asString(), facing);
        EXPECT_NEAR(sensors[5]["faces_device_at_mm"].asDouble(), 54.0, 0.05);
        EXPECT_NEAR(sensors[5]["hull_depth_mm"].asDouble(), 57.0, 0.05);
        EXPECT_TRUE(sensors[0]["faces_device_at_mm"].isNull());
        EXPECT_NE(test::ReadFile(dir.File("r.html")).find(facing), std::string::npos);
    }
    if (!std::filesystem::exists("/usr/bin/chromium"))
        GTEST_SKIP() << "no /usr/bin/chromium";
    ASSERT_EQ(std::system(("timeout 120 /usr/bin/chromium --headless --no-sandbox --use-angle=swiftshader "
                           "--enable-unsafe-swiftshader --dump-dom file://" +
                           dir.File("r.html") + " > " + dir.File("dom.html") + " 2>/dev/null")
                              .c_str()),
              0);
    EXPECT_NE(test::ReadFile(dir.File("dom.html"))
                  .find(">scene: device, axes, front marker, obstacles, keep-outs, sphere of directions; 1 flagged "
                        "sensors (5)<"),
              std::string::npos);
}

// A generate run's summary records its command line, which run again writes the same layout.
TEST(SeatReview, TheSummaryRecordsTheRunSoThatItRepeats)
{
    test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)));
    const std::vector<std::string> arguments = {"/generate", "/nsensors",    "6",      "/sensors",
                                                "box.stl",   "/outmodel",    "g.json", "/norientations",
                                                "40",        "/niterations", "1",      "/restarts",
                                                "2",         "/seed",        "11",     "/minsensorspacing",
                                                "10",        "/outsummary",  "s.json", "/angleresolutiondegrees",
                                                "30"};
    ASSERT_EQ(test::RunKelvorig(arguments, dir.path()).status, 0);
    const Json::Value run = ReadJson(dir.File("s.json"))["run"];
    std::vector<std::string> recorded;
    for (const Json::Value& argument : run["command_line"])
        recorded.push_back(argument.asString());
    EXPECT_EQ(recorded, arguments);
    EXPECT_TRUE(run["seed"].asUInt() == 11u || run["seed"].asUInt() == 12u) << run["seed"].asUInt();
    EXPECT_EQ(run["seat_rules"]["min_sensor_spacing_mm"].asDouble(), 10.0);
    EXPECT_TRUE(run["seat_rules"]["max_seat_depth_mm"].isNull());
    EXPECT_EQ(run["restarts"].asInt() * 10 + run["iterations"].asInt(), 21);
    const std::string first = test::ReadFile(dir.File("g.json"));
    std::filesystem::remove(dir.File("g.json"));
    ASSERT_EQ(test::RunKelvorig(recorded, dir.path()).status, 0);
    EXPECT_EQ(test::ReadFile(dir.File("g.json")), first);
}

} // namespace
} // namespace kelvorig
