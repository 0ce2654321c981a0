#include "geometry/seat_checks.h"

#include "support/angles.h"
#include "support/formatted_text.h"

#include <cmath>
#include <limits>

namespace kelvorig {
namespace {

// A normal ray that meets the device this close (metres) looks into it: a sensor there sees
// the device's own inside, not a base station.
constexpr float kFacingReach = 0.3f;
// The ray starts this far out, and hits nearer than kFacingNear count as the sensor's own wall:
// a layout's sensor may sit a hair under its facet.
constexpr float kFacingLift = 0.001f;
constexpr float kFacingNear = 0.001f;

std::optional<double> FacingDevice(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                                   const TrackedSurface& surface)
{
    RayHit hit;
    if (!surface.intersector().intersectRay(position + kFacingLift * normal, normal, hit, kFacingNear,
                                            kFacingReach - kFacingLift))
        return std::nullopt;
    return (static_cast<double>(hit.hitDistance) + kFacingLift) * kMillimetresPerMetre;
}

void Measure(SeatFindings& seat, const Eigen::Vector3d& position, const TrackedSurface& surface, const SeatRules& rules)
{
    const Eigen::Vector3f point = position.cast<float>();
    seat.inKeepOut = rules.InKeepOut(point);
    if (seat.normal.isZero())
        return;
    seat.facingDeviceMm = FacingDevice(point, seat.normal.cast<float>(), surface);
    if (const std::optional<double> depth = rules.HullDepth(position, seat.normal))
        seat.hullDepthMm = *depth * kMillimetresPerMetre;
}

} // namespace

std::vector<SeatFindings> CheckSeats(const std::vector<Eigen::Vector3d>& positions,
                                     const std::vector<Eigen::Vector3d>& normals, const std::vector<int32_t>& ids,
                                     const TrackedSurface& surface, const SeatRules& rules)
{
    std::vector<SeatFindings> findings(positions.size());
    for (size_t i = 0; i < positions.size(); ++i)
    {
        SeatFindings& seat = findings[i];
        const double length = normals[i].norm();
        if (std::isfinite(length) && length > 0.0)
            seat.normal = normals[i] / length;
        Measure(seat, positions[i], surface, rules);
        size_t nearest = 0;
        for (size_t j = 0; j < positions.size(); ++j)
        {
            const double distance = (positions[j] - positions[i]).norm() * kMillimetresPerMetre;
            if (j != i && !(seat.nearestMm && *seat.nearestMm <= distance))
                seat.nearestMm = distance, nearest = j;
        }
        if (seat.facingDeviceMm)
            seat.problems.push_back(
                Formatted("faces into the device (its normal meets it %.1f mm away)", *seat.facingDeviceMm));
        if (seat.hullDepthMm && rules.TooDeep(*seat.hullDepthMm * kMetresPerMillimetre))
            seat.problems.push_back(Formatted("lies %.1f mm under the hull (%s)", *seat.hullDepthMm,
                                              rules.Describe(SeatRule::kMaxSeatDepth).c_str()));
        if (seat.inKeepOut)
            seat.problems.push_back("lies inside a keep-out (/keepout)");
        if (seat.nearestMm && *seat.nearestMm < rules.minSensorSpacing())
            seat.problems.push_back(Formatted("lies %.1f mm from sensor %d (%s)", *seat.nearestMm, ids[nearest],
                                              rules.Describe(SeatRule::kMinSensorSpacing).c_str()));
    }
    return findings;
}

std::string SeatWarnings(const std::vector<SeatFindings>& findings, const std::vector<int32_t>& ids)
{
    std::string text;
    for (size_t i = 0; i < findings.size(); ++i)
    {
        if (findings[i].problems.empty())
            continue;
        AppendFormatted(text, "WARNING: sensor %d", ids[i]);
        for (size_t p = 0; p < findings[i].problems.size(); ++p)
            AppendFormatted(text, "%s %s", p == 0 ? "" : ";", findings[i].problems[p].c_str());
        text += '\n';
    }
    return text;
}

} // namespace kelvorig
