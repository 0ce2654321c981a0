#include "driver/generate_run.h"

#include "driver/usage.h"

namespace kelvorig {

// Placeholder until the optimiser lands.
int RunGenerate(const CommandOptions&, const SensorLayout*, TrackedSurface&, QualityEvaluator&)
{
    PrintUsage();
    return 1;
}

} // namespace kelvorig
