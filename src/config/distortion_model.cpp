#include "config/distortion_model.h"

#include "config/enum_tables.h"

namespace kelvorig {
namespace {

constexpr int32_t kDistortNone = 0;
constexpr int32_t kDistortPoly2Tangent = 1;

} // namespace

bool DistortionModel::IsTrivial() const
{
    if (type == kDistortNone)
        return true;
    for (double c : coeffs)
    {
        if (!(c == 0.0))
            return false;
    }
    // note: a zero POLY2_TANGENT counts as no distortion at all.
    return type == kDistortPoly2Tangent && center_x == 0.0 && center_y == 0.0;
}

DistortionModel DistortionModel::FromJson(const Json::Value& object)
{
    DistortionModel model;
    model.type = DistortionFromName(object.get("type", "DISTORT_NONE").asString().c_str());
    model.center_x = object.get("center_x", 0.0).asDouble();
    model.center_y = object.get("center_y", 0.0).asDouble();
    const Json::Value coefficients = object.get("coeffs", Json::Value());
    for (size_t k = 0; k < model.coeffs.size(); ++k)
        model.coeffs[k] = coefficients.get(static_cast<Json::ArrayIndex>(k), 0.0).asDouble();
    return model;
}

Json::Value DistortionModel::ToJson() const
{
    Json::Value object;
    object["type"] = NameOfValue(DistortionEnumTable(), type);
    object["center_x"] = center_x;
    object["center_y"] = center_y;
    size_t count = coeffs.size();
    while (count > 0 && coeffs[count - 1] == 0.0)
        --count;
    Json::Value& written = object["coeffs"];
    for (size_t k = 0; k < count; ++k)
        written[static_cast<Json::ArrayIndex>(k)] = coeffs[k];
    return object;
}

} // namespace kelvorig
