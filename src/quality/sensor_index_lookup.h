#pragma once

#include "model/sensor_model.h"

#include <cstdint>

namespace kelvorig {

// The value of `id` in the layout's idToIndex: an index into the source model's lists.
// Throws std::out_of_range("invalid map<K, T> key") for an id the map doesn't hold.
int32_t SensorIndexOfId(const SensorLayout& layout, int32_t id);

} // namespace kelvorig
