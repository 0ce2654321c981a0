#include "config/pose_axes.h"

#include "geometry/angles.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// The rotation whose columns are the unit X, Y and Z axes given, as a quaternion: an
// independent construction of the pose's rotation.
Eigen::Quaterniond RotationFromColumns(Eigen::Vector3d x, Eigen::Vector3d z)
{
    x.normalize();
    z.normalize();
    Eigen::Matrix3d r;
    r.col(0) = x;
    r.col(1) = z.cross(x);
    r.col(2) = z;
    return Eigen::Quaterniond(r);
}

void ExpectSameRotation(const Pose& pose, const Eigen::Quaterniond& expected)
{
    const double sign = (pose[0] * expected.x() + pose[1] * expected.y() + pose[2] * expected.z() +
                         pose[3] * expected.w()) < 0 ? -1.0 : 1.0;
    EXPECT_NEAR(pose[0], sign * expected.x(), 1e-12);
    EXPECT_NEAR(pose[1], sign * expected.y(), 1e-12);
    EXPECT_NEAR(pose[2], sign * expected.z(), 1e-12);
    EXPECT_NEAR(pose[3], sign * expected.w(), 1e-12);
}

TEST(PoseAxes, BuildsTheRotationTakingUnitAxesOntoTheGivenOnes)
{
    const struct
    {
        Eigen::Vector3d x, z;
    } cases[] = {
        {{1, 0, 0}, {0, 0, 1}},
        {{0, 1, 0}, {1, 0, 0}},
        {{0, 0, 1}, {0, 1, 0}},
        {{1, 1, 0}, {-1, 1, 0}},
        {{0.3, -0.2, 0.7}, {0.2, 0.3, 0}},
        {{-1, 0, 0}, {0, -1, 0}},
        {{1, 2, 3}, {3, 0, -1}},
    };
    for (const auto& c : cases)
    {
        Pose pose{};
        ASSERT_TRUE(BuildPoseFromAxes(&pose, Eigen::Vector3d(0.1, 0.2, 0.3), c.x, c.z));
        ExpectSameRotation(pose, RotationFromColumns(c.x, c.z));
        EXPECT_EQ(pose[4], 0.1);
        EXPECT_EQ(pose[5], 0.2);
        EXPECT_EQ(pose[6], 0.3);

        Eigen::Vector3d position, plusX, plusZ;
        AxesFromPose(&position, &plusX, &plusZ, pose);
        EXPECT_NEAR((plusX - c.x.normalized()).norm(), 0.0, 1e-12);
        EXPECT_NEAR((plusZ - c.z.normalized()).norm(), 0.0, 1e-12);
        EXPECT_EQ(position, Eigen::Vector3d(0.1, 0.2, 0.3));
    }
}

TEST(PoseAxes, ReferenceAxesGiveTheExactIdentity)
{
    Pose pose{};
    ASSERT_TRUE(BuildPoseFromAxes(&pose, Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(2, 0, 0),
                                  Eigen::Vector3d(0, 0, 1)));
    EXPECT_EQ(pose, kIdentityPose);
}

TEST(PoseAxes, OppositeZTurnsAboutXAndCleansTheTinyCosine)
{
    const Quaternion arc = ShortestArc(Eigen::Vector3d(0, 0, -1), Eigen::Vector3d(0, 0, 1));
    EXPECT_EQ(arc[0], 0.0);
    EXPECT_EQ(arc[1], 1.0);  // (1,0,0) x (0,0,-1)
    EXPECT_EQ(arc[2], 0.0);
    EXPECT_NE(arc[3], 0.0);
    EXPECT_LT(std::abs(arc[3]), 1e-15);

    Pose pose{};
    ASSERT_TRUE(BuildPoseFromAxes(&pose, Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(1, 0, 0),
                                  Eigen::Vector3d(0, 0, -1)));
    EXPECT_EQ(pose, (Pose{1, 0, 0, 0, 0, 0, 0}));
}

TEST(PoseAxes, OppositeVectorAlongXTakesItsAxisFromY)
{
    const Quaternion arc = ShortestArc(Eigen::Vector3d(-1, 0, 0), Eigen::Vector3d(1, 0, 0));
    EXPECT_EQ(arc[0], 0.0);
    EXPECT_EQ(arc[1], 0.0);
    EXPECT_EQ(arc[2], 1.0);  // (0,1,0) x (-1,0,0)
}

TEST(PoseAxes, RefusesZeroAndNonPerpendicularAxesAndLeavesThePose)
{
    const double tilt = DegreesToRadians(89.9);
    const double nearly = DegreesToRadians(89.97);
    Pose pose = {9, 9, 9, 9, 9, 9, 9};
    const Pose untouched = pose;
    const Eigen::Vector3d origin(0, 0, 0);
    EXPECT_FALSE(BuildPoseFromAxes(&pose, origin, Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(0, 0, 1)));
    EXPECT_FALSE(BuildPoseFromAxes(&pose, origin, Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 0, 0)));
    EXPECT_FALSE(BuildPoseFromAxes(&pose, origin, Eigen::Vector3d(std::sin(tilt), 0, std::cos(tilt)),
                                   Eigen::Vector3d(0, 0, 1)));
    EXPECT_EQ(pose, untouched);
    EXPECT_TRUE(BuildPoseFromAxes(nullptr, origin, Eigen::Vector3d(std::sin(nearly), 0, std::cos(nearly)),
                                  Eigen::Vector3d(0, 0, 1)));
}

TEST(PoseAxes, NearlyPerpendicularXIsFlattenedAndZKept)
{
    const double nearly = DegreesToRadians(89.97);
    Pose pose{};
    ASSERT_TRUE(BuildPoseFromAxes(&pose, Eigen::Vector3d(0, 0, 0),
                                  Eigen::Vector3d(std::sin(nearly), 0, std::cos(nearly)),
                                  Eigen::Vector3d(0, 0, 1)));
    Eigen::Vector3d plusX, plusZ;
    AxesFromPose(nullptr, &plusX, &plusZ, pose);
    EXPECT_NEAR((plusZ - Eigen::Vector3d(0, 0, 1)).norm(), 0.0, 1e-15);
    EXPECT_NEAR((plusX - Eigen::Vector3d(1, 0, 0)).norm(), 0.0, 1e-15);
}

TEST(PoseAxes, NormalizeVectorLeavesZeroAlone)
{
    Eigen::Vector3d zero(0, 0, 0);
    EXPECT_FALSE(NormalizeVector(zero));
    EXPECT_EQ(zero, Eigen::Vector3d(0, 0, 0));
    Eigen::Vector3d v(0, 3, 4);
    EXPECT_TRUE(NormalizeVector(v));
    EXPECT_NEAR(v.y(), 0.6, 1e-15);
    EXPECT_NEAR(v.z(), 0.8, 1e-15);
}

TEST(PoseAxes, RotateByQuaternionMatchesEigen)
{
    const Eigen::Quaterniond q = Eigen::Quaterniond(0.3, -0.5, 0.2, 0.7).normalized();
    const Eigen::Vector3d v(0.4, -1.2, 2.5);
    const Eigen::Vector3d rotated = RotateByQuaternion({q.x(), q.y(), q.z(), q.w()}, v);
    EXPECT_NEAR((rotated - q * v).norm(), 0.0, 1e-14);
}

} // namespace
} // namespace kelvorig
