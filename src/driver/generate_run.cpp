#include "driver/generate_run.h"

#include "cad/scad_writer.h"
#include "driver/analysis_run.h"
#include "driver/thread_priority.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/orientation_sampling.h"
#include "support/worker_pool.h"

#include <json/writer.h>

#include <cmath>
#include <fstream>
#include <iostream>
#include <optional>

namespace kelvorig {

bool CheckImmutableSensorCount(const SensorLayout& immutableSensors, int32_t nSensors)
{
    const int64_t count = static_cast<int64_t>(immutableSensors.SensorCount());
    if (count > nSensors)
    {
        std::cerr << "Model of immutable sensors has more than /nsensors " << nSensors << "!\n" << '\n';
        return false;
    }
    if (count == nSensors)
    {
        std::cerr << "Model of immutable sensors has the same count as /nsensors " << nSensors
                  << ".  Nothing would change!" << '\n';
        return false;
    }
    return true;
}

namespace {

// Anneals, writes the requested files, and returns the result as a layout; nothing when the
// surface offers no seat (said on standard error). The model and its JSON text end here,
// before the report starts.
std::optional<SensorLayout> AnnealAndWrite(const CommandOptions& options, const SensorLayout* immutableSensors,
                            TrackedSurface& surface, WorkerPool& workers)
{
    PlacementProblem problem(options.nSensors, surface);
    problem.model = immutableSensors;
    problem.workers = &workers;
    problem.nOrientations = options.nOrientations;
    problem.nIterations = options.nIterations;
    problem.coolingRate = options.coolingRate;
    // note: subtracts radians from degrees (59.946 for 60 at 1250 orientations), on purpose:
    // the anneal's scores are defined with this limit.
    problem.incidenceLimitDegrees = options.maxIncidenceAngle - 0.5 * OrientationSpacing(options.nOrientations);
    if (options.qualityLow > 0.0 && options.qualityHigh > 0.0)
    {
        problem.qualityLow = options.qualityLow;
        problem.qualityHigh = options.qualityHigh;
    }

    const std::optional<TrackedObjectModel> solved = problem.Solve();
    if (!solved)
        return std::nullopt;
    const TrackedObjectModel& model = *solved;
    const std::string json = Json::StyledWriter().write(model.ModelToJson());

    if (!options.outScadPath.empty())
    {
        std::ofstream scad(options.outScadPath, std::ios::trunc);
        scad << "/* Final Quality Score: " << problem.finalQuality << " / " << kQualityScale
             << " (lower is better) */\n"
             << "/*\n"
             << json << "*/\n\n"
             << WriteScadFile(model, surface.surfacePath(), surface.obstaclePaths(), surface.unitScale(),
                              options.withScadNormals);
    }
    if (!options.outModelPath.empty())
    {
        std::ofstream file(options.outModelPath, std::ios::trunc);
        file << "// Final Quality Score: " << problem.finalQuality << " / " << kQualityScale
             << " (lower is better)\n"
             << json << '\n';
    }
    return SensorLayout(model, kIdentityTransform);
}

} // namespace

int RunGenerate(const CommandOptions& options, const SensorLayout* immutableSensors, TrackedSurface& surface,
                QualityEvaluator& evaluator)
{
    // The report that ends the run would refuse this step; refuse it before the anneal.
    if (!CheckAnalysisStep(options))
        return 1;
    LowerThreadPriority();
    // Started after the priority drop, so that the workers run at the lowered priority too.
    WorkerPool workers(options.threads);
    surface.SetMaxSurfaceAngle(options.maxSurfaceAngle);
    std::optional<SensorLayout> result = AnnealAndWrite(options, immutableSensors, surface, workers);
    if (!result)
        return 1;
    return RunAnalysis(options, *result, &surface, evaluator, workers);
}

} // namespace kelvorig
