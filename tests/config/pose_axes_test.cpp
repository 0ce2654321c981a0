#include "config/pose_axes.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

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

    // An opposite vector along X takes its axis from Y.
    const Quaternion alongX = ShortestArc(Eigen::Vector3d(-1, 0, 0), Eigen::Vector3d(1, 0, 0));
    EXPECT_EQ(alongX[2], 1.0);  // (0,1,0) x (-1,0,0)
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
