#pragma once

#include "model/sensor_model.h"
#include "optimiser/anneal_settings.h"

namespace kelvorig {

class TrackedSurface;

// The score a generate run's anneal with `settings` gives `layout` (0 to 1000, lower is
// better): its orientations, its tightened incidence limit, the surface (null: no occlusion)
// and the score range, so that any two layouts can be compared.
double AnnealScoreOf(const SensorLayout& layout, const TrackedSurface* surface, const AnnealSettings& settings);

} // namespace kelvorig
