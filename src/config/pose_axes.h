#pragma once

#include "support/quaternion.h"

#include <Eigen/Core>

#include <array>

namespace kelvorig {

// Above this |dot product| two unit axes are not perpendicular enough to make a rotation of.
constexpr double kPerpendicularLimit = 0.001;

// A pose as the device files store it: quaternion x, y, z, w (Hamilton convention), then
// position x, y, z. Not the quality code's PoseVector, which leads with the translation.
using CalibrationPose = std::array<double, 7>;

constexpr CalibrationPose kIdentityCalibrationPose = {0, 0, 0, 1, 0, 0, 0};

// Scales v to unit length (length sqrt(y*y + x*x + z*z)). False for a zero vector, which
// stays as it is.
bool NormalizeVector(Eigen::Vector3d& v);

// Shortest-arc rotation taking the unit vector `from` onto the unit vector `to`.
Quaternion<double> ShortestArc(const Eigen::Vector3d& from, const Eigen::Vector3d& to);

// The pose whose rotation takes unit X onto plusX and unit Z onto plusZ, at `position`.
// The axes need not be unit length but must be perpendicular within a dot product of
// 0.001. False (and `pose` untouched) when they are not, or one is zero. `pose` may be null.
bool BuildPoseFromAxes(CalibrationPose* pose, const Eigen::Vector3d& position, const Eigen::Vector3d& plusX,
                       const Eigen::Vector3d& plusZ);

// The inverse of BuildPoseFromAxes: the position and the rotated unit X and Z. Each output
// may be null and is then skipped.
void AxesFromPose(Eigen::Vector3d* position, Eigen::Vector3d* plusX, Eigen::Vector3d* plusZ,
                  const CalibrationPose& pose);

} // namespace kelvorig
