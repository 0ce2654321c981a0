#pragma once

#include "driver/analysis_run.h"
#include "driver/command_options.h"
#include "geometry/seat_checks.h"
#include "model/sensor_model.h"
#include "quality/direction_quality.h"

#include <vector>

namespace kelvorig {

// After the coverage report: writes the summary, the map and the HTML report that were asked
// for from the report's `directions`, and with a summary prints its numbers on standard
// error. False when a file could not be written (said on standard error). On a stop request the
// files not begun are left alone.
// `seats` holds the seat checks' findings, in layout order (empty without a surface).
bool WriteVisualOutputs(const CommandOptions& options, const SensorLayout& layout, const LayoutSource& source,
                        const std::vector<DirectionQuality>& directions, const std::vector<SeatFindings>& seats);

} // namespace kelvorig
