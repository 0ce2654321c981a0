// Time of whole anneals on the bundled head-mounted-display shell with fixed seeds.
//
// Default: the default anneal (16 sensors, 1250 orientations, 3 iterations, cooling rate
// 0.96: 9360 moves), scored every move afresh by EvaluateQuality on one thread, and
// incrementally on one thread and on all logical processors. Prints each run, the medians
// and the speed-ups, and the largest relative difference of any move's score from the
// reference's.
//   usage: fast_anneal_bench [incremental runs, default 3] [reference runs, default 1]
//
// "large": 32 sensors, 5000 orientations, 3 iterations (18720 moves), incremental on all
// logical processors: wall time of the anneal and moves per second.
//   usage: fast_anneal_bench large [runs, default 1]

#include "geometry/tracked_surface.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/orientation_sampling.h"
#include "support/angles.h"
#include "support/worker_pool.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace kelvorig {
namespace {

constexpr int32_t kIterations = 3;
constexpr double kCoolingRate = 0.96;
constexpr uint32_t kSurfaceSeed = 1234;
constexpr uint32_t kAnnealerSeed = 5678;

struct Outcome
{
    double seconds = 0.0;
    std::vector<double> scores; // the first layout's, then one per move
};

// One anneal from the same first layout; only the scoring and the thread count differ.
Outcome RunAnneal(int32_t sensors, int32_t orientations, SensorPlacementAnnealer::Scoring scoring, int32_t threads)
{
    TrackedSurface surface(KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl", {}, kSurfaceSeed);
    if (!surface.isBuilt())
    {
        std::fprintf(stderr, "examples/hmd_shell.stl did not load\n");
        std::exit(1);
    }
    PlacementLayout layout(sensors);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0 - 0.5 * OrientationSpacing(orientations)));
    static_cast<void>(PlacementProblem(sensors, surface).PlaceInitialSensors(layout));

    WorkerPool workers(threads);
    SensorPlacementAnnealer annealer(layout, surface, kIterations, orientations, kCoolingRate, -1.0, -1.0,
                                     kAnnealerSeed);
    annealer.SetScoring(scoring);
    annealer.UseWorkers(workers);
    Outcome outcome;
    outcome.scores.reserve(20000);
    annealer.ObserveScores([&outcome](double score) { outcome.scores.push_back(score); });

    const auto start = std::chrono::steady_clock::now();
    TrackedObjectModel best;
    static_cast<void>(annealer.Anneal(best));
    const auto stop = std::chrono::steady_clock::now();

    outcome.seconds = std::chrono::duration<double>(stop - start).count();
    return outcome;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : 0.5 * (values[middle - 1] + values[middle]);
}

struct Way
{
    const char* name;
    SensorPlacementAnnealer::Scoring scoring;
    int32_t threads;
    int runs;
    std::vector<double> seconds;
};

void PrintRun(int run, const char* name, const Outcome& outcome)
{
    // The first score is the first (best-candidate) layout's, the lowest is the result's.
    const double first = outcome.scores.empty() ? 0.0 : outcome.scores.front();
    const double best = outcome.scores.empty() ? 0.0 : *std::min_element(outcome.scores.begin(), outcome.scores.end());
    std::printf("run %d, %-26s %8.3f s  (%zu scores, first layout %.9g, best %.9g)\n", run + 1, name, outcome.seconds,
                outcome.scores.size(), first, best);
    std::fflush(stdout);
}

int CompareWithReference(int runs, int referenceRuns)
{
    const int32_t allThreads = WorkerPool(0).Size();
    std::vector<Way> ways = {
        {"reference, 1 thread", SensorPlacementAnnealer::Scoring::Reference, 1, referenceRuns, {}},
        {"incremental, 1 thread", SensorPlacementAnnealer::Scoring::Incremental, 1, runs, {}},
        {"incremental, all threads", SensorPlacementAnnealer::Scoring::Incremental, allThreads, runs, {}}};

    std::vector<double> referenceScores;
    double largestDifference = 0.0;
    bool sameMoves = true;
    for (Way& way : ways)
    {
        for (int run = 0; run < way.runs; ++run)
        {
            const Outcome outcome = RunAnneal(16, 1250, way.scoring, way.threads);
            way.seconds.push_back(outcome.seconds);
            PrintRun(run, way.name, outcome);
            if (way.scoring == SensorPlacementAnnealer::Scoring::Reference)
            {
                referenceScores = outcome.scores;
                continue;
            }
            if (referenceScores.empty())
                continue;
            sameMoves = sameMoves && outcome.scores.size() == referenceScores.size();
            for (size_t i = 0; i < std::min(outcome.scores.size(), referenceScores.size()); ++i)
                largestDifference = std::max(largestDifference, std::abs(outcome.scores[i] - referenceScores[i]) /
                                                                    std::abs(referenceScores[i]));
        }
    }

    std::printf("\nmedians (%d logical processors):\n", allThreads);
    const double reference = ways[0].seconds.empty() ? 0.0 : Median(ways[0].seconds);
    for (const Way& way : ways)
    {
        if (way.seconds.empty())
            continue;
        const double median = Median(way.seconds);
        std::printf("  %-26s %8.3f s over %d runs", way.name, median, way.runs);
        if (reference > 0.0)
            std::printf(", speed-up %.1f", reference / median);
        std::printf("\n");
    }
    if (referenceScores.empty())
        return 0;
    std::printf("largest relative difference of a move's score from the reference: %.3g (%s moves)\n",
                largestDifference, sameMoves ? "same" : "DIFFERENT");
    return sameMoves && largestDifference <= 1e-9 ? 0 : 1;
}

int Large(int runs)
{
    constexpr int32_t kSensors = 32;
    const int32_t allThreads = WorkerPool(0).Size();
    std::vector<double> seconds;
    size_t moves = 0;
    for (int run = 0; run < runs; ++run)
    {
        const Outcome outcome = RunAnneal(kSensors, 5000, SensorPlacementAnnealer::Scoring::Incremental, allThreads);
        PrintRun(run, "32 sensors, 5000 poses", outcome);
        seconds.push_back(outcome.seconds);
        moves = outcome.scores.size() - 1;
    }
    const double median = Median(seconds);
    std::printf("\nmedian of %d on %d logical processors: %.1f s for %zu moves, %.0f moves per second\n", runs,
                allThreads, median, moves, static_cast<double>(moves) / median);
    return 0;
}

} // namespace
} // namespace kelvorig

int main(int argc, char** argv)
{
    using namespace kelvorig;
    if (argc > 1 && std::strcmp(argv[1], "large") == 0)
        return Large(argc > 2 ? std::max(1, std::atoi(argv[2])) : 1);
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    const int referenceRuns = argc > 2 ? std::max(0, std::atoi(argv[2])) : 1;
    return CompareWithReference(runs, referenceRuns);
}
