#pragma once

#include "geometry/convex_hull.h"
#include "geometry/keep_out_volume.h"

#include <Eigen/Core>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvorig {

// The tests a seat must pass, in the order they are applied: the chord test of the surface
// itself, then the optional rules of SeatRules.
enum class SeatRule
{
    kSeatTest,
    kMaxSeatDepth,
    kKeepOut,
    kMinSensorSpacing
};
constexpr size_t kSeatRuleCount = 4;

// The sensors a new seat must keep its distance from: the first `count` of `positions`
// (metres), except the one at `skip`, the sensor being moved.
struct SeatNeighbours
{
    const std::vector<Eigen::Vector3d>* positions = nullptr;
    size_t count = 0;
    size_t skip = SIZE_MAX;
};

// The picks of one seat draw that each test refused, to name the test that left none.
struct SeatRefusals
{
    int64_t picks = 0;
    std::array<int64_t, kSeatRuleCount> refused{};

    // The first test in order after which no pick was left (the seat test when none was made).
    SeatRule Emptying() const;
};

// Where a seat may be beyond the surface's own seat test; no rule at all unless set. Read
// only once set, so anneals side by side can share it.
class SeatRules
{
public:
    // The device's hull (metres), against which seat depths are measured.
    void SetHull(ConvexHull hull);
    // A seat is usable only when the ray along its normal leaves the hull within
    // `millimetres`. Needs the hull.
    void SetMaxSeatDepth(double millimetres);
    // No seat may lie inside `volume`.
    void AddKeepOut(KeepOutVolume volume);
    // No seat may lie closer than `millimetres` to a neighbour, centre to centre.
    void SetMinSensorSpacing(double millimetres);

    // The first rule that refuses the seat (metres, mesh frame); none when all allow it.
    // `neighbours` may be null: no spacing to keep.
    std::optional<SeatRule> Refusal(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                                    const SeatNeighbours* neighbours) const;

    // Metres along `normal` from `position` to the hull's outside (infinity for a normal that
    // isn't a direction); none without a hull.
    std::optional<double> HullDepth(const Eigen::Vector3d& position, const Eigen::Vector3d& normal) const;
    // True when the limit of /maxseatdepth is set and `depth` (metres) lies beyond it.
    bool TooDeep(double depth) const;
    bool InKeepOut(const Eigen::Vector3f& position) const;
    double minSensorSpacing() const { return minSensorSpacing_; }
    // True when any rule is set: only then need seat draws ask.
    bool Restricts() const { return maxSeatDepth_ || !keepOuts_.empty() || minSensorSpacing_ > 0.0; }

    // The switch that sets `rule`, with its value: "/maxseatdepth 5".
    std::string Describe(SeatRule rule) const;
    // What to change when `rule` leaves no seat, as a sentence.
    static const char* Remedy(SeatRule rule);

private:
    std::optional<ConvexHull> hull_;
    std::optional<double> maxSeatDepth_; // millimetres, as given
    std::vector<KeepOutVolume> keepOuts_;
    double minSensorSpacing_ = 0.0; // millimetres, as given; 0: none
};

} // namespace kelvorig
