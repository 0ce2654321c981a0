#include "driver/analysis_run.h"

#include "driver/interrupt_signal.h"
#include "driver/output_file.h"
#include "driver/visual_outputs.h"
#include "geometry/seat_checks.h"
#include "quality/pose_solvability.h"
#include "support/angles.h"
#include "support/stop_request.h"
#include "support/worker_pool.h"

#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

// The evaluator's solvability mask is indexed by id. A layout past it, or one whose id lookup
// would run past its own lists, is refused up front; one of too many sensors was refused as it
// was loaded.
bool CanAnalyse(const SensorLayout& layout)
{
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

int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const LayoutSource& source,
                QualityEvaluator& evaluator)
{
    WorkerPool workers(options.threads);
    return RunAnalysis(options, layout, source, evaluator, workers);
}

int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const LayoutSource& source,
                QualityEvaluator& evaluator, WorkerPool& workers)
{
    if (!CanAnalyse(layout))
        return 1;
    const TrackedSurface* surface = source.surface;
    std::vector<SeatFindings> seats;
    if (surface != nullptr && source.seatRules != nullptr)
    {
        seats = CheckSeats(layout.positions, layout.normals, layout.sensorIds, *surface, *source.seatRules);
        const std::string warnings = SeatWarnings(seats, layout.sensorIds);
        std::fputs((source.annealed && !warnings.empty() ? "\n" + warnings : warnings).c_str(), stderr);
    }

    const double step = DegreesToRadians(options.angleResolutionDegrees);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(options.maxIncidenceAngle));
    evaluator.SetModel(layout);
    evaluator.SetSurface(surface);
    if (options.srbTiltRadians != 0.0)
        evaluator.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, options.srbTiltRadians});
    evaluator.SampleAnalysisPoses(kFullTurn, step);
    evaluator.poseVector()[2] = -std::abs(options.distanceBaseMeters);

    std::vector<DirectionQuality> directions;
    const bool visuals = options.WantsVisualOutputs();
    if (options.baseStationSensitivity)
        evaluator.WriteSensitivityReport(workers, stdout, stderr);
    else
        evaluator.WriteCoverageReport(workers, stdout, stderr, visuals ? &directions : nullptr);
    if (!ReportStandardOutput(stdout))
        return 1;
    // A report stopped by a signal ended at a whole row; nothing more is made of it.
    if (StopRequested())
        return kInterruptedStatus;
    if (visuals && !WriteVisualOutputs(options, layout, source, directions, seats))
        return 1;
    return StopRequested() ? kInterruptedStatus : 0;
}

} // namespace kelvorig
