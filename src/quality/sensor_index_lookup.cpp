#include "quality/sensor_index_lookup.h"

#include <stdexcept>

namespace kelvorig {

int32_t SensorIndexOfId(const SensorLayout& layout, int32_t id)
{
    const auto found = layout.idToIndex.find(id);
    if (found == layout.idToIndex.end())
        throw std::out_of_range("invalid map<K, T> key");
    return found->second;
}

} // namespace kelvorig
