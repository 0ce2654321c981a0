#include "quality/base_station_pose.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

constexpr double kQuarterTurn = 1.5707963267948966;

Triple<double> Rotate(const BaseStationPose& pose, const Triple<double>& v)
{
    return RotateByUnitQuaternion(pose.quaternion, v);
}

// The record's rotation brings its direction onto +Z, as a unit quaternion with w >= 0
// whose rotation vector is axis times angle.
TEST(BaseStationPose, TurnsDirectionOntoZ)
{
    const Triple<double> directions[] = {{1.0, 0.0, 0.0}, {0.0, -1.0, 0.0}, {0.6, 0.0, -0.8}, {0.48, 0.6, 0.64},
                                         {-0.36, -0.48, 0.8}, {0.0, 0.6, -0.8}};
    for (const Triple<double>& v : directions)
    {
        const BaseStationPose pose = PoseTowardDirection(v);
        const Triple<double> turned = Rotate(pose, v);
        EXPECT_NEAR(turned[0], 0.0, 1e-12);
        EXPECT_NEAR(turned[1], 0.0, 1e-12);
        EXPECT_NEAR(turned[2], 1.0, 1e-12);
        const Quaternion<double>& q = pose.quaternion;
        EXPECT_GE(q.w, 0.0);
        EXPECT_NEAR(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, 1.0, 1e-12);
        const double angle = 2.0 * std::acos(q.w);
        const double s = std::sqrt(1.0 - q.w * q.w);
        EXPECT_NEAR(pose.rotationVector[0], q.x / s * angle, 1e-9);
        EXPECT_NEAR(pose.rotationVector[1], q.y / s * angle, 1e-9);
        EXPECT_NEAR(pose.rotationVector[2], q.z / s * angle, 1e-9);
        EXPECT_EQ(pose.direction, v);
    }
}

TEST(BaseStationPose, RotationVectorOfIdentityAndOfNegativeW)
{
    // A quarter turn about Z, either sign of the quaternion: the shorter way round.
    const double h = std::sqrt(0.5);
    const Triple<double> plus = RotationVectorFromQuaternion({h, 0.0, 0.0, h});
    const Triple<double> minus = RotationVectorFromQuaternion({-h, 0.0, 0.0, -h});
    EXPECT_NEAR(plus[2], kQuarterTurn, 1e-15);
    EXPECT_NEAR(minus[2], kQuarterTurn, 1e-15);
}

} // namespace
} // namespace kelvorig
