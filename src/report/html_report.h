#pragma once

#include "model/sensor_model.h"
#include "quality/direction_quality.h"
#include "report/coverage_summary.h"

#include <string>
#include <vector>

namespace kelvorig {

class TrackedSurface;

// One self-contained HTML page: the sensor surface (when there is one) with the sensors as
// numbered markers and a sphere of directions coloured by position error, that the viewer
// turns and zooms; the map (`mapPng`, PNG bytes), the summary's numbers and the sensor table.
// three.js and the page's script are inlined, so the page opens offline.
std::string HtmlReport(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout,
                       const std::vector<DirectionQuality>& directions, const TrackedSurface* surface,
                       const std::string& mapPng);

} // namespace kelvorig
