#include "quality/quality_evaluator.h"

#include "quality/reference_pose_error.h"
#include "support/cli_runner.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <Eigen/Geometry>

#include <cmath>
#include <sstream>
#include <string>

namespace kelvorig {
namespace {

using test::MakeLayout;

constexpr double kFullTurn = 6.283185307179586;
constexpr double kQuarterTurn = 1.5707963267948966;
constexpr double kFifteenDegrees = 15.0 * 0.005555555555555556 * 3.141592653589793;

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

struct CoverageRow
{
    double yaw, pitch, distance, zero;
    int count;
    int zeros[3];
    int solvable, failure;
    double rotationError, positionError;
    std::vector<int> ids;
};

CoverageRow ParseCoverageRow(const std::string& line)
{
    std::istringstream in(line);
    CoverageRow row;
    in >> row.yaw >> row.pitch >> row.distance >> row.zero >> row.count >> row.zeros[0] >> row.zeros[1] >>
        row.zeros[2] >> row.solvable >> row.failure >> row.rotationError >> row.positionError;
    for (int id; in >> id;)
        row.ids.push_back(id);
    return row;
}

// The pose error of the independent model for the sensors seen from this grid direction
// with the object at `translation`, or an empty list when none is seen.
struct ReferenceRow
{
    std::vector<int> ids;
    std::vector<Eigen::Vector3d> points;
    Eigen::Matrix<double, 6, 1> variances;
    bool borderline = false;
};

ReferenceRow ReferenceFor(const SensorLayout& layout, const Eigen::Matrix3d& rotation, const Eigen::Vector3d& translation)
{
    ReferenceRow row;
    for (size_t i = 0; i < layout.SensorCount(); ++i)
    {
        const Eigen::Vector3d placed = rotation * layout.positions[i] + translation;
        const double c = (rotation * layout.normals[i]).dot(-placed.normalized());
        row.borderline = row.borderline || std::abs(c - layout.cosMaxIncidence) < 1e-9;
        if (c > layout.cosMaxIncidence)
        {
            row.ids.push_back(layout.sensorIds[i]);
            row.points.push_back(layout.positions[i]);
        }
    }
    if (!row.points.empty())
    {
        test::ReferencePose pose;
        pose << translation, Eigen::AngleAxisd(rotation).angle() * Eigen::AngleAxisd(rotation).axis();
        row.variances = test::ReferenceVariances(pose, row.points);
    }
    return row;
}

double ClampedError(double variance)
{
    const double error = std::sqrt(variance);
    return std::isnan(error) || error > 1.0 ? 1.0 : error;
}

// Ten sensors on a lumpy shell, facing roughly outwards, one of them with no normal at
// all so that it is never seen.
SensorLayout ShellLayout()
{
    std::vector<Eigen::Vector3f> points, normals;
    const float coordinates[][3] = {{0.08f, 0.01f, 0.03f},   {-0.07f, 0.02f, 0.04f}, {0.01f, 0.09f, 0.02f},
                                    {0.02f, -0.08f, 0.05f},  {0.0f, 0.01f, 0.1f},    {0.05f, 0.05f, 0.07f},
                                    {-0.05f, -0.04f, 0.06f}, {0.06f, -0.05f, -0.03f}, {-0.04f, 0.06f, -0.05f},
                                    {0.03f, 0.02f, -0.09f}};
    for (const auto& c : coordinates)
    {
        points.emplace_back(c[0], c[1], c[2]);
        normals.push_back(Eigen::Vector3f(c[0], c[1], c[2]).normalized() + Eigen::Vector3f(0.05f, -0.03f, 0.02f));
    }
    normals[6] = Eigen::Vector3f::Zero();
    return MakeLayout(points, normals);
}

TEST(CoverageReport, RowsMatchIndependentComputation)
{
    SensorLayout layout = ShellLayout();
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(nullptr);
    evaluator.SampleAnalysisPoses(kFullTurn, kFifteenDegrees);
    evaluator.poseVector()[2] = -1.5;
    WorkerPool one(1);
    const auto report = test::CaptureFiles([&](FILE* out, FILE* err) { evaluator.WriteCoverageReport(one, out, err); });

    const std::vector<std::string> lines = Lines(report.out);
    ASSERT_EQ(lines.size(), evaluator.poses().size());
    int checked = 0;
    for (size_t k = 0; k < lines.size(); ++k)
    {
        const CoverageRow row = ParseCoverageRow(lines[k]);
        const BaseStationPose& pose = evaluator.poses()[k];
        EXPECT_NEAR(row.yaw, pose.gridYaw, 5e-7);
        EXPECT_NEAR(row.pitch, pose.gridPitch, 5e-7);
        EXPECT_EQ(row.distance, 1.5);
        EXPECT_EQ(row.zero, 0.0);
        EXPECT_EQ(row.zeros[0] + row.zeros[1] + row.zeros[2], 0);
        EXPECT_EQ(row.solvable + row.failure, 100);
        EXPECT_EQ(static_cast<size_t>(row.count), row.ids.size());

        const Eigen::Vector3d direction = test::GridDirection(pose.gridYaw, pose.gridPitch);
        const ReferenceRow expected =
            ReferenceFor(layout, test::RotationOntoZ(direction), Eigen::Vector3d(0.0, 0.0, -1.5));
        if (expected.borderline)
            continue;
        ASSERT_EQ(row.ids, expected.ids) << lines[k];

        double position = 1.0, rotation = 1.0;
        if (!expected.ids.empty())
        {
            const Eigen::Matrix<double, 6, 1>& d = expected.variances;
            position = ClampedError(d[0] + d[1] + d[2]);
            rotation = ClampedError(d[3] + d[4] + d[5]);
        }
        // Few sensors leave the estimate ill-conditioned: compare where it is usable.
        if (position < 0.5 && rotation < 0.5)
        {
            EXPECT_NEAR(row.positionError, position, 1.5e-6 + 1e-5 * position) << lines[k];
            EXPECT_NEAR(row.rotationError, rotation, 1.5e-6 + 1e-5 * rotation) << lines[k];
            ++checked;
        }
        else if (expected.ids.size() < 3)
        {
            EXPECT_EQ(row.positionError, 1.0) << lines[k];
            EXPECT_EQ(row.solvable, 0) << lines[k];
        }
    }
    EXPECT_GT(checked, 50);
    EXPECT_EQ(report.err, "did not see sensor id 6\n");
}

// Sensors all facing +X, seen from yaw +90 degrees of a quarter-turn grid; the middle row
// is +Z, whose record is not a number.
TEST(CoverageReport, SolvabilityPercentagesFollowTheCases)
{
    const Eigen::Vector3f a(0, 0, 0), b(0, 0.1f, 0), c(0, 0, 0.1f), d(0.04f, 0.06f, 0.07f);
    const struct
    {
        std::vector<Eigen::Vector3f> points;
        int solvable;
        int failure;
    } cases[] = {
        {{a, b, c, d}, 99, 1},
        {{a, b, c, d, {0.02f, -0.05f, 0.03f}}, 100, 0},
        {{a, b, c, {0, 0.08f, 0.09f}}, 96, 4},
        {{a, b, c}, 0, 100},
    };
    for (const auto& test : cases)
    {
        SensorLayout layout =
            MakeLayout(test.points, std::vector<Eigen::Vector3f>(test.points.size(), Eigen::Vector3f::UnitX()));
        QualityEvaluator evaluator;
        evaluator.SetModel(layout);
        evaluator.SampleAnalysisPoses(kFullTurn, kQuarterTurn);
        WorkerPool one(1);
    const auto report = test::CaptureFiles([&](FILE* out, FILE* err) { evaluator.WriteCoverageReport(one, out, err); });
        const std::vector<std::string> lines = Lines(report.out);
        ASSERT_EQ(lines.size(), 15u);

        const CoverageRow seen = ParseCoverageRow(lines[10]);
        EXPECT_EQ(seen.yaw, 1.570796);
        EXPECT_EQ(seen.pitch, 0.0);
        EXPECT_EQ(static_cast<size_t>(seen.count), test.points.size());
        EXPECT_EQ(seen.solvable, test.solvable) << lines[10];
        EXPECT_EQ(seen.failure, test.failure) << lines[10];
        if (test.solvable != 0)
        {
            EXPECT_LT(seen.positionError, 1.0);
            EXPECT_LT(seen.rotationError, 1.0);
        }

        // The +Z row goes through every step and fails, seeing every sensor without a surface.
        std::ostringstream nanRow;
        nanRow << "0.000000 0.000000 2.0 0.0 " << test.points.size() << " 0 0 0 0 100 1.000000 1.000000";
        for (size_t i = 0; i < test.points.size(); ++i)
            nanRow << ' ' << i;
        EXPECT_EQ(lines[7], nanRow.str());

        // Facing away: nothing seen.
        EXPECT_EQ(lines[4], "-1.570796 0.000000 2.0 0.0 0 0 0 0 0 100 1.000000 1.000000");
        EXPECT_EQ(report.err, "");
    }
}

TEST(SensitivityReport, RowsMatchIndependentComputation)
{
    SensorLayout layout = ShellLayout();
    layout.cosMaxIncidence = 0.1;
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SampleAnalysisPoses(kFullTurn, kFifteenDegrees);
    evaluator.poseVector()[2] = -2.5;
    WorkerPool one(1);
    const auto report =
        test::CaptureFiles([&](FILE* out, FILE* err) { evaluator.WriteSensitivityReport(one, out, err); });
    const std::vector<std::string> lines = Lines(report.out);
    ASSERT_EQ(lines.size(), evaluator.poses().size());

    // The object swings around the base station as one body: its aspect, and so the set
    // of sensors seen, is that of the unrotated object at every pose.
    const ReferenceRow unrotated = ReferenceFor(layout, Eigen::Matrix3d::Identity(), Eigen::Vector3d(0.0, 0.0, -2.5));
    ASSERT_GE(unrotated.ids.size(), 4u);
    int checked = 0;
    for (size_t k = 0; k < lines.size(); ++k)
    {
        std::istringstream row(lines[k]);
        double yaw, pitch, error[3];
        row >> yaw >> pitch >> error[0] >> error[1] >> error[2];
        const BaseStationPose& pose = evaluator.poses()[k];
        const Eigen::Matrix3d rotation = test::RotationOntoZ(test::GridDirection(pose.gridYaw, pose.gridPitch));
        const ReferenceRow expected = ReferenceFor(layout, rotation, rotation * Eigen::Vector3d(0.0, 0.0, -2.5));
        ASSERT_EQ(expected.ids, unrotated.ids);
        // Off to the side the sweep angles turn singular and differences can't follow.
        if ((rotation * Eigen::Vector3d(0.0, 0.0, -2.5)).z() > -1.0)
            continue;
        ++checked;
        for (int axis = 0; axis < 3; ++axis)
        {
            const double want = ClampedError(expected.variances[axis]);
            EXPECT_NEAR(error[axis], want, 1.5e-6 + 1e-5 * want) << lines[k] << " axis " << axis;
        }
    }
    EXPECT_GT(checked, 50);
    EXPECT_EQ(evaluator.poseVector()[0], 0.0);
    EXPECT_EQ(evaluator.poseVector()[1], 0.0);
    EXPECT_EQ(evaluator.poseVector()[2], -2.5);
    EXPECT_EQ(report.err, "did not see sensor id 6\ndid not see sensor id 7\ndid not see sensor id 8\n"
                          "did not see sensor id 9\n");
}

} // namespace
} // namespace kelvorig
