#pragma once

#include "config/pose_axes.h"

#include <json/value.h>

#include <array>

namespace kelvorig {

// A pose as calibration files store it: quaternion x, y, z, w, then position, 32-bit.
using CalibrationPoseFloat = std::array<float, 7>;
using TripleFloat = std::array<float, 3>;
// 3 by 3, row by row.
using Matrix3Float = std::array<float, 9>;

constexpr CalibrationPoseFloat kIdentityCalibrationPoseFloat = {0, 0, 0, 1, 0, 0, 0};
constexpr Matrix3Float kIdentityMatrix3 = {1, 0, 0, 0, 1, 0, 0, 0, 1};

// Readers of fixed-size number arrays: an element past the array's end, or a null array,
// reads as 0. Numbers are read as 64-bit and narrowed. A value of the wrong JSON type
// throws Json::Exception.
float ReadFloat(const Json::Value& object, const char* key, double fallback);
TripleFloat ReadTripleFloat(const Json::Value& triple);
Eigen::Vector3d ReadTripleDouble(const Json::Value& triple);
CalibrationPoseFloat ReadPoseFloat(const Json::Value& pose);
// Three rows of three numbers.
Matrix3Float ReadMatrix3(const Json::Value& rows);

// Writers: 32-bit floats are widened exactly.
Json::Value TripleToJson(const TripleFloat& triple);
Json::Value TripleToJson(const Eigen::Vector3d& triple);
Json::Value PoseToJson(const CalibrationPoseFloat& pose);
Json::Value Matrix3ToJson(const Matrix3Float& matrix);

CalibrationPose WidenPose(const CalibrationPoseFloat& pose);
CalibrationPoseFloat NarrowPose(const CalibrationPose& pose);

} // namespace kelvorig
