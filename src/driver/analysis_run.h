#pragma once

#include "driver/command_options.h"
#include "geometry/tracked_surface.h"
#include "model/sensor_model.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

class WorkerPool;

// Prints the coverage (or, with /basestationsensitivity, the sensitivity) report of a
// layout on standard output. `surface` may be null. Returns the exit status.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator);
// The same, with the rows computed on `workers` rather than on workers of its own.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator, WorkerPool& workers);

} // namespace kelvorig
