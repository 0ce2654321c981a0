#pragma once

#include <cstdint>

namespace kelvorig {

struct PlacementProblem;

// How a generate run anneals, as the command line states it. The one place that turns these
// values into the annealer's terms, for the anneal itself and for the score of any layout.
struct AnnealSettings
{
    int32_t nOrientations;
    int32_t nIterations;
    double coolingRate;
    double maxIncidenceAngle; // degrees, before the anneal tightens it
    double qualityLow;        // the score's range, used only when both bounds are above 0
    double qualityHigh;

    // The incidence limit the anneal scores with: the given one less half the orientations'
    // spacing. note: the spacing is in radians and the limit in degrees (59.946 for 60 at 1250
    // orientations), on purpose: the anneal's scores are defined with this limit.
    double IncidenceLimitDegrees() const;

    // The problem's orientations, schedule, incidence limit and score range.
    void ApplyTo(PlacementProblem& problem) const;
};

} // namespace kelvorig
