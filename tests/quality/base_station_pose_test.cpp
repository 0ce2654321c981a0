#include "quality/base_station_pose.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// The record's rotation brings its direction onto +Z, as a unit quaternion with w >= 0
// whose rotation vector is axis times angle.
TEST(BaseStationPose, TurnsDirectionOntoZ)
{
    for (const Triple<double>& v : {Triple<double>{1.0, 0.0, 0.0}, {0.0, -1.0, 0.0}, {0.6, 0.0, -0.8},
                                    {0.48, 0.6, 0.64}, {-0.36, -0.48, 0.8}, {0.0, 0.6, -0.8}})
    {
        const BaseStationPose pose = PoseTowardDirection(v);
        const Triple<double> turned = RotateByUnitQuaternion(pose.quaternion, v);
        EXPECT_NEAR(std::hypot(turned[0], turned[1], turned[2] - 1.0), 0.0, 1e-12);
        const Quaternion<double>& q = pose.quaternion;
        EXPECT_GE(q.w, 0.0);
        EXPECT_NEAR(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, 1.0, 1e-12);
        const double perSine = 2.0 * std::acos(q.w) / std::sqrt(1.0 - q.w * q.w);
        EXPECT_NEAR(std::hypot(pose.rotationVector[0] - q.x * perSine, pose.rotationVector[1] - q.y * perSine,
                               pose.rotationVector[2] - q.z * perSine), 0.0, 1e-9);
        EXPECT_EQ(pose.direction, v);
    }
    // A quarter turn about Z, either sign of the quaternion: the shorter way round.
    const double h = std::sqrt(0.5);
    EXPECT_NEAR(RotationVectorFromQuaternion({h, 0.0, 0.0, h})[2], 1.5707963267948966, 1e-15);
    EXPECT_NEAR(RotationVectorFromQuaternion({-h, 0.0, 0.0, -h})[2], 1.5707963267948966, 1e-15);
}

} // namespace
} // namespace kelvorig
