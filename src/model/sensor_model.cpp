#include "model/sensor_model.h"

#include <cmath>

namespace kelvorig {
namespace {

// Reads element i of an array as JsonCpp's writing index operator would on a copy: a missing
// element is null, and null reads as 0. note: read in place, with no copy of the section, which
// for a large layout costs more than the reading.
float ReadTripleElement(const Json::Value& triple, Json::ArrayIndex i)
{
    return static_cast<float>(triple[i].asDouble());
}

Eigen::Vector3f ReadTriple(const Json::Value& triple)
{
    return Eigen::Vector3f(ReadTripleElement(triple, 0), ReadTripleElement(triple, 1), ReadTripleElement(triple, 2));
}

Json::Value TripleToJson(const Eigen::Vector3f& v)
{
    Json::Value triple(Json::arrayValue);
    for (int k = 0; k < 3; ++k)
        triple[k] = static_cast<double>(v[k]);
    return triple;
}

} // namespace

bool TrackedObjectModel::ParseModelSection(const Json::Value& root)
{
    valid = false;
    if (!root.isMember("pharoscope_config"))
        return false;

    const Json::Value& section = root["pharoscope_config"];
    modelCad = section.get("modelCad", "").asString();
    if (!section.isMember("channelMap"))
        return false;

    const Json::Value& channels = section["channelMap"];
    for (Json::ArrayIndex i = 0; i < channels.size(); ++i)
        channelMap.push_back(channels.get(i, 0).asInt());

    const Json::Value& points = section["modelPoints"];
    for (Json::ArrayIndex i = 0; i < points.size(); ++i)
        modelPoints.push_back(ReadTriple(points[i]));

    const Json::Value& normals = section["modelNormals"];
    for (Json::ArrayIndex i = 0; i < normals.size(); ++i)
    {
        Eigen::Vector3f n = ReadTriple(normals[i]);
        // note: summed y first, in 32-bit floats, with no guard; a zero normal becomes NaNs.
        const float squared = n.y() * n.y() + n.x() * n.x() + n.z() * n.z();
        const float inverse = 1.0f / std::sqrt(squared);
        modelNormals.push_back(Eigen::Vector3f(n.x() * inverse, n.y() * inverse, n.z() * inverse));
    }

    const Json::Value& angles = section["modelAngles"];
    for (Json::ArrayIndex i = 0; i < angles.size(); ++i)
        modelAngles.push_back(angles.get(i, 0.0).asDouble());

    valid = true;
    return true;
}

Json::Value TrackedObjectModel::ModelToJson() const
{
    Json::Value section;
    if (!valid)
        return section;
    if (!modelCad.empty())
        section["modelCad"] = modelCad;
    for (size_t i = 0; i < channelMap.size(); ++i)
        section["channelMap"][static_cast<Json::ArrayIndex>(i)] = channelMap[i];
    for (size_t i = 0; i < modelPoints.size(); ++i)
        section["modelPoints"][static_cast<Json::ArrayIndex>(i)] = TripleToJson(modelPoints[i]);
    for (size_t i = 0; i < modelNormals.size(); ++i)
        section["modelNormals"][static_cast<Json::ArrayIndex>(i)] = TripleToJson(modelNormals[i]);
    for (size_t i = 0; i < modelAngles.size(); ++i)
        section["modelAngles"][static_cast<Json::ArrayIndex>(i)] = modelAngles[i];
    return section;
}

SensorLayout::SensorLayout(const TrackedObjectModel& model, const ModelTransform& transform)
{
    if (model.channelMap.size() != model.modelPoints.size() || model.channelMap.size() != model.modelNormals.size())
    {
        cosMaxIncidence = 0.0;
        return;
    }

    const ModelTransform& m = transform;
    for (size_t i = 0; i < model.channelMap.size(); ++i)
    {
        const int32_t id = model.channelMap[i];
        if (id < 0)
            continue;
        idToIndex[id] = static_cast<int32_t>(i);
        sensorIds.push_back(id);

        const Eigen::Vector3f& p = model.modelPoints[i];
        const Eigen::Vector3f& n = model.modelNormals[i];
        const Eigen::Vector3f position(m[0] * p.x() + m[1] * p.y() + m[2] * p.z() + m[9],
                                       m[3] * p.x() + m[4] * p.y() + m[5] * p.z() + m[10],
                                       m[6] * p.x() + m[7] * p.y() + m[8] * p.z() + m[11]);
        const Eigen::Vector3f normal(m[0] * n.x() + m[1] * n.y() + m[2] * n.z(),
                                     m[3] * n.x() + m[4] * n.y() + m[5] * n.z(),
                                     m[6] * n.x() + m[7] * n.y() + m[8] * n.z());
        positions.push_back(position.cast<double>());
        normals.push_back(normal.cast<double>());
    }

    double largestPair = 0.0;
    double largestRadius = 0.0;
    for (const Eigen::Vector3d& a : positions)
    {
        for (const Eigen::Vector3d& b : positions)
        {
            const double dx = a.x() - b.x(), dy = a.y() - b.y(), dz = a.z() - b.z();
            const double squared = dy * dy + dx * dx + dz * dz;
            if (squared > largestPair)
                largestPair = squared;
        }
        const double radius = a.y() * a.y() + a.x() * a.x() + a.z() * a.z();
        if (radius > largestRadius)
            largestRadius = radius;
    }
    maxPairDistance = std::sqrt(largestPair);
    maxRadius = std::sqrt(largestRadius);
}

TrackedObjectModel SensorLayout::ToModel() const
{
    TrackedObjectModel model;
    model.valid = true;
    for (size_t i = 0; i < positions.size(); ++i)
    {
        model.channelMap.push_back(static_cast<int32_t>(i));
        model.modelPoints.push_back(positions[i].cast<float>());
        model.modelNormals.push_back(normals[i].cast<float>());
    }
    return model;
}

} // namespace kelvorig
