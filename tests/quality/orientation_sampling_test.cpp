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

Triple<double> Rotate(const BaseStationPose& pose, const Triple<double>& v)
{
    return RotateByUnitQuaternion(pose.quaternion, v);
}

TEST(SampleOrientations, ReproducesItselfBitForBit)
{
    std::vector<BaseStationPose> first, second;
    SampleBestCandidatePoses(200, first);
    SampleBestCandidatePoses(200, second);
    ASSERT_EQ(first.size(), 200u);
    ASSERT_EQ(second.size(), 200u);
    for (size_t i = 0; i < first.size(); ++i)
        EXPECT_TRUE(SameRecord(first[i], second[i])) << "pose " << i;
}

TEST(SampleOrientations, ShortListIsPrefixOfLongerList)
{
    std::vector<BaseStationPose> shorter, longer;
    SampleBestCandidatePoses(37, shorter);
    SampleBestCandidatePoses(120, longer);
    for (size_t i = 0; i < shorter.size(); ++i)
        EXPECT_TRUE(SameRecord(shorter[i], longer[i])) << "pose " << i;
}

TEST(SampleOrientations, FirstIsPlusZAndNotANumber)
{
    std::vector<BaseStationPose> poses;
    SampleBestCandidatePoses(3, poses);
    EXPECT_EQ(poses[0].direction, (Triple<double>{0.0, 0.0, 1.0}));
    EXPECT_TRUE(std::isnan(poses[0].quaternion.w));
    EXPECT_TRUE(std::isnan(poses[0].rotationVector[2]));
    EXPECT_TRUE(std::isnan(poses[0].gridPitch));
}

// Later directions are unit vectors, their records valid, and the grid fields carry the
// rotation vector's x and y.
TEST(SampleOrientations, LaterRecordsAreValid)
{
    std::vector<BaseStationPose> poses;
    SampleBestCandidatePoses(100, poses);
    for (size_t i = 1; i < poses.size(); ++i)
    {
        const Triple<double>& v = poses[i].direction;
        EXPECT_NEAR(v[0] * v[0] + v[1] * v[1] + v[2] * v[2], 1.0, 1e-12);
        EXPECT_FALSE(std::isnan(poses[i].quaternion.w));
        EXPECT_TRUE(SameBits(poses[i].gridPitch, poses[i].rotationVector[0]));
        EXPECT_TRUE(SameBits(poses[i].gridYaw, poses[i].rotationVector[1]));
        const Triple<double> turned = Rotate(poses[i], v);
        EXPECT_NEAR(turned[2], 1.0, 1e-12);
    }
}

// Best-candidate points spread out: none of them sits close to another.
TEST(SampleOrientations, SpreadsOverTheSphere)
{
    std::vector<BaseStationPose> poses;
    SampleBestCandidatePoses(300, poses);
    double lowestZ = 1.0, highestZ = -1.0;
    for (size_t i = 0; i < poses.size(); ++i)
    {
        lowestZ = std::min(lowestZ, poses[i].direction[2]);
        highestZ = std::max(highestZ, poses[i].direction[2]);
        for (size_t j = 0; j < i; ++j)
        {
            double squared = 0.0;
            for (int k = 0; k < 3; ++k)
                squared += std::pow(poses[i].direction[k] - poses[j].direction[k], 2);
            EXPECT_GT(squared, 1e-3) << i << " and " << j;
        }
    }
    EXPECT_LT(lowestZ, -0.9);
    EXPECT_GT(highestZ, 0.9);
}

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
TEST(SampleAnalysisPoses, GridIsGroupedByYaw)
{
    const double step = 10.0 * 0.005555555555555556 * 3.141592653589793;
    std::vector<BaseStationPose> poses;
    SampleGridPoses(6.283185307179586, step, poses);
    size_t ringSize = 0;
    while (ringSize < poses.size() && poses[ringSize].gridYaw == poses[0].gridYaw)
        ++ringSize;
    // Accumulated angles may fall just short of the last step or just past it.
    EXPECT_TRUE(ringSize == 18 || ringSize == 19) << ringSize;
    ASSERT_EQ(poses.size() % ringSize, 0u);
    const size_t yawCount = poses.size() / ringSize;
    EXPECT_TRUE(yawCount == 36 || yawCount == 37) << yawCount;
    EXPECT_EQ(poses.front().gridYaw, -3.141592653589793);
    EXPECT_LE(poses.back().gridYaw, 3.141592653589793);
    EXPECT_GT(poses.back().gridYaw + step, 3.141592653589793);
    for (size_t i = 0; i < poses.size(); ++i)
    {
        EXPECT_EQ(poses[i].gridPitch, poses[i % ringSize].gridPitch);
        EXPECT_EQ(poses[i].gridYaw, poses[i - i % ringSize].gridYaw);
        const double theta = poses[i].gridPitch, phi = poses[i].gridYaw;
        EXPECT_NEAR(poses[i].direction[0], std::sin(phi) * std::cos(theta), 1e-15);
        EXPECT_NEAR(poses[i].direction[1], std::sin(theta), 1e-15);
        EXPECT_NEAR(poses[i].direction[2], std::cos(phi) * std::cos(theta), 1e-15);
    }
    EXPECT_EQ(poses[0].gridPitch, -kQuarterTurn);
    EXPECT_LE(poses[ringSize - 1].gridPitch, kQuarterTurn);
    EXPECT_GT(poses[ringSize - 1].gridPitch + step, kQuarterTurn);
    for (size_t k = 1; k < ringSize; ++k)
        EXPECT_NEAR(poses[k].gridPitch - poses[k - 1].gridPitch, step, 1e-12);
}

// A step wider than the half turn still gives one ring entry per yaw.
TEST(SampleAnalysisPoses, RingHasAtLeastOneEntry)
{
    QualityEvaluator evaluator;
    evaluator.SampleOrientations(4);
    evaluator.SampleAnalysisPoses(6.283185307179586, 4.0);
    ASSERT_EQ(evaluator.poses().size(), 2u);  // yaw -π and -π + 4
    EXPECT_EQ(evaluator.poses()[0].gridPitch, -kQuarterTurn);
    EXPECT_EQ(evaluator.scoreScale(), 125.0);  // left as the last sampling set it
}

} // namespace
} // namespace kelvorig
