// Moves per second of the anneal on the bundled head-mounted-display shell: every move is
// one seat draw and one full quality evaluation, so this is the figure that sets how long a
// /generate run takes.
#include "geometry/tracked_surface.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/orientation_sampling.h"
#include "support/angles.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace kelvorig {
namespace {

constexpr int32_t kSensors = 16;
constexpr int32_t kOrientations = 1250;
constexpr uint32_t kSurfaceSeed = 1234;
constexpr uint32_t kAnnealerSeed = 5678;

// A short schedule: a cooling rate of 0.1 gives the four temperatures 100, 10, 1 and 0.1,
// each with one move per sensor, so the loop samples loose and tight local moves alike.
void BM_AnnealMoves(benchmark::State& state)
{
    TrackedSurface surface(KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl", {}, kSurfaceSeed);
    PlacementProblem problem(kSensors, surface);
    PlacementLayout layout(kSensors);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0 - 0.5 * OrientationSpacing(kOrientations)));
    if (!problem.PlaceInitialSensors(layout))
        state.SkipWithError("no seat on the example");
    const std::vector<Eigen::Vector3d> initialPositions = layout.positions;
    const std::vector<Eigen::Vector3d> initialNormals = layout.normals;

    SensorPlacementAnnealer annealer(layout, surface, 1, kOrientations, 0.1, -1.0, -1.0, kAnnealerSeed);
    const int64_t movesPerRun = 4 * static_cast<int64_t>(annealer.movesPerTemperature());

    int64_t moves = 0;
    for (auto _ : state)
    {
        state.PauseTiming();
        layout.positions = initialPositions;
        layout.normals = initialNormals;
        state.ResumeTiming();
        TrackedObjectModel best;
        benchmark::DoNotOptimize(annealer.Anneal(best));
        moves += movesPerRun;
    }
    state.counters["moves_per_second"] = benchmark::Counter(static_cast<double>(moves), benchmark::Counter::kIsRate);
}

BENCHMARK(BM_AnnealMoves)->Unit(benchmark::kMillisecond)->Repetitions(3)->ReportAggregatesOnly(true);

} // namespace
} // namespace kelvorig

BENCHMARK_MAIN();
