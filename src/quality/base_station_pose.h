#pragma once

#include "support/quaternion.h"

namespace kelvorig {

// One sampled orientation: the shortest rotation that brings `direction` (a unit vector,
// object frame, pointing from the object to the base station) onto +Z.
struct BaseStationPose
{
    double gridPitch = 0.0; // ring angle of the analysis grid, radians
    double gridYaw = 0.0;   // turn angle of the analysis grid, radians
    Triple<double> rotationVector = {};
    Quaternion<double> quaternion = {}; // w not negative
    Triple<double> direction = {};
};

// The record of direction v, with both grid angles 0. note: v = +Z (and -Z) divides 0 by
// 0 and gives a quaternion and rotation vector that are not numbers; that stays.
BaseStationPose PoseTowardDirection(const Triple<double>& v);

// Axis times angle of quaternion q (w x y z, unit).
Triple<double> RotationVectorFromQuaternion(const Quaternion<double>& q);

} // namespace kelvorig
