#pragma once

#include "quality/dual_number.h"
#include "quality/measurement_weights.h"
#include "quality/sensor_visibility.h"
#include "support/quaternion.h"

#include <Eigen/Core>

namespace kelvorig {

// Partials of the sweep angles, one row per angle (2k, 2k + 1 for the k-th visible sensor),
// columns tx, ty, tz (per metre) and rx, ry, rz (per radian of rotation vector). Fixed
// capacity of 64 rows, so it lives on the stack.
using ObservationJacobian = Eigen::Matrix<double, Eigen::Dynamic, 6, Eigen::RowMajor, kMaxObservationRows, 6>;

// The six pose parameters as dual numbers, each seeded with its own partial: translation
// from pose[0..2] and the rotation, as a unit quaternion, from the rotation vector in
// pose[3..5]. The Jacobian's rows of one sensor depend on nothing else of the pose.
struct DualPose
{
    Triple<DualNumber> translation;
    Quaternion<DualNumber> rotation;
};
DualPose SeedDualPose(const double* pose);

// The sweep angles of the visible sensors of `visibility` and their partials, at `pose`:
// six numbers tx, ty, tz, rx, ry, rz (rotation vector). `rows` is twice the number of
// visible sensors, at most 64; `residuals` has room for `rows` values; `jacobian`, when
// given, is already rows by 6. True when every visible sensor yielded its angles; false
// (a tilted sweep out of reach, or rows above 64) leaves both outputs untouched.
bool BuildObservationJacobian(const SensorVisibility& visibility, const double* pose, int rows, double* residuals,
                              ObservationJacobian* jacobian);

} // namespace kelvorig
