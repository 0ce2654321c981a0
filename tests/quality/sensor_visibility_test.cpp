#include "quality/sensor_visibility.h"

#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Without a surface the incidence test alone decides: a limit equal to the incidence cosine
// is not visible, one just below it is. The test reads the layout at each call, so a sensor
// moved in place counts at once. (The object at (0, 0, -2): the view is exactly +Z.)
TEST(SensorVisibility, IncidenceLimitIsStrictAndTheLayoutIsReadAtEachTest)
{
    SensorLayout layout = test::MakeLayout({Eigen::Vector3f::Zero()}, {Eigen::Vector3f(0.6f, 0.0f, 0.8f)});
    const SensorRayTest test{&layout, 0, nullptr};
    layout.cosMaxIncidence = layout.normals[0].z();
    EXPECT_FALSE(test.IsSensorVisible(kInitialPoseVector));
    layout.cosMaxIncidence = std::nextafter(layout.normals[0].z(), 0.0);
    EXPECT_TRUE(test.IsSensorVisible(kInitialPoseVector));
    layout.normals[0] = Eigen::Vector3d(0.0, 0.0, -1.0);
    EXPECT_FALSE(test.IsSensorVisible(kInitialPoseVector));
}

} // namespace
} // namespace kelvorig
