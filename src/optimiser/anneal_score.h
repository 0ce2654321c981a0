#pragma once

#include "model/sensor_model.h"

#include <cstdint>

namespace kelvorig {

class TrackedSurface;

// The score a generate run's anneal gives `layout` (0 to 1000, lower is better): its
// orientations, its tightened incidence limit, the surface (null: no occlusion) and the score
// range (used only when both bounds are above 0), so that any two layouts can be compared.
double AnnealScoreOf(const SensorLayout& layout, const TrackedSurface* surface, int32_t nOrientations,
                     double maxIncidenceAngle, double qualityLow, double qualityHigh);

} // namespace kelvorig
