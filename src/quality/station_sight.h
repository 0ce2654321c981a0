#pragma once

#include "model/sensor_model.h"
#include "quality/pose_vector.h"

#include <Eigen/Core>

#include <cstdint>

namespace kelvorig {

class TrackedSurface;

// Where the base station stands in the object frame at `pose` (translation, then a
// quaternion w x y z in entries 3 to 6): -Rᵀ·t, with R the rotation matrix of the normalised
// quaternion. Not a number throughout for a quaternion that is not one.
Eigen::Vector3d StationInObjectFrame(const PoseVector& pose);

// The visibility test of SensorRayTest for one sensor, taken in the object frame against a
// base station given there: incidence angle and occlusion ray are the same in either frame,
// so no pose rotates anything. Copies the sensor when built; build it anew after a move.
class SensorSight
{
public:
    SensorSight(const SensorLayout& model, uint32_t sensorIndex, const TrackedSurface* surface);

    // True when the sensor sees a base station at `station` (object frame).
    bool Sees(const Eigen::Vector3d& station) const;

private:
    Eigen::Vector3d position_;
    Eigen::Vector3d normal_;
    Eigen::Vector3f rayOrigin_;
    double cosMaxIncidence_;
    const TrackedSurface* surface_; // null: incidence test only
};

} // namespace kelvorig
