#include "quality/base_station_pose.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// The rotation vector of a quaternion goes the shorter way round, whichever sign the
// quaternion has. (That a record turns its direction onto +Z is checked by every comparison
// of the reports and the score against the reference model.)
TEST(BaseStationPose, RotationVectorTakesTheShorterWayRound)
{
    const double h = std::sqrt(0.5);
    EXPECT_NEAR(RotationVectorFromQuaternion({h, 0.0, 0.0, h})[2], 1.5707963267948966, 1e-15);
    EXPECT_NEAR(RotationVectorFromQuaternion({-h, 0.0, 0.0, -h})[2], 1.5707963267948966, 1e-15);
}

} // namespace
} // namespace kelvorig
