#include "optimiser/anneal_restarts.h"

#include "support/random_draws.h"
#include "optimiser/anneal_schedule.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>
#include <mutex>
#include <sstream>

namespace kelvorig {
namespace {

// Lower scores first, a not-a-number last, and the earlier restart on a tie, so that the
// anneal kept does not depend on which finished first.
bool Precedes(double score, size_t index, double otherScore, size_t otherIndex)
{
    if (std::isnan(score) != std::isnan(otherScore))
        return !std::isnan(score);
    if (score != otherScore)
        return score < otherScore;
    return index < otherIndex;
}

std::optional<AnnealOutcome> AnnealOnce(const PlacementProblem& problem, std::optional<uint32_t> seed,
                                        WorkerPool& workers)
{
    PlacementProblem run = problem;
    if (seed)
    {
        run.annealerSeed = AnnealerSeedOf(*seed);
        run.seatSeed = SeatSeedOf(*seed);
    }
    run.workers = &workers;
    std::optional<TrackedObjectModel> model = run.Solve();
    if (!model)
        return std::nullopt;
    AnnealOutcome outcome;
    outcome.model = std::move(*model);
    outcome.score = run.finalQuality;
    outcome.seed = seed;
    outcome.movesMade = run.movesMade;
    outcome.movesPlanned = run.movesPlanned;
    return outcome;
}

} // namespace

std::optional<AnnealOutcome> AnnealBestOf(const PlacementProblem& problem, int32_t restarts,
                                          std::optional<uint32_t> firstSeed, WorkerPool& workers)
{
    if (restarts <= 1)
        return AnnealOnce(problem, firstSeed, workers);

    const uint32_t first = firstSeed ? *firstSeed : TimeAndProcessSeed();
    const size_t count = static_cast<size_t>(restarts);
    const int32_t atOnce = std::min(restarts, workers.Size());
    const int32_t threadsEach = std::max(1, workers.Size() / atOnce);
    const int64_t movesPerTemperature = static_cast<int64_t>(problem.nSensors) * problem.nIterations;
    if (problem.showProgress)
        std::cerr << "anneal duration: " << ExpectedMoveCount(movesPerTemperature, problem.coolingRate) << '\n';

    PlacementProblem quiet = problem;
    quiet.showProgress = false;
    std::mutex mutex;  // guards everything below and standard error
    AnnealOutcome best;
    best.movesPlanned = static_cast<int64_t>(count) * PlannedMoveCount(movesPerTemperature, problem.coolingRate);
    size_t bestIndex = count;
    std::exception_ptr failure;
    bool seatless = false;  // one anneal found no seat; the surface offers none to the others either

    auto runRestarts = [&](int32_t, size_t begin, size_t end)
    {
        for (size_t i = begin; i < end; ++i)
        {
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (seatless || (i > 0 && problem.stopRequest != nullptr && problem.stopRequest->load()))
                    continue;
            }
            const uint32_t seed = first + static_cast<uint32_t>(i);
            try
            {
                WorkerPool own(threadsEach);
                std::optional<AnnealOutcome> run = AnnealOnce(quiet, seed, own);
                const std::lock_guard<std::mutex> lock(mutex);
                if (!run)
                {
                    seatless = true;
                    continue;
                }
                AnnealOutcome& outcome = *run;
                best.movesMade += outcome.movesMade;
                if (outcome.movesMade == outcome.movesPlanned && problem.showProgress)
                {
                    std::ostringstream line;
                    line << "restart " << i + 1 << '/' << count << ": " << outcome.score << " (seed " << seed << ")\n";
                    std::cerr << line.str() << std::flush;
                }
                if (bestIndex == count || Precedes(outcome.score, i, best.score, bestIndex))
                {
                    best.model = std::move(outcome.model);
                    best.score = outcome.score;
                    best.seed = seed;
                    bestIndex = i;
                }
            }
            catch (...)
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (!failure)
                    failure = std::current_exception();
            }
        }
    };
    workers.ForEachRange(count, 1, runRestarts);
    if (failure)
        std::rethrow_exception(failure);
    if (seatless)
        return std::nullopt;
    return best;
}

} // namespace kelvorig
