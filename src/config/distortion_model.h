#pragma once

#include <json/value.h>

#include <array>
#include <cstdint>

namespace kelvorig {

// A lens distortion as calibration files carry it. The tool stores and compares it and
// never applies it. `type` is a distortion enumerator, kept by value, named in JSON.
struct DistortionModel
{
    std::array<double, 8> coeffs{};
    double center_x = 0.0;
    double center_y = 0.0;
    int32_t type = 0;

    // True for DISTORT_NONE, and for DISTORT_POLY2_TANGENT with all coefficients and both
    // centres 0 (a NaN coefficient is not 0).
    bool IsTrivial() const;

    // From an object: "type" by name (unknown: DISTORT_NONE), "center_x", "center_y", and
    // up to eight "coeffs" (missing ones 0, extra ones ignored). Null gives all zeros.
    static DistortionModel FromJson(const Json::Value& object);

    // "type", "center_x", "center_y" and "coeffs" cut after the last nonzero one; all
    // zero gives "coeffs": null.
    Json::Value ToJson() const;
};

} // namespace kelvorig
