#include "optimiser/anneal_score.h"

#include "quality/orientation_sampling.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"

#include <cmath>

namespace kelvorig {

double AnnealScoreOf(const SensorLayout& layout, const TrackedSurface* surface, int32_t nOrientations,
                     double maxIncidenceAngle, double qualityLow, double qualityHigh)
{
    // note: the anneal subtracts half the orientation spacing, in radians, from the limit in
    // degrees; its scores are defined with that limit.
    SensorLayout scored = layout;
    scored.cosMaxIncidence =
        std::cos(DegreesToRadians(maxIncidenceAngle - 0.5 * OrientationSpacing(nOrientations)));
    QualityEvaluator evaluator;
    evaluator.SetModel(scored);
    evaluator.SetSurface(surface);
    evaluator.SampleOrientations(nOrientations);
    if (qualityLow > 0.0 && qualityHigh > 0.0)
        evaluator.SetQualityRange(qualityLow, qualityHigh);
    return evaluator.EvaluateQuality();
}

} // namespace kelvorig
