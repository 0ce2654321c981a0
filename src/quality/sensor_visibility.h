#pragma once

#include "model/sensor_model.h"
#include "quality/base_station_model.h"
#include "quality/pose_vector.h"
#include "quality/sensor_observation.h"

#include <cstdint>
#include <vector>

namespace kelvorig {

class TrackedSurface;

// Lift of the ray's origin off the surface along the sensor normal, and the nearest hit
// that counts, metres: together they keep the facet under the sensor from blocking it.
constexpr double kRayLift = 0.001;
constexpr float kRayNear = 0.0001f;

// Whether one sensor sees the base station: within its incidence limit, and with no part
// of the surface or obstacles in between. Reads the sensor from the layout at each test,
// so a sensor moved in place counts at once.
struct SensorRayTest
{
    const SensorLayout* model = nullptr;
    uint32_t sensorIndex = 0;                // into model->positions and model->normals
    const TrackedSurface* surface = nullptr; // null: incidence test only

    // `pose`: translation, then a quaternion w x y z in entries 3 to 6.
    bool IsSensorVisible(const PoseVector& pose) const;
};

// The per-sensor tests of one layout and the bits they leave: `visible` for the last pass,
// `everSeen` for all passes since construction. All sequences have one entry per sensor,
// in the layout's order.
class SensorVisibility
{
public:
    // Throws std::out_of_range for an id missing from the layout's idToIndex.
    SensorVisibility(const SensorLayout& model, const TrackedSurface* surface, const BaseStationModel& baseStation);

    // Tests every sensor at `pose` (translation, then quaternion), sets `visible` and
    // adds to `everSeen`.
    void UpdateVisibility(const PoseVector& pose);

    size_t SensorCount() const { return rayTests.size(); }
    size_t VisibleCount() const;

    std::vector<SensorObservation> observations;
    std::vector<SensorRayTest> rayTests;
    std::vector<bool> visible;
    std::vector<bool> everSeen;
    const TrackedSurface* surface = nullptr;
};

} // namespace kelvorig
