#include "geometry/tracked_surface.h"

#include "support/angles.h"
#include "support/formatted_text.h"

#include <Eigen/Geometry>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace kelvorig {
namespace {

// Seat test, metres: the disc of chords lies this deep under the surface...
constexpr float kChordDepth = 0.001f;
// ...with chords of twice this half length, which is narrowed at each use.
constexpr double kChordHalfLength = 0.003;
constexpr float kChordLength = 0.006f;

// On-surface test, metres: ray origin lifted along the normal, near bound of both rays,
// reach above (anything there blocks) and below (something must be there).
constexpr float kSurfaceLift = 0.001f;
constexpr float kSurfaceNear = 0.0001f;
constexpr float kClearAbove = 0.01f;
constexpr float kReachBelow = 0.005f;

// Seats that must pass the seat test before SampleSeatNear settles for the best of them.
constexpr int kNearSeatBudget = 20;

// Triangle picks without a usable seat after which a surface is declared unseatable. Far
// beyond what any usable mesh needs, small enough to answer within seconds.
constexpr int64_t kMaxFruitlessPicks = 1000000;

// An axis far from n: x unless n lies close to the x axis, then y.
Eigen::Vector3f ReferenceAxis(const Eigen::Vector3f& n)
{
    constexpr double kAxisLimit = 0.2;
    if (std::abs(static_cast<double>(n.y())) > kAxisLimit || std::abs(static_cast<double>(n.z())) > kAxisLimit)
        return Eigen::Vector3f::UnitX();
    return Eigen::Vector3f::UnitY();
}

// Two directions across the surface at normal n: u = normalize(a x n), v = normalize(u x n),
// with a the reference axis.
std::pair<Eigen::Vector3f, Eigen::Vector3f> TangentBasis(const Eigen::Vector3f& n)
{
    const Eigen::Vector3f u = ReferenceAxis(n).cross(n).normalized();
    return {u, u.cross(n).normalized()};
}

} // namespace

void TrackedSurface::SetMaxSurfaceAngle(double degrees)
{
    cosMaxSurfaceAngle_ = static_cast<float>(std::cos(DegreesToRadians(degrees)));
}

int32_t TrackedSurface::PickTriangle(RandomEngine& rng) const
{
    if (cumulativeArea_.empty())
        return 0;
    const double place = areaPick_.Draw(rng);
    const auto first = std::upper_bound(cumulativeArea_.begin(), cumulativeArea_.end(), place);
    // note: only a not-a-number area (from such coordinates) can run past the end.
    const auto index =
        std::min<ptrdiff_t>(first - cumulativeArea_.begin(), static_cast<ptrdiff_t>(cumulativeArea_.size()) - 1);
    return static_cast<int32_t>(index);
}

Eigen::Vector3f TrackedSurface::SamplePoint(int32_t triangle, RandomEngine& rng) const
{
    float a = unitPick_.Draw(rng);
    float b = unitPick_.Draw(rng);
    // Folding the far half of the parallelogram back keeps the point inside the triangle.
    if (a + b >= 1.0f)
    {
        a = 1.0f - a;
        b = 1.0f - b;
    }
    const Eigen::Vector3f p0 = vertices_.row(triangles_(triangle, 0)).transpose();
    const Eigen::Vector3f p1 = vertices_.row(triangles_(triangle, 1)).transpose();
    const Eigen::Vector3f p2 = vertices_.row(triangles_(triangle, 2)).transpose();
    return p0 + a * (p1 - p0) + b * (p2 - p0);
}

Eigen::Vector3f TrackedSurface::SampleNormal(int32_t triangle, RandomEngine& rng) const
{
    const Eigen::Vector3f n = faceNormals_.row(triangle).transpose();
    if (cosMaxSurfaceAngle_ >= 1.0f)
        return n;
    const auto [e1, e2] = TangentBasis(n);
    const float r1 = unitPick_.Draw(rng);
    const float r2 = unitPick_.Draw(rng);
    const float phi = static_cast<float>(static_cast<double>(r2) * kFullTurn);
    // A cosine uniform in [cosMax, 1] is a direction uniform over the cap around n.
    const float c = (1.0f - cosMaxSurfaceAngle_) * r1 + cosMaxSurfaceAngle_;
    const float s = std::sqrt(1.0f - c * c);
    return (e1 * s * std::cos(phi) + e2 * s * std::sin(phi) + n * c).normalized();
}

