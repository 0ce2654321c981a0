#include "optimiser/anneal_score.h"

#include "quality/quality_evaluator.h"
#include "support/angles.h"

#include <cmath>

namespace kelvorig {

double AnnealScoreOf(const SensorLayout& layout, const TrackedSurface* surface, const AnnealSettings& settings)
{
    SensorLayout scored = layout;
    scored.cosMaxIncidence = std::cos(DegreesToRadians(settings.IncidenceLimitDegrees()));
    QualityEvaluator evaluator;
    evaluator.SetModel(scored);
    evaluator.SetSurface(surface);
    evaluator.SampleOrientations(settings.nOrientations);
    if (QualityRangeApplies(settings.qualityLow, settings.qualityHigh))
        evaluator.SetQualityRange(settings.qualityLow, settings.qualityHigh);
    return evaluator.EvaluateQuality();
}

} // namespace kelvorig
