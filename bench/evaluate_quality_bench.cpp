// Cost of one full evaluation of the tracking-quality score: the annealer's price per move.
// Sensors are seated on the bundled HMD shell with a fixed seed; 1250 orientations, as a
// generate run uses by default.

#include "geometry/tracked_surface.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/random_draws.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

namespace kelvorig {
namespace {

constexpr int32_t kOrientations = 1250;

struct Fixture
{
    std::unique_ptr<TrackedSurface> surface;
    SensorLayout layout;
    QualityEvaluator evaluator;
};

// Seats `count` sensors on the shell and prepares an evaluator as the annealer does.
void Prepare(Fixture& fixture, int count, bool occlusion)
{
    fixture.surface = std::make_unique<TrackedSurface>(KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl",
                                                       std::vector<std::string>{}, kFixedSeed);
    TrackedObjectModel model;
    model.valid = true;
    for (int i = 0; i < count; ++i)
    {
        Eigen::Vector3f position, normal;
        static_cast<void>(fixture.surface->SampleSeat(position, normal));
        model.channelMap.push_back(i);
        model.modelPoints.push_back(position);
        model.modelNormals.push_back(normal);
    }
    fixture.layout = SensorLayout(model, kIdentityTransform);
    fixture.layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0));
    fixture.evaluator.SetModel(fixture.layout);
    fixture.evaluator.SetSurface(occlusion ? fixture.surface.get() : nullptr);
    fixture.evaluator.SampleOrientations(kOrientations);
}

void EvaluateQualityOnShell(benchmark::State& state)
{
    Fixture fixture;
    Prepare(fixture, static_cast<int>(state.range(0)), state.range(1) != 0);
    if (!fixture.surface->isBuilt())
    {
        state.SkipWithError("examples/hmd_shell.stl did not load");
        return;
    }
    double score = 0.0;
    for (auto _ : state)
    {
        score = fixture.evaluator.EvaluateQuality();
        benchmark::DoNotOptimize(score);
    }
    state.counters["score"] = score;
}

BENCHMARK(EvaluateQualityOnShell)
    ->ArgNames({"sensors", "occlusion"})
    ->Args({16, 1})
    ->Args({32, 1})
    ->Args({16, 0})
    ->Args({32, 0})
    ->Unit(benchmark::kMicrosecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace
} // namespace kelvorig

BENCHMARK_MAIN();
