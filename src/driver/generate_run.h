#pragma once

#include "config/sensor_model.h"
#include "driver/command_options.h"
#include "geometry/tracked_surface.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

// /generate: anneals a layout around the immutable sensors (may be null), writes the
// requested files, then runs the analysis on the result. Returns the exit status.
int RunGenerate(const CommandOptions& options, const SensorLayout* immutableSensors, TrackedSurface& surface,
                QualityEvaluator& evaluator);

} // namespace kelvorig
