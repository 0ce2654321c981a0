#include "config/calibration_values.h"

namespace kelvorig {
namespace {

float ElementOf(const Json::Value& array, Json::ArrayIndex i)
{
    return static_cast<float>(array.get(i, 0.0).asDouble());
}

template <size_t N>
std::array<float, N> ReadFloats(const Json::Value& array)
{
    std::array<float, N> values{};
    for (size_t i = 0; i < N; ++i)
        values[i] = ElementOf(array, static_cast<Json::ArrayIndex>(i));
    return values;
}

template <size_t N>
Json::Value FloatsToJson(const std::array<float, N>& values)
{
    Json::Value array(Json::arrayValue);
    for (size_t i = 0; i < N; ++i)
        array[static_cast<Json::ArrayIndex>(i)] = static_cast<double>(values[i]);
    return array;
}

} // namespace

float ReadFloat(const Json::Value& object, const char* key, double fallback)
{
    return static_cast<float>(object.get(key, fallback).asDouble());
}

TripleFloat ReadTripleFloat(const Json::Value& triple)
{
    return ReadFloats<3>(triple);
}

Eigen::Vector3d ReadTripleDouble(const Json::Value& triple)
{
    return Eigen::Vector3d(triple.get(0u, 0.0).asDouble(), triple.get(1u, 0.0).asDouble(),
                           triple.get(2u, 0.0).asDouble());
}

CalibrationPoseFloat ReadPoseFloat(const Json::Value& pose)
{
    return ReadFloats<7>(pose);
}

Matrix3Float ReadMatrix3(const Json::Value& rows)
{
    Matrix3Float matrix{};
    for (Json::ArrayIndex r = 0; r < 3; ++r)
    {
        const Json::Value row = rows.get(r, Json::Value());
        for (Json::ArrayIndex c = 0; c < 3; ++c)
            matrix[r * 3 + c] = ElementOf(row, c);
    }
    return matrix;
}

Json::Value TripleToJson(const TripleFloat& triple)
{
    return FloatsToJson(triple);
}

Json::Value TripleToJson(const Eigen::Vector3d& triple)
{
    Json::Value array(Json::arrayValue);
    for (Json::ArrayIndex i = 0; i < 3; ++i)
        array[i] = triple[i];
    return array;
}

Json::Value PoseToJson(const CalibrationPoseFloat& pose)
{
    return FloatsToJson(pose);
}

Json::Value Matrix3ToJson(const Matrix3Float& matrix)
{
    Json::Value rows(Json::arrayValue);
    for (Json::ArrayIndex r = 0; r < 3; ++r)
    {
        for (Json::ArrayIndex c = 0; c < 3; ++c)
            rows[r][c] = static_cast<double>(matrix[r * 3 + c]);
    }
    return rows;
}

CalibrationPose WidenPose(const CalibrationPoseFloat& pose)
{
    CalibrationPose wide{};
    for (size_t k = 0; k < pose.size(); ++k)
        wide[k] = pose[k];
    return wide;
}

CalibrationPoseFloat NarrowPose(const CalibrationPose& pose)
{
    CalibrationPoseFloat narrow{};
    for (size_t k = 0; k < pose.size(); ++k)
        narrow[k] = static_cast<float>(pose[k]);
    return narrow;
}

} // namespace kelvorig
