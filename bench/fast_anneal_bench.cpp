// Time of a whole default anneal (16 sensors, 1250 orientations, 3 iterations, cooling rate
// 0.96: 9360 moves) on the bundled head-mounted-display shell with fixed seeds, scored three
// ways: every move afresh by EvaluateQuality on one thread, and incrementally on one thread
// and on all logical processors. Prints the median of each over the runs and the speed-ups,
// and checks that all three scored every move identically.
//
// usage: fast_anneal_bench [runs, default 3]

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
#include <iostream>
#include <vector>

namespace kelvorig {
namespace {

constexpr int32_t kSensors = 16;
constexpr int32_t kOrientations = 1250;
constexpr int32_t kIterations = 3;
constexpr double kCoolingRate = 0.96;
constexpr uint32_t kSurfaceSeed = 1234;
constexpr uint32_t kAnnealerSeed = 5678;

struct Outcome
{
    double seconds = 0.0;
    std::vector<double> scores;  // the first layout's, then one per move
};

// One anneal from the same first layout; only the scoring differs.
Outcome RunAnneal(SensorPlacementAnnealer::Scoring scoring, int32_t threads)
{
    TrackedSurface surface(KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl", {}, kSurfaceSeed);
    if (!surface.isBuilt())
    {
        std::fprintf(stderr, "examples/hmd_shell.stl did not load\n");
        std::exit(1);
    }
    PlacementLayout layout(kSensors);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0 - 0.5 * OrientationSpacing(kOrientations)));
    PlacementProblem(kSensors, surface).PlaceInitialSensors(layout);

    WorkerPool workers(threads);
    SensorPlacementAnnealer annealer(layout, surface, kIterations, kOrientations, kCoolingRate, -1.0, -1.0,
                                     kAnnealerSeed);
    annealer.SetScoring(scoring);
    annealer.UseWorkers(workers);
    Outcome outcome;
    outcome.scores.reserve(10000);
    annealer.ObserveScores([&outcome](double score) { outcome.scores.push_back(score); });

    std::streambuf* console = std::cerr.rdbuf(nullptr);  // no progress dots
    const auto start = std::chrono::steady_clock::now();
    annealer.Anneal();
    const auto stop = std::chrono::steady_clock::now();
    std::cerr.rdbuf(console);
    std::cerr.clear();

    outcome.seconds = std::chrono::duration<double>(stop - start).count();
    return outcome;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : 0.5 * (values[middle - 1] + values[middle]);
}

} // namespace
} // namespace kelvorig

int main(int argc, char** argv)
{
    using namespace kelvorig;
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 3;
    const int32_t allThreads = WorkerPool(0).Size();

    struct Way
    {
        const char* name;
        SensorPlacementAnnealer::Scoring scoring;
        int32_t threads;
        std::vector<double> seconds;
    };
    std::vector<Way> ways = {{"reference, 1 thread", SensorPlacementAnnealer::Scoring::Reference, 1, {}},
                             {"incremental, 1 thread", SensorPlacementAnnealer::Scoring::Incremental, 1, {}},
                             {"incremental, all threads", SensorPlacementAnnealer::Scoring::Incremental, allThreads, {}}};

    std::vector<double> referenceScores;
    bool identical = true;
    for (int run = 0; run < runs; ++run)
    {
        for (Way& way : ways)
        {
            const Outcome outcome = RunAnneal(way.scoring, way.threads);
            way.seconds.push_back(outcome.seconds);
            // The first score is the first (best-candidate) layout's, the lowest is the result's.
            const double first = outcome.scores.empty() ? 0.0 : outcome.scores.front();
            const double best =
                outcome.scores.empty() ? 0.0 : *std::min_element(outcome.scores.begin(), outcome.scores.end());
            std::printf("run %d, %-26s %8.3f s  (%zu scores, first layout %g, best %g)\n", run + 1, way.name,
                        outcome.seconds, outcome.scores.size(), first, best);
            std::fflush(stdout);
            if (referenceScores.empty())
                referenceScores = outcome.scores;
            else if (outcome.scores != referenceScores)
                identical = false;
        }
    }

    const double reference = Median(ways[0].seconds);
    std::printf("\nmedian of %d runs (%d logical processors):\n", runs, allThreads);
    for (const Way& way : ways)
    {
        const double median = Median(way.seconds);
        std::printf("  %-26s %8.3f s  speed-up %.2f\n", way.name, median, reference / median);
    }
    std::printf("every move scored identically: %s\n", identical ? "yes" : "NO");
    return identical ? 0 : 1;
}
