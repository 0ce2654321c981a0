#pragma once

#include "model/sensor_model.h"
#include "optimiser/placement_problem.h"

#include <cstdint>
#include <optional>

namespace kelvorig {

class WorkerPool;

// The two varying engines of one anneal, derived from one run seed n: the annealer's engine
// (which sensor moves, which kind of move) takes n itself, the engine that draws seats takes
// n xor 0x9E3779B9, so that the two never run the same sequence.
constexpr uint32_t AnnealerSeedOf(uint32_t runSeed)
{
    return runSeed;
}
constexpr uint32_t SeatSeedOf(uint32_t runSeed)
{
    return runSeed ^ 0x9E3779B9u;
}

// The anneal kept out of several.
struct AnnealOutcome
{
    TrackedObjectModel model;
    double score = 0.0;
    std::optional<uint32_t> seed; // its run seed; none for a single anneal seeded from the time
    int64_t movesMade = 0;        // by all anneals together
    int64_t movesPlanned = 0;     // of all anneals together
};

// Runs `restarts` independent anneals of `problem` (its settings only; its results are left
// alone) from the run seeds firstSeed, firstSeed + 1, ... (modulo 2^32) and keeps the one of
// lowest score, the earliest of equal ones. Without firstSeed, one anneal runs seeded as
// Solve seeds it, and several start from a seed drawn from the time and process id.
//
// One anneal runs on the calling thread and scores its moves on `workers`, printing the
// progress of Solve. Several run side by side, as many at once as `workers` has workers, each
// with its own layout, evaluator and seat engine on the shared surface and scoring on a pool
// of its own of workers.Size() / (anneals at once) threads; instead of dots, each finished one
// writes "restart i/k: score (seed n)" to the problem's progress stream, after the one
// "anneal duration: " line of the run. Once the problem's stop request is set, anneals not yet
// begun are skipped (the first always runs, so that there is a result). Fails, once whatever
// the count of anneals that met it, when the surface offers no seat; is interrupted when the stop
// came before any anneal could begin.
Status AnnealBestOf(const PlacementProblem& problem, int32_t restarts, std::optional<uint32_t> firstSeed,
                    WorkerPool& workers, AnnealOutcome& best);

} // namespace kelvorig
