#include "driver/analysis_run.h"

#include "driver/usage.h"

namespace kelvorig {

// Placeholder until the quality reports land.
int RunAnalysis(const CommandOptions&, SensorLayout&, const TrackedSurface*, QualityEvaluator&)
{
    PrintUsage();
    return 1;
}

} // namespace kelvorig