bool TrackedSurface::CanSeatSensor(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const
{
    const Eigen::Vector3f centre = position - kChordDepth * normal;
    const auto [u, v] = TangentBasis(normal);
    const Eigen::Vector3f w1 = (u + v).normalized();
    const Eigen::Vector3f w2 = (u - v).normalized();
    RayHit hit;
    for (const Eigen::Vector3f* chord : {&u, &v, &w1, &w2})
    {
        const Eigen::Vector3f origin = centre - static_cast<float>(kChordHalfLength) * *chord;
        if (intersector_.intersectRay(origin, *chord, hit, 0.0f, kChordLength))
            return false;
    }
    return true;
}

Status TrackedSurface::SampleSeat(Eigen::Vector3f& position, Eigen::Vector3f& normal, RandomEngine& rng,
                                  const SeatNeighbours* neighbours) const
{
    SeatRefusals refusals;
    for (int64_t pick = 0; pick < kMaxFruitlessPicks; ++pick)
    {
        const int32_t triangle = PickTriangle(rng);
        position = SamplePoint(triangle, rng);
        normal = SampleNormal(triangle, rng);
        if (PassesSeatTest(position, normal, refusals) && PassesSeatRules(position, normal, neighbours, refusals))
            return {};
    }
    return NoSeat(refusals);
}

Status TrackedSurface::SampleSeatNear(Eigen::Vector3f& position, Eigen::Vector3f& normal, float limit,
                                      RandomEngine& rng, const SeatNeighbours* neighbours) const
{
    const Eigen::Vector3f wanted = normal;
    float bestDot = -2.0f;
    int budget = kNearSeatBudget;
    Eigen::Vector3f bestPosition = Eigen::Vector3f::Zero();
    Eigen::Vector3f bestNormal = Eigen::Vector3f::Zero();
    int64_t fruitlessPicks = 0;
    SeatRefusals refusals;
    while (bestDot < -1.0f || budget > 0)
    {
        // Once a seat is recorded the best facet stays eligible, so without seat rules only
        // the search for a first one can fail to end. The rules may refuse most of that facet:
        // with them, a draw that runs that long settles for the best seat.
        if ((bestDot < -1.0f || seatRules_ != nullptr) && ++fruitlessPicks > kMaxFruitlessPicks)
        {
            if (bestDot < -1.0f)
                return NoSeat(refusals);
            break;
        }
        const int32_t triangle = PickTriangle(rng);
        const Eigen::Vector3f n = faceNormals_.row(triangle).transpose();
        const float d = n.dot(wanted);
        if (d < limit && d < bestDot)
            continue;
        position = SamplePoint(triangle, rng);
        if (!PassesSeatTest(position, n, refusals))
            continue;
        // The rules judge the seat by the normal it will carry, so that one is drawn first.
        std::optional<Eigen::Vector3f> drawn;
        if (seatRules_ != nullptr)
        {
            drawn = SampleNormal(triangle, rng);
            if (!PassesSeatRules(position, *drawn, neighbours, refusals))
                continue;
        }
        --budget;
        if (d > limit)
        {
            normal = drawn ? *drawn : SampleNormal(triangle, rng);
            return {};
        }
        if (d > bestDot)
        {
            bestPosition = position;
            bestNormal = drawn ? *drawn : SampleNormal(triangle, rng);
            bestDot = d;
        }
    }
    position = bestPosition;
    normal = bestNormal;
    return {};
}

bool TrackedSurface::IsOnSensorSurface(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const
{
    const Eigen::Vector3f origin = position + kSurfaceLift * normal;
    RayHit hit;
    if (intersector_.intersectRay(origin, normal, hit, kSurfaceNear, kClearAbove))
        return false;
    return intersector_.intersectRay(origin, -normal, hit, kSurfaceNear, kReachBelow);
}

bool TrackedSurface::PassesSeatTest(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                                    SeatRefusals& refusals) const
{
    ++refusals.picks;
    if (CanSeatSensor(position, normal))
        return true;
    ++refusals.refused[static_cast<size_t>(SeatRule::kSeatTest)];
    return false;
}

bool TrackedSurface::PassesSeatRules(const Eigen::Vector3f& position, const Eigen::Vector3f& normal,
                                     const SeatNeighbours* neighbours, SeatRefusals& refusals) const
{
    if (seatRules_ == nullptr)
        return true;
    const std::optional<SeatRule> refusal = seatRules_->Refusal(position, normal, neighbours);
    if (!refusal)
        return true;
    ++refusals.refused[static_cast<size_t>(*refusal)];
    return false;
}

Status TrackedSurface::NoSeat(const SeatRefusals& refusals) const
{
    // note: broken normals and facets were mended as the surface was read, so what is left is
    // the surface's own shape or a rule; the second line says what to change.
    const SeatRule emptying = refusals.Emptying();
    if (emptying == SeatRule::kSeatTest || seatRules_ == nullptr)
        return Status::Failure(Formatted("Error: no position on the sensor surface \"%s\" can take a sensor.\n"
                                         "  No facet has room for a sensor's 6 mm disc with nothing in the way: is the "
                                         "mesh in the unit it is read in (see its line above)?\n",
                                         surfacePath_.c_str()));
    return Status::Failure(
        Formatted("Error: %s leaves no position on the sensor surface \"%s\" that can take a sensor.\n  %s\n",
                  seatRules_->Describe(emptying).c_str(), surfacePath_.c_str(), SeatRules::Remedy(emptying)));
}

} // namespace kelvorig
