#include "optimiser/placement_layout.h"

namespace kelvorig {

TrackedObjectModel MakeBlankModel(int32_t count)
{
    TrackedObjectModel model;
    for (int32_t i = 0; i < count; ++i)
    {
        model.channelMap.push_back(i);
        model.modelPoints.push_back(Eigen::Vector3f::Zero());
        model.modelNormals.push_back(Eigen::Vector3f::Zero());
    }
    return model;
}

PlacementLayout::PlacementLayout(int32_t count) : SensorLayout(MakeBlankModel(count), kIdentityTransform) {}

void PlacementLayout::CopyImmutableSensors(const SensorLayout& immutable)
{
    for (size_t i = 0; i < immutable.SensorCount(); ++i)
    {
        positions[i] = immutable.positions[i];
        normals[i] = immutable.normals[i];
    }
    immutableCount = static_cast<uint32_t>(immutable.SensorCount());
}

} // namespace kelvorig
