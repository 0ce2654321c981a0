#include "quality/sensor_visibility.h"

#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeLayout;

// Object at (0, 0, -2), unrotated: the base station lies along +Z from the object.
const PoseVector kFacing = kInitialPoseVector;

// A sensor at the origin whose normal leans `degrees` away from +Z, about the Y axis.
SensorLayout LeaningSensor(double degrees)
{
    const double radians = degrees * 0.005555555555555556 * 3.141592653589793;
    return MakeLayout({Eigen::Vector3f::Zero()},
                      {Eigen::Vector3f(static_cast<float>(std::sin(radians)), 0.0f,
                                       static_cast<float>(std::cos(radians)))});
}

// Without a surface the incidence test alone decides, with the layout's limit.
TEST(SensorVisibility, IncidenceLimitDecidesWithoutSurface)
{
    struct Case
    {
        double leanDegrees;
        double cosLimit;
        bool visible;
    } cases[] = {
        {0.0, 0.5, true},       // facing the base station
        {0.0, 0.999999, true},  // c = 1 passes any limit below 1
        {59.0, 0.5, true},
        {61.0, 0.5, false},
        {120.0, 0.5, false},
        {30.0, 0.9, false},
    };
    const BaseStationModel standard;
    for (const Case& c : cases)
    {
        SensorLayout layout = LeaningSensor(c.leanDegrees);
        layout.cosMaxIncidence = c.cosLimit;
        const SensorRayTest test{&layout, 0, nullptr};
        EXPECT_EQ(test.IsSensorVisible(kFacing), c.visible) << c.leanDegrees << " degrees, limit " << c.cosLimit;
    }

    // A limit equal to the incidence cosine is not visible.
    SensorLayout layout = MakeLayout({Eigen::Vector3f::Zero()}, {Eigen::Vector3f(0.6f, 0.0f, 0.8f)});
    const SensorRayTest test{&layout, 0, nullptr};
    layout.cosMaxIncidence = layout.normals[0].z();  // the view is exactly +Z
    EXPECT_FALSE(test.IsSensorVisible(kFacing));
    layout.cosMaxIncidence = std::nextafter(layout.normals[0].z(), 0.0);
    EXPECT_TRUE(test.IsSensorVisible(kFacing));
}

// The test reads the layout at each call, so a sensor moved in place counts at once.
TEST(SensorVisibility, ReadsTheLayoutAtEachTest)
{
    SensorLayout layout = LeaningSensor(0.0);
    const SensorRayTest test{&layout, 0, nullptr};
    EXPECT_TRUE(test.IsSensorVisible(kFacing));
    layout.normals[0] = Eigen::Vector3d(0.0, 0.0, -1.0);
    EXPECT_FALSE(test.IsSensorVisible(kFacing));
}

// A rotation turns the normal with the object: half a turn about X hides a sensor facing
// +Z and shows one facing -Z.
// A quaternion that is not a number makes the cosine NaN, which the incidence test lets
// through; with no surface the sensor counts as visible.
// The index comes from idToIndex, so two entries with one id share the later sensor.
} // namespace
} // namespace kelvorig
