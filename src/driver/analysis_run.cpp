#include "driver/analysis_run.h"

#include "driver/run_limits.h"
#include "quality/pose_solvability.h"
#include "support/angles.h"
#include "support/worker_pool.h"

#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

// The evaluator's limits: 64 Jacobian rows and a solvability mask indexed by id. A layout
// past them, or one whose id lookup would run past its own lists, is refused up front.
bool CanAnalyse(const SensorLayout& layout)
{
    if (layout.SensorCount() > QualityEvaluator::kMaxSensors)
    {
        std::fprintf(stderr, "cannot analyse %zu sensors: at most %zu are supported\n", layout.SensorCount(),
                     QualityEvaluator::kMaxSensors);
        return false;
    }
    for (const auto& [id, index] : layout.idToIndex)
    {
        if (id < 0 || id > PoseSolvability::kMaxSensorId)
        {
            std::fprintf(stderr, "cannot analyse sensor id %d: ids must be 0 to %d\n", id,
                         PoseSolvability::kMaxSensorId);
            return false;
        }
        // note: idToIndex holds indices into the source model, so a negative id ahead of
        // a sensor shifts it past the layout's own lists.
        if (index < 0 || static_cast<size_t>(index) >= layout.positions.size())
        {
            std::fprintf(stderr,
                         "cannot analyse sensor id %d: a negative id ahead of it in channelMap leaves it "
                         "without a position\n",
                         id);
            return false;
        }
    }
    return true;
}

} // namespace

bool CheckAnalysisStep(const CommandOptions& options)
{
    // note: a step that is not a number passes: the grid then has one row, and ends.
    if (options.angleResolutionDegrees <= 0.0)
    {
        std::fprintf(stderr, "/angleresolutiondegrees must be greater than 0, not %g\n",
                     options.angleResolutionDegrees);
        return false;
    }
    // The grid's angles advance by repeated addition from -pi/2 and -pi: a step too small to
    // change them would never end either.
    const double step = DegreesToRadians(options.angleResolutionDegrees);
    if (-0.5 * kPi + step == -0.5 * kPi || -kPi + step == -kPi)
    {
        std::fprintf(stderr, "/angleresolutiondegrees %g is too small to step through the grid\n",
                     options.angleResolutionDegrees);
        return false;
    }
    return CheckAnalysisGridSize(options.angleResolutionDegrees);
}

int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator)
{
    WorkerPool workers(options.threads);
    return RunAnalysis(options, layout, surface, evaluator, workers);
}

int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator, WorkerPool& workers)
{
    if (!CheckAnalysisStep(options) || !CanAnalyse(layout))
        return 1;

    const double step = DegreesToRadians(options.angleResolutionDegrees);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(options.maxIncidenceAngle));
    evaluator.SetModel(layout);
    evaluator.SetSurface(surface);
    if (options.srbTiltRadians != 0.0)
        evaluator.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, options.srbTiltRadians});
    evaluator.SampleAnalysisPoses(kFullTurn, step);
    evaluator.poseVector()[2] = -std::abs(options.distanceBaseMeters);

    if (options.baseStationSensitivity)
        evaluator.WriteSensitivityReport(workers);
    else
        evaluator.WriteCoverageReport(workers);
    return 0;
}

} // namespace kelvorig
