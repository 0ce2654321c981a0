#include "optimiser/placement_problem.h"

#include "geometry/tracked_surface.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/angles.h"

#include <cmath>

namespace kelvorig {

PlacementProblem::PlacementProblem(int32_t sensorCount, TrackedSurface& trackedSurface)
    : nSensors(sensorCount),
      surface(trackedSurface)
{
}

Status PlacementProblem::PlaceInitialSensors(PlacementLayout& layout, RandomEngine& seatEngine)
{
    constexpr int kCandidates = 20;
    // note: kept across slots; if every candidate of a slot coincides with a placed sensor,
    // that slot takes over the previous slot's seat (the last immutable one for the first).
    Eigen::Vector3f bestPosition = Eigen::Vector3f::Zero();
    Eigen::Vector3f bestNormal = Eigen::Vector3f::Zero();
    if (layout.immutableCount > 0)
    {
        bestPosition = layout.positions[layout.immutableCount - 1].cast<float>();
        bestNormal = layout.normals[layout.immutableCount - 1].cast<float>();
    }

    for (size_t i = layout.immutableCount; i < layout.SensorCount(); ++i)
    {
        float bestDistance = 0.0f;
        for (int c = 0; c < kCandidates; ++c)
        {
            Eigen::Vector3f position;
            Eigen::Vector3f normal;
            // The seat keeps its distance from the sensors already placed, immutable ones included.
            const SeatNeighbours placedSoFar{&layout.positions, i};
            if (Status seat = surface.SampleSeat(position, normal, seatEngine, &placedSoFar); !seat.ok())
                return seat;

            float distance = 9999.0f;
            for (size_t j = 0; j < i; ++j)
            {
                const Eigen::Vector3f placed = layout.positions[j].cast<float>();
                const float dx = placed.x() - position.x();
                const float dy = placed.y() - position.y();
                const float dz = placed.z() - position.z();
                const float between = std::sqrt(dx * dx + dy * dy + dz * dz);
                if (between < distance)
                    distance = between;
            }
            // Strictly greater: the earlier of two equally distant candidates stays.
            if (distance > bestDistance)
            {
                bestDistance = distance;
                bestPosition = position;
                bestNormal = normal;
            }
        }
        layout.positions[i] = bestPosition.cast<double>();
        layout.normals[i] = bestNormal.cast<double>();
    }
    return {};
}

Status PlacementProblem::PlaceInitialSensors(PlacementLayout& layout)
{
    return PlaceInitialSensors(layout, surface.engine());
}

Status PlacementProblem::Solve(TrackedObjectModel& best)
{
    PlacementLayout layout(nSensors);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(incidenceLimitDegrees));
    if (model != nullptr)
        layout.CopyImmutableSensors(*model);
    std::optional<RandomEngine> ownSeatEngine;
    if (seatSeed)
        ownSeatEngine.emplace(*seatSeed);
    RandomEngine& seatEngine = ownSeatEngine ? *ownSeatEngine : surface.engine();
    if (Status placed = PlaceInitialSensors(layout, seatEngine); !placed.ok())
        return placed;

    SensorPlacementAnnealer annealer(layout, surface, nIterations, nOrientations, coolingRate, qualityLow, qualityHigh,
                                     annealerSeed);
    // Sampling the orientations stops short on a stop request: no anneal on fewer of them.
    if (stopRequest != nullptr && stopRequest->load())
        return Status::Interrupted("Interrupted while the orientations were sampled\n");
    if (workers != nullptr)
        annealer.UseWorkers(*workers);
    annealer.DrawSeatsWith(seatEngine);
    if (stopRequest != nullptr)
        annealer.StopWhen(*stopRequest);
    annealer.ShowProgress(progress);

    Status annealed = annealer.Anneal(best);
    finalQuality = annealer.snapshotScore();
    movesMade = annealer.movesMade();
    movesPlanned = annealer.PlannedMoveCount();
    return annealed;
}

} // namespace kelvorig
