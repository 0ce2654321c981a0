#include "quality/quality_evaluator.h"

#include "quality/reference_pose_error.h"
#include "support/angles.h"
#include "support/cli_runner.h"
#include "support/mesh_surface.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <Eigen/Geometry>

#include <array>
#include <cmath>
#include <sstream>

namespace kelvorig {
namespace {

constexpr double kFullTurn = 6.283185307179586;

using test::Lines;

// Ten sensors on a lumpy shell facing roughly outwards; sensor 6 has no normal and is never seen.
SensorLayout ShellLayout()
{
    std::vector<Eigen::Vector3f> points, normals;
    for (const Eigen::Vector3f& p : {Eigen::Vector3f(0.08f, 0.01f, 0.03f),
                                     {-0.07f, 0.02f, 0.04f},
                                     {0.01f, 0.09f, 0.02f},
                                     {0.02f, -0.08f, 0.05f},
                                     {0.0f, 0.01f, 0.1f},
                                     {0.05f, 0.05f, 0.07f},
                                     {-0.05f, -0.04f, 0.06f},
                                     {0.06f, -0.05f, -0.03f},
                                     {-0.04f, 0.06f, -0.05f},
                                     {0.03f, 0.02f, -0.09f}})
    {
        points.push_back(p);
        normals.push_back(p.normalized() + Eigen::Vector3f(0.05f, -0.03f, 0.02f));
    }
    normals[6] = Eigen::Vector3f::Zero();
    return test::MakeLayout(points, normals);
}

// The report of `layout` on a grid of `step`, the object `distance` away, on `threads` workers.
test::CliResult Report(QualityEvaluator& evaluator, const SensorLayout& layout, double step, double distance,
                       bool sensitivity, int32_t threads = 1)
{
    evaluator.SetModel(layout);
    evaluator.SampleAnalysisPoses(kFullTurn, step);
    evaluator.poseVector()[2] = -distance;
    WorkerPool workers(threads);
    return test::CaptureFiles(
        [&](FILE* out, FILE* err)
        {
            sensitivity ? evaluator.WriteSensitivityReport(workers, out, err)
                        : evaluator.WriteCoverageReport(workers, out, err);
        });
}

// The report's errors for what the reference model sees: along each translation axis, then
// position and rotation, each 1 where the variance is not a number or exceeds 1.
std::array<double, 5> ReportedErrors(const test::ReferenceView& view)
{
    const Eigen::Matrix<double, 6, 1>& v = view.variances;
    const auto clamp = [](double variance)
    { return std::isnan(variance) || variance > 1.0 ? 1.0 : std::sqrt(variance); };
    return {clamp(v[0]), clamp(v[1]), clamp(v[2]), clamp(v[0] + v[1] + v[2]), clamp(v[3] + v[4] + v[5])};
}

TEST(CoverageReport, RowsMatchIndependentComputation)
{
    const SensorLayout layout = ShellLayout();
    QualityEvaluator evaluator;
    const test::CliResult report = Report(evaluator, layout, DegreesToRadians(15.0), 1.5, false);
    const std::vector<std::string> lines = Lines(report.out);
    ASSERT_EQ(lines.size(), evaluator.poses().size());
    int checked = 0;
    for (size_t k = 0; k < lines.size(); ++k)
    {
        std::istringstream in(lines[k]);
        double yaw, pitch, distance, zero, rotation, position;
        int count, z0, z1, z2, solvable, failure;
        in >> yaw >> pitch >> distance >> zero >> count >> z0 >> z1 >> z2 >> solvable >> failure >> rotation >>
            position;
        std::vector<int> ids;
        for (int id; in >> id;)
            ids.push_back(id);
        const BaseStationPose& pose = evaluator.poses()[k];
        EXPECT_NEAR(yaw, pose.gridYaw, 5e-7);
        EXPECT_NEAR(pitch, pose.gridPitch, 5e-7);
        EXPECT_EQ(std::tie(distance, zero, z0, z1, z2, count), std::make_tuple(1.5, 0.0, 0, 0, 0, int(ids.size())));
        EXPECT_EQ(solvable + failure, 100);
        const test::ReferenceView view = test::ReferenceViewOf(
            layout, test::RotationOntoZ(test::GridDirection(pose.gridYaw, pose.gridPitch)), {0.0, 0.0, -1.5});
        if (view.borderline)
            continue;
        ASSERT_EQ(ids, view.ids) << lines[k];
        const std::array<double, 5> expected = ReportedErrors(view);
        // Few sensors leave the estimate ill-conditioned: compare where it is usable.
        if (expected[3] < 0.5 && expected[4] < 0.5)
        {
            ++checked;
            EXPECT_NEAR(position, expected[3], 1.5e-6 + 1e-5 * expected[3]) << lines[k];
            EXPECT_NEAR(rotation, expected[4], 1.5e-6 + 1e-5 * expected[4]) << lines[k];
        }
        else if (ids.size() < 3)
        {
            EXPECT_EQ(std::tie(position, solvable), std::make_tuple(1.0, 0)) << lines[k];
        }
    }
    EXPECT_GT(checked, 50);
    EXPECT_EQ(report.err, "did not see sensor id 6\n");
}

// Sensors facing +X seen from yaw +90 degrees (row 10 of the quarter-turn grid); row 7 is
// +Z, whose record is not a number, and row 4 faces away.
TEST(CoverageReport, SolvabilityPercentagesFollowTheCases)
{
    const Eigen::Vector3f a(0, 0, 0), b(0, 0.1f, 0), c(0, 0, 0.1f);
    const struct
    {
        std::vector<Eigen::Vector3f> points;
        std::string seen;
    } cases[] = {
        {{a, b, c, {0.04f, 0.06f, 0.07f}}, "4 0 0 0 99 1"},
        {{a, b, c, {0.04f, 0.06f, 0.07f}, {0.02f, -0.05f, 0.03f}}, "5 0 0 0 100 0"},
        {{a, b, c, {0, 0.08f, 0.09f}}, "4 0 0 0 96 4"},
        {{a, b, c}, "3 0 0 0 0 100 1.000000 1.000000"},
    };
    for (const auto& test : cases)
    {
        QualityEvaluator evaluator;
        const SensorLayout layout =
            test::MakeLayout(test.points, std::vector<Eigen::Vector3f>(test.points.size(), {1, 0, 0}));
        const test::CliResult report = Report(evaluator, layout, 1.5707963267948966, 2.0, false);
        const std::vector<std::string> lines = Lines(report.out);
        ASSERT_EQ(lines.size(), 15u);
        EXPECT_TRUE(lines[10].starts_with("1.570796 0.000000 2.0 0.0 " + test.seen)) << lines[10];
        std::string all =
            "0.000000 0.000000 2.0 0.0 " + std::to_string(test.points.size()) + " 0 0 0 0 100 1.000000 1.000000";
        for (size_t i = 0; i < test.points.size(); ++i)
            all += ' ' + std::to_string(i);
        EXPECT_EQ(lines[7], all);
        EXPECT_EQ(lines[4], "-1.570796 0.000000 2.0 0.0 0 0 0 0 0 100 1.000000 1.000000");
        EXPECT_EQ(report.err, "");
    }
}

// The object swings around the base station as one body, so every row sees the sensors of the
// unrotated object; the table gives the error along each axis.
TEST(SensitivityReport, RowsMatchIndependentComputation)
{
    SensorLayout layout = ShellLayout();
    layout.cosMaxIncidence = 0.1;
    QualityEvaluator evaluator;
    const test::CliResult report = Report(evaluator, layout, DegreesToRadians(15.0), 2.5, true);
    const std::vector<std::string> lines = Lines(report.out);
    ASSERT_EQ(lines.size(), evaluator.poses().size());
    const test::ReferenceView unrotated = test::ReferenceViewOf(layout, Eigen::Matrix3d::Identity(), {0.0, 0.0, -2.5});
    ASSERT_GE(unrotated.ids.size(), 4u);
    int checked = 0;
    for (size_t k = 0; k < lines.size(); ++k)
    {
        std::istringstream row(lines[k]);
        double yaw, pitch, error[3];
        row >> yaw >> pitch >> error[0] >> error[1] >> error[2];
        const BaseStationPose& pose = evaluator.poses()[k];
        const Eigen::Matrix3d rotation = test::RotationOntoZ(test::GridDirection(pose.gridYaw, pose.gridPitch));
        const test::ReferenceView view =
            test::ReferenceViewOf(layout, rotation, rotation * Eigen::Vector3d(0.0, 0.0, -2.5));
        ASSERT_EQ(view.ids, unrotated.ids);
        // Off to the side the sweep angles turn singular and differences can't follow.
        if ((rotation * Eigen::Vector3d(0.0, 0.0, -2.5)).z() > -1.0)
            continue;
        ++checked;
        const std::array<double, 5> expected = ReportedErrors(view);
        for (int axis = 0; axis < 3; ++axis)
            EXPECT_NEAR(error[axis], expected[axis], 1.5e-6 + 1e-5 * expected[axis]) << lines[k];
    }
    EXPECT_GT(checked, 50);
    EXPECT_EQ(std::tie(evaluator.poseVector()[0], evaluator.poseVector()[1], evaluator.poseVector()[2]),
              std::make_tuple(0.0, 0.0, -2.5));
    EXPECT_EQ(report.err, "did not see sensor id 6\ndid not see sensor id 7\ndid not see sensor id 8\n"
                          "did not see sensor id 9\n");
}

struct ReportSetup
{
    bool occlusion = true;
    bool sensitivity = false;
    double tilt = 0.0;
    double stepDegrees = 10.0;
};

// Nine sensors seated on the occluded cube and one that the slab always hides (id 17),
// analysed 2.5 m away on `threads` workers; the text of both streams, then what the
// evaluator is left with.
std::vector<std::string> RunReport(const ReportSetup& setup, int32_t threads)
{
    test::MeshSurface mesh(test::MakeOccludedCube(), 7);
    std::vector<Eigen::Vector3f> points(10, test::kUnderTheSlab), normals(10, test::kUnderTheSlabNormal);
    for (size_t i = 0; i < 10; ++i)
        EXPECT_TRUE(i == 4 || mesh.surface().SampleSeat(points[i], normals[i]));
    SensorLayout layout = test::MakeLayout(points, normals, {0, 1, 2, 3, 17, 5, 6, 7, 8, 9});
    layout.cosMaxIncidence = 0.5;
    QualityEvaluator evaluator;
    evaluator.SetSurface(setup.occlusion ? &mesh.surface() : nullptr);
    if (setup.tilt != 0.0)
        evaluator.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, setup.tilt});
    const test::CliResult text =
        Report(evaluator, layout, DegreesToRadians(setup.stepDegrees), 2.5, setup.sensitivity, threads);
    std::string state;
    for (double v : evaluator.poseVector())
        state += std::to_string(v) + ' ';
    for (size_t i = 0; i < 10; ++i)
        state +=
            std::to_string(evaluator.visibility()->visible[i]) + std::to_string(evaluator.visibility()->everSeen[i]);
    return {text.out, text.err, state};
}

// Every report on 2 and 3 threads is the one-thread text byte for byte; a 3 degree grid holds
// more rows than are computed between two writes.
TEST(ParallelAnalysisReport, TextIsTheOneThreadTextByteForByte)
{
    const ReportSetup setups[] = {{},
                                  {.occlusion = false},
                                  {.tilt = 0.4},
                                  {.stepDegrees = 3.0},
                                  {.sensitivity = true},
                                  {.sensitivity = true, .tilt = 0.4}};
    for (const ReportSetup& setup : setups)
    {
        const std::vector<std::string> one = RunReport(setup, 1);
        ASSERT_FALSE(one[0].empty());
        for (const int32_t threads : {2, 3})
            EXPECT_TRUE(RunReport(setup, threads) == one) << threads << " threads, step " << setup.stepDegrees;
    }
    // The premise: the hidden sensor is named, and rows differ in what they see.
    const std::vector<std::string> coverage = RunReport({}, 1);
    EXPECT_EQ(coverage[1], "did not see sensor id 17\n");
    EXPECT_NE(coverage[0].find(" 100 0 "), std::string::npos);
    EXPECT_NE(coverage[0].find(" 0 100 "), std::string::npos);
}

} // namespace
} // namespace kelvorig
