#pragma once

#include "driver/command_options.h"
#include "geometry/tracked_surface.h"
#include "model/sensor_model.h"
#include "optimiser/anneal_settings.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

// Count checks of a generate run that keeps the sensors of a loaded /model in place: false,
// with a message, when that layout's `immutableSensors` are as many as /nsensors, or more.
bool CheckImmutableSensorCount(size_t immutableSensors, int32_t nSensors);

// The anneal's settings as the command line gives them, for the run and for any layout's score.
AnnealSettings AnnealSettingsOf(const CommandOptions& options);

// /generate: anneals a layout around the immutable sensors (may be null), writes the
// requested files, then runs the analysis on the result. Returns the exit status; a surface
// without a seat for a sensor ends the run with status 1 and no files.
int RunGenerate(const CommandOptions& options, const SensorLayout* immutableSensors, TrackedSurface& surface,
                const SeatRules& seatRules, QualityEvaluator& evaluator);

} // namespace kelvorig
