#pragma once

#include "driver/command_options.h"
#include "model/sensor_model.h"
#include "quality/direction_quality.h"

#include <vector>

namespace kelvorig {

class TrackedSurface;

// After the coverage report: writes the summary, the map and the HTML report that were asked
// for from the report's `directions`, and with a summary prints its numbers on standard
// error. False when a file could not be written (said on standard error). On a stop request the
// files not begun are left alone.
bool WriteVisualOutputs(const CommandOptions& options, const SensorLayout& layout, const TrackedSurface* surface,
                        const std::vector<DirectionQuality>& directions);

} // namespace kelvorig
