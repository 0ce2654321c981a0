#pragma once

#include "model/sensor_model.h"
#include "quality/base_station_model.h"
#include "quality/dual_number.h"
#include "support/quaternion.h"

#include <cstdint>

namespace kelvorig {

// What the base station measures of one sensor: two sweep angles, radians, as functions of
// the pose. Reads the sensor's position and the descriptor at each use (neither is owned).
struct SensorObservation
{
    const SensorLayout* model = nullptr;
    uint32_t sensorIndex = 0; // into model->positions
    const BaseStationModel* baseStation = nullptr;
    int32_t sweepModel = 1; // 1 standard, 2 to 5 tilted

    // The two angles of the sensor with the object at rotation q (unit, w x y z) and
    // translation t (metres), base-station frame. False, with both left alone, when the
    // tilted sweep can't reach the sensor or the sweep model is unknown.
    bool ObserveAngles(const Quaternion<DualNumber>& q, const Triple<DualNumber>& t, DualNumber& first,
                       DualNumber& second) const;
};

} // namespace kelvorig
