#include "model/sensor_model.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

TEST(SensorLayout, SkipsNegativeIdsKeepsSourceIndicesAndAppliesTheTransform)
{
    TrackedObjectModel model;
    model.valid = true;
    model.channelMap = {-1, 5, 5, 2};
    model.modelPoints = {{9, 9, 9}, {1, 0, 0}, {-1, 0, 0}, {0, 3, 0}};
    model.modelNormals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 1, 0}};

    const SensorLayout layout(model, kIdentityTransform);
    EXPECT_EQ(layout.sensorIds, (std::vector<int32_t>{5, 5, 2}));
    EXPECT_EQ(layout.idToIndex.at(5), 2);
    EXPECT_EQ(layout.idToIndex.at(2), 3);
    ASSERT_EQ(layout.positions.size(), 3u);
    EXPECT_DOUBLE_EQ(layout.maxPairDistance, std::sqrt(10.0));
    EXPECT_DOUBLE_EQ(layout.maxRadius, 3.0);
    EXPECT_DOUBLE_EQ(layout.cosMaxIncidence, 0.5);

    const TrackedObjectModel back = layout.ToModel();
    EXPECT_TRUE(back.valid);
    EXPECT_EQ(back.channelMap, (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(back.modelPoints[2], Eigen::Vector3f(0, 3, 0));

    // A quarter turn about Z by rows, then a shift along X.
    model.modelPoints[3] = {1, 2, 3};
    model.modelNormals[3] = {1, 0, 0};
    const SensorLayout turned(model, {0, -1, 0, 1, 0, 0, 0, 0, 1, 10, 0, 0});
    EXPECT_EQ(turned.positions[2], Eigen::Vector3d(8, 1, 3));
    EXPECT_EQ(turned.normals[2], Eigen::Vector3d(0, 1, 0));

    // Lists of unequal length give a layout without sensors.
    model.modelNormals.pop_back();
    EXPECT_EQ(SensorLayout(model, kIdentityTransform).SensorCount(), 0u);
}

} // namespace
} // namespace kelvorig
