#pragma once

#include "geometry/seat_rules.h"
#include "geometry/tracked_surface.h"

#include <Eigen/Core>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvorig {

// What the checks find of one sensor's seat, whether drawn by an anneal or given in a layout.
struct SeatFindings
{
    Eigen::Vector3d normal = Eigen::Vector3d::Zero(); // unit length, or zero when it has none
    std::optional<double> facingDeviceMm;             // where its normal ray meets the device
    std::optional<double> hullDepthMm;                // along its normal to the hull's outside
    bool inKeepOut = false;
    std::optional<double> nearestMm; // to the nearest other sensor, centre to centre
    // What is wrong, each a phrase: "faces into the device (its normal meets it 76.2 mm away)".
    // Facing into the device always counts; depth, keep-outs and spacing only under their rules.
    std::vector<std::string> problems;
};

// Checks each seat (metres, mesh frame; `ids` name the sensors) against the device and `rules`: its normal ray meeting
// the sensor surface or an obstacle within 300 mm, its depth under the hull, keep-outs, spacing.
std::vector<SeatFindings> CheckSeats(const std::vector<Eigen::Vector3d>& positions,
                                     const std::vector<Eigen::Vector3d>& normals, const std::vector<int32_t>& ids,
                                     const TrackedSurface& surface, const SeatRules& rules);

// One warning line for each sensor with a problem: "WARNING: sensor 3 faces into ...; lies ...".
std::string SeatWarnings(const std::vector<SeatFindings>& findings, const std::vector<int32_t>& ids);

} // namespace kelvorig
