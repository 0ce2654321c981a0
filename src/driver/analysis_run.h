#pragma once

#include "config/sensor_model.h"
#include "driver/command_options.h"
#include "geometry/tracked_surface.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

// Prints the coverage (or, with /basestationsensitivity, the sensitivity) report of a
// layout on standard output. `surface` may be null. Returns the exit status.
int RunAnalysis(const CommandOptions& options, SensorLayout& layout, const TrackedSurface* surface,
                QualityEvaluator& evaluator);

} // namespace kelvorig
