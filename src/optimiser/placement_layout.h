#pragma once

#include "model/sensor_model.h"

#include <cstdint>

namespace kelvorig {

// A model of `count` sensors with ids 0..count-1, every point and normal zero; empty for a
// count below 1.
TrackedObjectModel MakeBlankModel(int32_t count);

// The annealer's state: a SensorLayout whose first `immutableCount` sensors no move may touch.
// Built blank, so maxPairDistance and maxRadius stay 0.0 however the sensors move.
struct PlacementLayout : SensorLayout
{
    uint32_t immutableCount = 0;

    explicit PlacementLayout(int32_t count);

    // Copies the positions and normals of `immutable` into the leading slots, in order, and
    // makes them immutable. Ids are not copied: a sensor's id stays its index. The caller
    // guarantees that `immutable` has fewer sensors than this layout.
    void CopyImmutableSensors(const SensorLayout& immutable);
};

} // namespace kelvorig
