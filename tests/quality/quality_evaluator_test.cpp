#include "quality/quality_evaluator.h"

#include "optimiser/anneal_settings.h"
#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Twelve sensors round a 20 cm box, in pairs facing out along ±X, ±Y, ±Z.
SensorLayout SpreadLayout()
{
    std::vector<Eigen::Vector3f> points, normals;
    for (const Eigen::Vector3f axis : {Eigen::Vector3f::UnitX(), Eigen::Vector3f::UnitY(), Eigen::Vector3f::UnitZ()})
        for (float sign : {1.0f, -1.0f})
            for (const float offset : {0.03f, -0.04f})
            {
                points.push_back(axis * 0.1f * sign + Eigen::Vector3f(axis.y(), axis.z(), axis.x()) * offset +
                                 Eigen::Vector3f(0.01f, 0.02f, -0.015f));
                normals.push_back(axis * sign + Eigen::Vector3f(0.1f, -0.05f, 0.07f));
            }
    return test::MakeLayout(points, normals);
}

// Each pose's term is the squashed pose error of the independent model, and the score is
// scoreScale times their sum.
TEST(QualityEvaluator, TermsMatchIndependentPoseError)
{
    SensorLayout layout = SpreadLayout();
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SampleOrientations(40);
    double sum = 0.0;
    int scored = 0;
    for (const BaseStationPose& pose : evaluator.poses())
    {
        const double term = evaluator.PoseTerm(pose);
        sum += term;
        const test::ReferenceView view = test::ReferenceViewOf(
            layout, test::RotationOntoZ(Eigen::Vector3d(pose.direction[0], pose.direction[1], pose.direction[2])),
            {0.0, 0.0, -2.0});
        if (view.points.empty() || std::isnan(pose.quaternion.w))
        {
            EXPECT_EQ(term, 2.0);
            continue;
        }
        const double error = view.PositionError() + view.RotationError();
        if (view.points.size() >= 3 && !std::isnan(error))
        {
            EXPECT_NEAR(term, std::tanh(100.0 * error - 2.0) + std::tanh(2.0), 1e-6)
                << "pose with " << view.points.size();
            ++scored;
        }
    }
    EXPECT_GT(scored, 15);
    EXPECT_EQ(evaluator.EvaluateQuality(), evaluator.scoreScale() * sum);
}

// The anneal's limit loses half the orientations' spacing, radians taken from degrees.
TEST(AnnealSettings, TightenTheIncidenceLimitByRadiansTakenFromDegrees)
{
    EXPECT_NEAR((AnnealSettings{1250, 3, 0.96, 60.0, -1.0, -1.0}.IncidenceLimitDegrees()), 59.946, 0.0005);
}

// note: pins the score's arithmetic, and so the sampled orientations and the squashing curve
// of a quality range, bit for bit; a change here is a change of results. Pinned for the
// default x86-64 target; other targets may round differently.
TEST(QualityEvaluator, ScoreIsPinnedBitForBit)
{
    SensorLayout layout = SpreadLayout();
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SampleOrientations(200);
    EXPECT_EQ(evaluator.EvaluateQuality(), 0x1.3100f585bcb2fp+9);
    evaluator.SetQualityRange(0.002, 0.02);
    EXPECT_EQ(evaluator.EvaluateQuality(), 0x1.3cef365d0a604p+9);
}

} // namespace
} // namespace kelvorig
