#include "driver/analysis_run.h"

#include "quality/reference_pose_error.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Four sensors at made-up places analysed on a 30 degree grid in this process; returns the report.
std::string Analyse(CommandOptions options, QualityEvaluator& evaluator)
{
    std::vector<Eigen::Vector3f> points, normals;
    for (const float f : {0.0f, 1.0f, 2.0f, 3.0f})
    {
        points.emplace_back(0.01f * f, 0.02f * std::sin(f), 0.015f * std::cos(2.0f * f));
        normals.emplace_back(std::sin(f), std::cos(3.0f * f), 0.5f);
    }
    SensorLayout layout = test::MakeLayout(points, normals);
    options.angleResolutionDegrees = 30.0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunAnalysis(options, layout, nullptr, evaluator), 0);
    std::fflush(stdout);
    EXPECT_EQ(layout.cosMaxIncidence, std::cos(options.maxIncidenceAngle * 0.005555555555555556 * 3.141592653589793));
    return testing::internal::GetCapturedStdout();
}

TEST(AnalysisRun, SetsUpTheEvaluatorFromTheOptions)
{
    CommandOptions options;
    options.maxIncidenceAngle = 75.0;
    options.distanceBaseMeters = 3.0;
    QualityEvaluator plain;
    const std::string report = Analyse(options, plain);
    EXPECT_EQ(std::tie(plain.poseVector()[2], plain.baseStationModel().kind), std::make_tuple(-3.0, 0));
    // One row per pose of the 30 degree grid, 7 pitches by 13 yaws give or take the last step.
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), static_cast<long>(plain.poses().size()));
    EXPECT_TRUE(plain.poses().size() >= 6u * 12u && plain.poses().size() <= 7u * 13u) << plain.poses().size();
    EXPECT_NE(report.find(" 3.0 0.0 "), std::string::npos);

    options.distanceBaseMeters = -3.0;  // the sign plays no part
    QualityEvaluator negative;
    EXPECT_EQ(Analyse(options, negative), report);

    CommandOptions tilted;
    tilted.srbTiltRadians = 0.3;
    QualityEvaluator tilt;
    Analyse(tilted, tilt);
    EXPECT_EQ(std::tie(tilt.baseStationModel().kind, tilt.baseStationModel().tiltRadians), std::make_tuple(7, 0.3));
    EXPECT_EQ(tilt.visibility()->observations[0].sweepModel, 2);

    CommandOptions sensitivity;
    sensitivity.baseStationSensitivity = true;
    QualityEvaluator table;
    const std::string rows = Analyse(sensitivity, table);
    EXPECT_EQ(std::count(rows.begin(), rows.begin() + static_cast<long>(rows.find('\n')), ' '), 4);
    EXPECT_EQ(table.poseVector()[2], -2.0);  // translation restored
}

// Sensors on the faces of a 200 by 100 by 100 mm box, sensor 4 alone on the top face; a
// trailing negative id changes nothing. On a convex shape nothing that the incidence test
// lets through is occluded, and the report is the same on any number of threads; a slab
// above the top face hides sensor 4, and the report names it.
TEST(AnalysisRun, OcclusionThroughTheCommandLine)
{
    const test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.2f, 0.1f, 0.1f)));
    test::WriteBinaryStl(dir.File("slab.stl"), test::MakeBox({1.0f, 1.0f, 0.002f}, {0.0f, 0.0f, 0.06f}));
    const std::string points = "[0.1, 0.02, 0.01], [0.1, -0.03, -0.02], [-0.1, 0.01, 0.03], [-0.1, -0.02, -0.01], "
                               "[0.03, 0.01, 0.05], [0.06, 0.05, 0.02], [-0.05, 0.05, -0.02], [0.02, -0.05, 0.01], "
                               "[-0.07, -0.05, 0.02], [0.05, 0.02, -0.05], [-0.04, -0.03, -0.05]";
    const std::string normals = "[1, 0, 0], [1, 0, 0], [-1, 0, 0], [-1, 0, 0], [0, 0, 1], [0, 1, 0], [0, 1, 0], "
                                "[0, -1, 0], [0, -1, 0], [0, 0, -1], [0, 0, -1]";
    const std::string ids = R"({"channelMap": [0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10)";
    test::WriteFile(dir.File("m.json"), ids + "], \"modelPoints\": [" + points + "], \"modelNormals\": [" + normals + "]}");
    test::WriteFile(dir.File("t.json"), ids + ", -1], \"modelPoints\": [" + points + ", [0, 0, -0.05]], \"modelNormals\": [" +
                                            normals + ", [0, 0, -1]]}");
    const auto analyse = [&](const std::string& model, std::vector<std::string> more)
    {
        more.insert(more.begin(), {"/model", dir.File(model), "/angleresolutiondegrees", "10"});
        return test::RunInProcess(more);
    };
    for (const std::vector<std::string>& table : {std::vector<std::string>{}, {"/basestationsensitivity"}})
    {
        const test::CliResult bare = analyse("m.json", table);
        ASSERT_EQ(bare.status, 0) << bare.err;
        for (const auto& more : {std::vector<std::string>{"/sensors", dir.File("box.stl")}, {"/threads", "3"}, {}})
        {
            std::vector<std::string> arguments = more;
            arguments.insert(arguments.end(), table.begin(), table.end());
            const test::CliResult same = analyse(more.empty() ? "t.json" : "m.json", arguments);
            EXPECT_TRUE(same.status == 0 && same.out == bare.out && same.err == bare.err) << same.err;
        }
    }
    const test::CliResult open = analyse("m.json", {"/sensors", dir.File("box.stl")});
    const test::CliResult covered = analyse("m.json", {"/sensors", dir.File("box.stl"), "/obstacles", dir.File("slab.stl")});
    EXPECT_EQ(open.err, "");  // every sensor seen somewhere
    EXPECT_EQ(covered.err, "WARNING: Input model point 4 doesn't seem to be on the supplied sensor surface at 0.03 0.01 "
                           "0.05\ndid not see sensor id 4\n");
    EXPECT_EQ(std::count(covered.out.begin(), covered.out.end(), '\n'), std::count(open.out.begin(), open.out.end(), '\n'));
}

} // namespace
} // namespace kelvorig
