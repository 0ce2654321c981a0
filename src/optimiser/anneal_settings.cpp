#include "optimiser/anneal_settings.h"

#include "optimiser/placement_problem.h"
#include "quality/orientation_sampling.h"
#include "quality/quality_evaluator.h"

namespace kelvorig {

double AnnealSettings::IncidenceLimitDegrees() const
{
    return maxIncidenceAngle - 0.5 * OrientationSpacing(nOrientations);
}

void AnnealSettings::ApplyTo(PlacementProblem& problem) const
{
    problem.nOrientations = nOrientations;
    problem.nIterations = nIterations;
    problem.coolingRate = coolingRate;
    problem.incidenceLimitDegrees = IncidenceLimitDegrees();
    if (QualityRangeApplies(qualityLow, qualityHigh))
    {
        problem.qualityLow = qualityLow;
        problem.qualityHigh = qualityHigh;
    }
}

} // namespace kelvorig
