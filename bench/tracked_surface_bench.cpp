// Ray queries and seat draws on the bundled HMD shell, fixed seeds; medians of 5 runs.
#include "geometry/tracked_surface.h"
#include "support/random_draws.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

using kelvorig::TrackedSurface;

TrackedSurface& Shell()
{
    static TrackedSurface shell(std::string(KELVORIG_SOURCE_DIR) + "/examples/hmd_shell.stl", {}, 5489);
    return shell;
}

// Occlusion-style rays: from points on the shell, lifted 1 mm, towards random directions.
void BM_IntersectRay(benchmark::State& state)
{
    TrackedSurface& shell = Shell();
    kelvorig::RandomEngine engine(17);
    std::vector<Eigen::Vector3f> origins;
    std::vector<Eigen::Vector3f> directions;
    for (int i = 0; i < 1024; ++i)
    {
        const int32_t t = shell.PickTriangle();
        const Eigen::Vector3f n = shell.faceNormals().row(t).transpose();
        origins.push_back(shell.SamplePoint(t) + 0.001f * n);
        Eigen::Vector3f d(kelvorig::DrawRange(engine, -1.0f, 1.0f), kelvorig::DrawRange(engine, -1.0f, 1.0f),
                          kelvorig::DrawRange(engine, -1.0f, 1.0f));
        directions.push_back(d.normalized());
    }
    size_t i = 0;
    kelvorig::RayHit hit;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(shell.intersector().intersectRay(origins[i], directions[i], hit, 0.0001f));
        i = (i + 1) % origins.size();
    }
}
BENCHMARK(BM_IntersectRay)->Repetitions(5)->ReportAggregatesOnly(true);

void BM_SampleSeat(benchmark::State& state)
{
    TrackedSurface& shell = Shell();
    Eigen::Vector3f position;
    Eigen::Vector3f normal;
    for (auto _ : state)
    {
        static_cast<void>(shell.SampleSeat(position, normal));
        benchmark::DoNotOptimize(position);
    }
}
BENCHMARK(BM_SampleSeat)->Repetitions(5)->ReportAggregatesOnly(true);

void BM_SampleSeatNear(benchmark::State& state)
{
    TrackedSurface& shell = Shell();
    Eigen::Vector3f position;
    Eigen::Vector3f normal = Eigen::Vector3f::UnitZ();
    for (auto _ : state)
    {
        normal = Eigen::Vector3f::UnitZ();
        static_cast<void>(shell.SampleSeatNear(position, normal, 0.9f));
        benchmark::DoNotOptimize(position);
    }
}
BENCHMARK(BM_SampleSeatNear)->Repetitions(5)->ReportAggregatesOnly(true);

} // namespace

BENCHMARK_MAIN();
