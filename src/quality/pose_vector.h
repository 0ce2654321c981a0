#pragma once

#include <array>

namespace kelvorig {

// The evaluator's current pose: translation tx, ty, tz in metres, then four rotation
// slots. While visibility is decided the slots hold a quaternion w, x, y, z; while the
// Jacobian is built entries 3 to 5 hold the rotation vector instead (entry 6 unread).
using PoseVector = std::array<double, 7>;

// The object 2 metres in front of the base station, unrotated.
constexpr PoseVector kInitialPoseVector = {0.0, 0.0, -2.0, 1.0, 0.0, 0.0, 0.0};

} // namespace kelvorig
