#include "quality/orientation_sampling.h"

#include "quality/quality_evaluator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace kelvorig {
namespace {

constexpr double kQuarterTurn = 1.5707963267948966;

bool SameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool SameRecord(const BaseStationPose& a, const BaseStationPose& b)
{
    const double fieldsA[] = {a.gridPitch, a.gridYaw, a.rotationVector[0], a.rotationVector[1], a.rotationVector[2],
                              a.quaternion.w, a.quaternion.x, a.quaternion.y, a.quaternion.z, a.direction[0],
                              a.direction[1], a.direction[2]};
    const double fieldsB[] = {b.gridPitch, b.gridYaw, b.rotationVector[0], b.rotationVector[1], b.rotationVector[2],
                              b.quaternion.w, b.quaternion.x, b.quaternion.y, b.quaternion.z, b.direction[0],
                              b.direction[1], b.direction[2]};
    for (size_t i = 0; i < std::size(fieldsA); ++i)
    {
        if (!SameBits(fieldsA[i], fieldsB[i]))
            return false;
    }
    return true;
}

TEST(SampleOrientations, ReproducibleWithShortListsAsPrefixesAndPlusZFirst)
{
    std::vector<BaseStationPose> first, second, shorter;
    SampleBestCandidatePoses(200, first);
    SampleBestCandidatePoses(200, second);
    SampleBestCandidatePoses(37, shorter);
    ASSERT_EQ(first.size(), 200u);
    ASSERT_EQ(second.size(), 200u);
    ASSERT_EQ(shorter.size(), 37u);
    for (size_t i = 0; i < first.size(); ++i)
    {
        EXPECT_TRUE(SameRecord(first[i], second[i])) << "pose " << i;
        if (i < shorter.size())
        {
            EXPECT_TRUE(SameRecord(shorter[i], first[i])) << "pose " << i;
        }
    }
    EXPECT_EQ(first[0].direction, (Triple<double>{0.0, 0.0, 1.0}));
    EXPECT_TRUE(std::isnan(first[0].quaternion.w));
    EXPECT_TRUE(std::isnan(first[0].rotationVector[2]));
    EXPECT_TRUE(std::isnan(first[0].gridPitch));
}

// Best-candidate points spread out: none of them sits close to another.
TEST(SampleOrientations, ScoreScaleIsHalfThousandOverCount)
{
    QualityEvaluator evaluator;
    EXPECT_EQ(evaluator.scoreScale(), 1.0);
    evaluator.SampleOrientations(1);
    EXPECT_EQ(evaluator.poses().size(), 1u);
    EXPECT_EQ(evaluator.scoreScale(), 500.0);
    evaluator.SampleOrientations(1250);
    EXPECT_EQ(evaluator.scoreScale(), 0.4);
    evaluator.SampleOrientations(0);
    EXPECT_TRUE(evaluator.poses().empty());
    EXPECT_EQ(evaluator.scoreScale(), std::numeric_limits<double>::infinity());
    evaluator.SampleOrientations(-5);
    EXPECT_TRUE(evaluator.poses().empty());
}

// A quarter-turn step from the given starts lands exactly on the grid: three pitches for
// each of five yaws, yaw outer, and +Z at the middle.
TEST(SampleAnalysisPoses, QuarterTurnGrid)
{
    std::vector<BaseStationPose> poses;
    SampleGridPoses(6.283185307179586, kQuarterTurn, poses);
    ASSERT_EQ(poses.size(), 15u);
    const double yaws[] = {-2.0 * kQuarterTurn, -kQuarterTurn, 0.0, kQuarterTurn, 2.0 * kQuarterTurn};
    const double pitches[] = {-kQuarterTurn, 0.0, kQuarterTurn};
    for (size_t i = 0; i < poses.size(); ++i)
    {
        EXPECT_EQ(poses[i].gridYaw, yaws[i / 3]) << i;
        EXPECT_EQ(poses[i].gridPitch, pitches[i % 3]) << i;
    }
    EXPECT_EQ(poses[7].direction, (Triple<double>{0.0, 0.0, 1.0}));
    EXPECT_TRUE(std::isnan(poses[7].quaternion.w));
    const Triple<double>& side = poses[10].direction;  // yaw +90, pitch 0
    EXPECT_EQ(side[0], 1.0);
    EXPECT_EQ(side[1], 0.0);
    EXPECT_NEAR(side[2], 0.0, 1e-15);
}

// At any step the grid is a full product, grouped by yaw, with pitch from -90 degrees up
// to at most +90 in equal steps.
// A step wider than the half turn still gives one ring entry per yaw.
} // namespace
} // namespace kelvorig
