#pragma once

#include "model/sensor_model.h"
#include "optimiser/placement_layout.h"
#include "support/random_draws.h"
#include "support/status.h"

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <optional>

namespace kelvorig {

class TrackedSurface;
class WorkerPool;

// What the driver asks of the optimiser: place nSensors sensors on the surface, keeping the
// sensors of `model` (if any) where they are, so that the quality score is as low as the
// anneal finds it. Refers to the surface and model; owns neither. The defaults of
// nIterations and coolingRate are not the command line's; the driver overwrites them.
struct PlacementProblem
{
    const SensorLayout* model = nullptr; // immutable sensors; fewer than nSensors
    int32_t nSensors;                    // total, immutable ones included
    int32_t nOrientations = 1250;
    int32_t nIterations = 50; // moves per temperature per sensor
    double coolingRate = 0.958;
    double incidenceLimitDegrees = 60.0; // incidence limit while annealing
    double qualityLow = -1.0;            // score range; used only when both are above 0
    double qualityHigh = -1.0;
    double finalQuality = 0.0; // result: score of the model Solve returned
    TrackedSurface& surface;
    std::optional<uint32_t> annealerSeed;           // fixes the choice of moves (tests, benchmarks)
    WorkerPool* workers = nullptr;                  // scores moves on these; null: the calling thread
    std::optional<uint32_t> seatSeed;               // seats drawn from an engine of this seed; none: the surface's
    const std::atomic<bool>* stopRequest = nullptr; // true: the anneal stops after the move under way
    std::ostream* progress = nullptr;               // the duration line, dots and new best scores; null: none
    int64_t movesMade = 0;                          // result: moves Solve made, fewer than planned when stopped
    int64_t movesPlanned = 0;                       // result: moves of the whole schedule

    PlacementProblem(int32_t nSensors, TrackedSurface& surface);

    // Seats the movable sensors by best-candidate sampling, anneals, and puts the best layout
    // with ids 0..nSensors-1 (immutable sensors first) in `best`. Writes the dots and new best
    // scores to `progress`, if any. Sets finalQuality, movesMade and movesPlanned. Fails when
    // the surface offers no seat, and is interrupted when a stop is requested before the anneal
    // begins.
    Status Solve(TrackedObjectModel& best);

    // Fills the slots from layout.immutableCount on, each with the one of 20 random seats
    // that lies farthest from every sensor already placed; seats come from `seatEngine`, or
    // from the surface's own engine. Fails when the surface offers no seat.
    Status PlaceInitialSensors(PlacementLayout& layout, RandomEngine& seatEngine);
    Status PlaceInitialSensors(PlacementLayout& layout);
};

} // namespace kelvorig
