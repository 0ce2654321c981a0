#pragma once

#include "support/quaternion.h"

#include <array>

namespace kelvorig {

// The evaluator's current pose: translation tx, ty, tz in metres, then four rotation
// slots. While visibility is decided the slots hold a quaternion w, x, y, z; while the
// Jacobian is built entries 3 to 5 hold the rotation vector instead (entry 6 unread).
// Not the device files' CalibrationPose, which leads with the rotation.
using PoseVector = std::array<double, 7>;

// The object 2 metres in front of the base station, unrotated.
constexpr PoseVector kInitialPoseVector = {0.0, 0.0, -2.0, 1.0, 0.0, 0.0, 0.0};

// The rotation slots as visibility reads them.
inline void SetPoseQuaternion(PoseVector& pose, const Quaternion<double>& q)
{
    pose[3] = q.w;
    pose[4] = q.x;
    pose[5] = q.y;
    pose[6] = q.z;
}

// The rotation slots as the Jacobian reads them; entry 6 keeps what it held.
inline void SetPoseRotationVector(PoseVector& pose, const Triple<double>& rotationVector)
{
    for (int i = 0; i < 3; ++i)
        pose[3 + i] = rotationVector[i];
}

} // namespace kelvorig
