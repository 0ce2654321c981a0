#include "geometry/seat_rules.h"

#include "support/angles.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace kelvorig {
namespace {

// Metres a seat may lie beyond its depth limit: seats are 32-bit floats and the hull's planes
// are joggled, so a seat on an outer face can sit a hair inside it, even under a limit of 0.
constexpr double kDepthTolerance = 1e-6;

} // namespace

SeatRule SeatRefusals::Emptying() const
{
    int64_t left = picks;
    for (size_t rule = 0; rule < kSeatRuleCount; ++rule)
    {
        left -= refused[rule];
        if (left <= 0)
            return static_cast<SeatRule>(rule);
    }
    return SeatRule::kSeatTest;
}

void SeatRules::SetHull(ConvexHull hull)
{
    hull_ = std::move(hull);
}

void SeatRules::SetMaxSeatDepth(double millimetres)
{
    maxSeatDepth_ = millimetres;
}

std::optional<double> SeatRules::HullDepth(const Eigen::Vector3d& position, const Eigen::Vector3d& normal) const
{
    if (!hull_)
        return std::nullopt;
    return hull_->ExitDistance(position, normal);
}

bool SeatRules::TooDeep(double depth) const
{
    // not "depth > limit": a depth that is not a number is too deep too.
    return maxSeatDepth_ && !(depth <= *maxSeatDepth_ * kMetresPerMillimetre + kDepthTolerance);
}

bool SeatRules::InKeepOut(const Eigen::Vector3f& position) const
{
    return std::any_of(keepOuts_.begin(), keepOuts_.end(),
                       [&position](const KeepOutVolume& volume) { return volume.Contains(position); });
}

void SeatRules::AddKeepOut(KeepOutVolume volume)
{
    keepOuts_.push_back(std::move(volume));
}

void SeatRules::SetMinSensorSpacing(double millimetres)
{
    minSensorSpacing_ = millimetres;
}

std::optional<SeatRule> SeatRules::Refusal(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                                           const SeatNeighbours* neighbours) const
{
    if (hull_ && maxSeatDepth_ && TooDeep(hull_->ExitDistance(position.cast<double>(), normal.cast<double>())))
        return SeatRule::kMaxSeatDepth;
    if (InKeepOut(position))
        return SeatRule::kKeepOut;
    if (minSensorSpacing_ > 0.0 && neighbours != nullptr)
    {
        const double spacing = minSensorSpacing_ * kMetresPerMillimetre;
        for (size_t i = 0; i < neighbours->count; ++i)
        {
            if (i != neighbours->skip && ((*neighbours->positions)[i] - position.cast<double>()).norm() < spacing)
                return SeatRule::kMinSensorSpacing;
        }
    }
    return std::nullopt;
}

std::string SeatRules::Describe(SeatRule rule) const
{
    std::ostringstream text;
    switch (rule)
    {
    case SeatRule::kMaxSeatDepth:
        text << "/maxseatdepth " << maxSeatDepth_.value_or(0.0);
        break;
    case SeatRule::kKeepOut:
        text << "/keepout";
        break;
    case SeatRule::kMinSensorSpacing:
        text << "/minsensorspacing " << minSensorSpacing_;
        break;
    case SeatRule::kSeatTest:
        text << "the seat test";
        break;
    }
    return text.str();
}

const char* SeatRules::Remedy(SeatRule rule)
{
    switch (rule)
    {
    case SeatRule::kMaxSeatDepth:
        return "Every seat lies deeper under the hull of the surface and its obstacles: allow more depth, or check "
               "that the obstacles close openings rather than cover the outside.";
    case SeatRule::kKeepOut:
        return "Every seat lies inside a keep-out: check the keep-outs' size and unit.";
    case SeatRule::kMinSensorSpacing:
        return "The sensors can't lie that far apart on this surface: ask for less spacing or fewer sensors.";
    case SeatRule::kSeatTest:
        break;
    }
    return "";
}

} // namespace kelvorig
