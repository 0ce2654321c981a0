#pragma once

#include "model/sensor_model.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kelvorig {

// One sweep (axis 0 or 1) hitting one sensor.
struct SweepHit
{
    int32_t sensorId = 0;
    uint32_t axis = 0;
};

// Whether the sweep hits of one pose can yield a pose at all: enough hits per axis, and
// sensors that don't all lie in one plane. Ids index `axisMask`, so only ids 0 to 31 are
// supported; hits of other ids count per axis but mark no sensor.
class PoseSolvability
{
public:
    static constexpr int kMaxSensorId = 31;

    // Reads all hits already in `hits`; later calls read what was appended since.
    PoseSolvability(const SensorLayout& layout, const std::vector<SweepHit>& hits);

    // At least 4 hits on each axis and 8 in all.
    bool HasEnoughHits();
    bool IsGeometrySolvable();

    // True when some three of the sensors `ids` (4 to 32, positions looked up in the
    // layout) span a triangle of height at least minFeatureSize with a fourth sensor
    // farther than that from its plane. Throws std::out_of_range for an unknown id.
    bool FindNonPlanarSet(const std::vector<int32_t>& ids) const;

    double minFeatureSize = 0.0085; // metres

private:
    void ReadNewHits();
    bool EnoughHitsCounted() const;
    std::vector<int32_t> IdsWithMask(uint8_t mask) const;

    const SensorLayout& layout_;
    const std::vector<SweepHit>& hits_;
    size_t hitsRead_ = 0;
    std::array<int32_t, 2> hitsPerAxis_ = {0, 0};
    int32_t bothAxesCount_ = 0;
    std::array<uint8_t, kMaxSensorId + 1> axisMask_ = {};
};

} // namespace kelvorig
