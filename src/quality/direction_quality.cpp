#include "quality/direction_quality.h"

#include "support/angles.h"

namespace kelvorig {

std::optional<DirectionGrid> GridOf(const std::vector<DirectionQuality>& directions)
{
    if (directions.size() < 2)
        return std::nullopt;
    DirectionGrid grid;
    while (grid.pitchCount < directions.size() && directions[grid.pitchCount].yaw == directions[0].yaw)
        ++grid.pitchCount;
    if (grid.pitchCount < 2 || directions.size() % grid.pitchCount != 0)
        return std::nullopt;
    grid.yawCount = directions.size() / grid.pitchCount;
    grid.firstYawDegrees = directions[0].yaw * kDegreesPerRadian;
    grid.firstPitchDegrees = directions[0].pitch * kDegreesPerRadian;
    grid.stepDegrees = (directions[1].pitch - directions[0].pitch) * kDegreesPerRadian;
    return grid;
}

} // namespace kelvorig
