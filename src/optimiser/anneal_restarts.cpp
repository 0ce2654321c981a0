#include "optimiser/anneal_restarts.h"

#include "optimiser/anneal_schedule.h"
#include "support/random_draws.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <mutex>
#include <ostream>
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

Status AnnealOnce(const PlacementProblem& problem, std::optional<uint32_t> seed, WorkerPool& workers,
                  AnnealOutcome& outcome)
{
    PlacementProblem run = problem;
    if (seed)
    {
        run.annealerSeed = AnnealerSeedOf(*seed);
        run.seatSeed = SeatSeedOf(*seed);
    }
    run.workers = &workers;
    if (Status solved = run.Solve(outcome.model); !solved.ok())
        return solved;
    outcome.score = run.finalQuality;
    outcome.seed = seed;
    outcome.movesMade = run.movesMade;
    outcome.movesPlanned = run.movesPlanned;
    return {};
}

} // namespace

Status AnnealBestOf(const PlacementProblem& problem, int32_t restarts, std::optional<uint32_t> firstSeed,
                    WorkerPool& workers, AnnealOutcome& best)
{
    const int64_t movesPerTemperature = static_cast<int64_t>(problem.nSensors) * problem.nIterations;
    if (problem.progress != nullptr)
        *problem.progress << "anneal duration: " << ExpectedMoveCount(movesPerTemperature, problem.coolingRate) << '\n';
    if (restarts <= 1)
        return AnnealOnce(problem, firstSeed, workers, best);

    const uint32_t first = firstSeed ? *firstSeed : TimeAndProcessSeed();
    const size_t count = static_cast<size_t>(restarts);
    const int32_t atOnce = std::min(restarts, workers.Size());
    const int32_t threadsEach = std::max(1, workers.Size() / atOnce);

    PlacementProblem quiet = problem;
    quiet.progress = nullptr;
    std::mutex mutex; // guards everything below and the progress stream
    best = AnnealOutcome();
    best.movesPlanned = static_cast<int64_t>(count) * PlannedMoveCount(movesPerTemperature, problem.coolingRate);
    size_t bestIndex = count;
    std::exception_ptr failure;
    // The first anneal that failed: one found no seat, and the surface offers none to the others
    // either; or one was stopped before it began, which counts only if no anneal has a result.
    Status failed;

    auto runRestarts = [&](int32_t, size_t begin, size_t end)
    {
        for (size_t i = begin; i < end; ++i)
        {
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (!failed.ok() || (i > 0 && problem.stopRequest != nullptr && problem.stopRequest->load()))
                    continue;
            }
            const uint32_t seed = first + static_cast<uint32_t>(i);
            try
            {
                WorkerPool own(threadsEach);
                AnnealOutcome outcome;
                Status run = AnnealOnce(quiet, seed, own, outcome);
                const std::lock_guard<std::mutex> lock(mutex);
                if (!run.ok())
                {
                    // note: kept once, so that the run says it once however many anneals met it.
                    if (failed.ok())
                        failed = std::move(run);
                    continue;
                }
                best.movesMade += outcome.movesMade;
                if (outcome.movesMade == outcome.movesPlanned && problem.progress != nullptr)
                {
                    std::ostringstream line;
                    line << "restart " << i + 1 << '/' << count << ": " << outcome.score << " (seed " << seed << ")\n";
                    *problem.progress << line.str() << std::flush;
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
    if (failed.code() == StatusCode::kInterrupted && bestIndex < count)
        return {};
    return failed;
}

} // namespace kelvorig
