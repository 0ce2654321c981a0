#pragma once

#include "driver/command_options.h"
#include "geometry/tracked_surface.h"
#include "model/sensor_model.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

class WorkerPool;

// False, with the message printed, when /angleresolutiondegrees is 0 or below, or too small
// to advance the grid's angles (the report would never end), or so small that the grid would
// outgrow the limit of run_limits.h.
bool CheckAnalysisStep(const CommandOptions& options);

// Prints the coverage (or, with /basestationsensitivity, the sensitivity) report of a
// layout on standard output. `surface` may be null. Returns the exit status.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator);
// The same, with the rows computed on `workers` rather than on workers of its own.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator, WorkerPool& workers);

} // namespace kelvorig
