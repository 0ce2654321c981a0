// Wall time of eight default anneals (16 sensors, 1250 orientations, 3 iterations, cooling rate
// 0.96) on the bundled head-mounted-display shell, run two ways from the same run seeds: as
// /restarts 8 does it, side by side on all logical processors, and one after another, each
// scoring its moves on all logical processors, as eight single runs would. Prints both times
// and the best score of each, and checks that both kept the same anneal.
//
// usage: restarts_bench [first run seed, default 1]

#include "geometry/tracked_surface.h"
#include "optimiser/anneal_restarts.h"
#include "optimiser/anneal_settings.h"
#include "optimiser/placement_problem.h"
#include "quality/orientation_sampling.h"
#include "support/worker_pool.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace kelvorig {
namespace {

constexpr int32_t kSensors = 16;
constexpr int32_t kOrientations = 1250;
constexpr int32_t kRestarts = 8;

PlacementProblem DefaultProblem(TrackedSurface& surface)
{
    PlacementProblem problem(kSensors, surface);
    AnnealSettings{kOrientations, 3, 0.96, 60.0, -1.0, -1.0}.ApplyTo(problem);
    return problem;
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace
} // namespace kelvorig

int main(int argc, char** argv)
{
    using namespace kelvorig;
    const uint32_t firstSeed = argc > 1 ? static_cast<uint32_t>(std::strtoul(argv[1], nullptr, 10)) : 1u;
    TrackedSurface surface(KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl", {});
    if (!surface.isBuilt())
    {
        std::fprintf(stderr, "examples/hmd_shell.stl did not load\n");
        return 1;
    }
    const PlacementProblem problem = DefaultProblem(surface);
    WorkerPool workers(0);

    auto start = std::chrono::steady_clock::now();
    AnnealOutcome together;
    const Status annealed = AnnealBestOf(problem, kRestarts, firstSeed, workers, together);
    const double togetherSeconds = SecondsSince(start);
    if (!annealed)
        return 1;
    std::printf("/restarts %d side by side: %8.2f s, best %g (seed %u)\n", kRestarts, togetherSeconds, together.score,
                *together.seed);
    std::fflush(stdout);

    start = std::chrono::steady_clock::now();
    AnnealOutcome best;
    for (int32_t i = 0; i < kRestarts; ++i)
    {
        AnnealOutcome single;
        if (!AnnealBestOf(problem, 1, firstSeed + static_cast<uint32_t>(i), workers, single))
            return 1;
        std::printf("  single run, seed %u: %g\n", *single.seed, single.score);
        std::fflush(stdout);
        if (i == 0 || single.score < best.score)
            best = std::move(single);
    }
    const double oneByOneSeconds = SecondsSince(start);
    std::printf("%d single runs one by one: %8.2f s, best %g (seed %u)\n", kRestarts, oneByOneSeconds, best.score,
                *best.seed);

    std::printf("%d logical processors; side by side took %.2f of the time one by one took\n", workers.Size(),
                togetherSeconds / oneByOneSeconds);
    const bool same = together.seed == best.seed && together.score == best.score;
    std::printf("both kept the same anneal: %s\n", same ? "yes" : "NO");
    return same ? 0 : 1;
}
