#pragma once

#include <Eigen/Core>
#include <json/value.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace kelvorig {

// The "pharoscope_config" section as files hold it: 32-bit floats, file order.
// channelMap, modelPoints and modelNormals are parallel by intent; nothing here checks it.
struct TrackedObjectModel
{
    bool valid = false;
    std::string modelCad;
    std::vector<int32_t> channelMap;           // sensor id per entry; negative: kept, but no sensor
    std::vector<Eigen::Vector3f> modelPoints;  // metres, device CAD frame
    std::vector<Eigen::Vector3f> modelNormals; // unit length after reading
    std::vector<double> modelAngles;           // carried through untouched

    // Reads root["pharoscope_config"] and appends to the lists (never clears them).
    // Returns the new value of `valid`. Throws Json::Exception on a value of the wrong type.
    bool ParseModelSection(const Json::Value& root);

    // The section's own object (no "pharoscope_config" key around it); null when not valid.
    Json::Value ModelToJson() const;
};

// Rotation rows (row order) followed by the translation.
using ModelTransform = std::array<float, 12>;

constexpr ModelTransform kIdentityTransform = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

// The constellation as the quality code reads it, in 64-bit floats.
struct SensorLayout
{
    std::map<int32_t, int32_t> idToIndex; // id -> index into the *source* model's lists
    std::vector<int32_t> sensorIds;
    std::vector<Eigen::Vector3d> positions; // metres, object frame
    std::vector<Eigen::Vector3d> normals;
    double cosMaxIncidence = 0.5;
    double maxPairDistance = 0.0;
    double maxRadius = 0.0;

    SensorLayout() = default;

    // Skips entries with a negative id. Lists of differing lengths give an empty layout
    // with the three scalars zeroed.
    SensorLayout(const TrackedObjectModel& model, const ModelTransform& transform);

    size_t SensorCount() const { return positions.size(); }

    // A valid model with channelMap 0..n-1 (the index, not sensorIds) and the positions
    // and normals narrowed to 32-bit floats.
    TrackedObjectModel ToModel() const;
};

} // namespace kelvorig
