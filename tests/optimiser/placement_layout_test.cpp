#include "optimiser/placement_layout.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

TEST(PlacementLayout, StartsBlankWithIndexIdsAndNothingImmutable)
{
    const PlacementLayout layout(3);
    ASSERT_EQ(layout.SensorCount(), 3u);
    EXPECT_EQ(layout.sensorIds, (std::vector<int32_t>{0, 1, 2}));
    for (size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(layout.positions[i], Eigen::Vector3d::Zero());
        EXPECT_EQ(layout.normals[i], Eigen::Vector3d::Zero());
    }
    EXPECT_EQ(layout.immutableCount, 0u);
    EXPECT_EQ(layout.maxPairDistance, 0.0);
    EXPECT_EQ(layout.maxRadius, 0.0);
}

TEST(PlacementLayout, CountBelowOneIsEmpty)
{
    for (int32_t count : {0, -4})
    {
        EXPECT_EQ(PlacementLayout(count).SensorCount(), 0u) << count;
        EXPECT_TRUE(MakeBlankModel(count).channelMap.empty()) << count;
    }
}

TEST(PlacementLayout, ImmutableSensorsComeFirstWithTheirIndexAsId)
{
    TrackedObjectModel input;
    input.valid = true;
    input.channelMap = {9, 4};
    input.modelPoints = {{0.1f, 0.2f, 0.3f}, {-0.05f, 0.0f, 0.07f}};
    input.modelNormals = {{0, 0, 1}, {0.6f, 0.8f, 0}};
    const SensorLayout immutable(input, kIdentityTransform);

    PlacementLayout layout(4);
    layout.CopyImmutableSensors(immutable);
    EXPECT_EQ(layout.immutableCount, 2u);
    for (size_t i = 0; i < 2; ++i)
    {
        EXPECT_EQ(layout.positions[i], immutable.positions[i]) << i;
        EXPECT_EQ(layout.normals[i], immutable.normals[i]) << i;
    }
    EXPECT_EQ(layout.positions[2], Eigen::Vector3d::Zero());

    const TrackedObjectModel result = layout.ToModel();
    EXPECT_EQ(result.channelMap, (std::vector<int32_t>{0, 1, 2, 3}));
    EXPECT_EQ(result.modelPoints[0], input.modelPoints[0]);
    EXPECT_EQ(result.modelNormals[1], input.modelNormals[1]);
}

} // namespace
} // namespace kelvorig
