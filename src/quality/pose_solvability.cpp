#include "quality/pose_solvability.h"

#include "quality/sensor_index_lookup.h"
#include "support/vector_math.h"

#include <algorithm>
#include <cmath>

namespace kelvorig {
namespace {

constexpr int32_t kMinHitsPerAxis = 4;
constexpr int32_t kMinHits = 8;
constexpr uint8_t kBothAxes = 3;

} // namespace

PoseSolvability::PoseSolvability(const SensorLayout& layout, const std::vector<SweepHit>& hits)
    : layout_(layout),
      hits_(hits)
{
    ReadNewHits();
}

void PoseSolvability::ReadNewHits()
{
    for (; hitsRead_ < hits_.size(); ++hitsRead_)
    {
        const SweepHit& hit = hits_[hitsRead_];
        hitsPerAxis_[hit.axis] += 1;
        if (hit.sensorId < 0 || hit.sensorId > kMaxSensorId)
            continue;
        uint8_t& mask = axisMask_[hit.sensorId];
        mask |= static_cast<uint8_t>(1u << hit.axis);
        if (mask == kBothAxes)
            bothAxesCount_ += 1;
    }
}

bool PoseSolvability::EnoughHitsCounted() const
{
    return hitsPerAxis_[0] >= kMinHitsPerAxis && hitsPerAxis_[1] >= kMinHitsPerAxis &&
           hitsPerAxis_[0] + hitsPerAxis_[1] >= kMinHits;
}

bool PoseSolvability::HasEnoughHits()
{
    ReadNewHits();
    return EnoughHitsCounted();
}

std::vector<int32_t> PoseSolvability::IdsWithMask(uint8_t mask) const
{
    std::vector<int32_t> ids;
    for (int32_t id = 0; id <= kMaxSensorId; ++id)
    {
        if ((axisMask_[id] & mask) == mask)
            ids.push_back(id);
    }
    return ids;
}

bool PoseSolvability::IsGeometrySolvable()
{
    ReadNewHits();
    if (!EnoughHitsCounted())
        return false;
    // Sensors seen on both axes first: four of them off one plane settle it.
    if (bothAxesCount_ >= kMinHitsPerAxis && FindNonPlanarSet(IdsWithMask(kBothAxes)))
        return true;
    if (hitsPerAxis_[0] == bothAxesCount_ || hitsPerAxis_[1] == bothAxesCount_)
        return false;
    for (uint8_t axisBit : {uint8_t{1}, uint8_t{2}})
    {
        if (!FindNonPlanarSet(IdsWithMask(axisBit)))
            return false;
    }
    return true;
}

bool PoseSolvability::FindNonPlanarSet(const std::vector<int32_t>& ids) const
{
    std::vector<Eigen::Vector3d> points;
    for (const int32_t id : ids)
        points.push_back(layout_.positions[SensorIndexOfId(layout_, id)]);

    // With three or fewer there is no fourth sensor to stand off the plane.
    if (points.size() < 4)
        return false;

    // Walks every set of three, from the first three onwards, as previous permutations.
    std::vector<bool> selected(points.size(), false);
    selected[0] = selected[1] = selected[2] = true;
    do
    {
        std::array<size_t, 3> corner = {};
        size_t found = 0;
        for (size_t i = 0; i < selected.size() && found < 3; ++i)
        {
            if (selected[i])
                corner[found++] = i;
        }
        const Eigen::Vector3d& p0 = points[corner[0]];
        const Eigen::Vector3d a = points[corner[1]] - p0;
        const Eigen::Vector3d b = points[corner[2]] - p0;
        const Eigen::Vector3d c = points[corner[2]] - points[corner[1]];
        Eigen::Vector3d normal = Cross(a, b);
        const double longestSquared = std::max(std::max(Dot(a, a), Dot(b, b)), Dot(c, c));
        const double normalSquared = Dot(normal, normal);
        // The triangle's height over its longest side.
        const double height = std::sqrt(normalSquared / longestSquared);

        const double normalLength = std::sqrt(normalSquared);
        if (normalLength != 0.0)
            normal = Eigen::Vector3d(normal.x() / normalLength, normal.y() / normalLength, normal.z() / normalLength);
        const double offset = -Dot(normal, p0);

        if (!(height < minFeatureSize))
        {
            for (size_t i = 0; i < points.size(); ++i)
            {
                if (!selected[i] && std::abs(Dot(normal, points[i]) + offset) > minFeatureSize)
                    return true;
            }
        }
    } while (std::prev_permutation(selected.begin(), selected.end()));
    return false;
}

} // namespace kelvorig
