#include "driver/generate_run.h"

#include "driver/usage.h"

namespace kelvorig {

// Placeholders until the optimiser lands.
void CheckImmutableSensorCount(const SensorLayout&, int32_t) {}

int RunGenerate(const CommandOptions&, const SensorLayout*, TrackedSurface&, QualityEvaluator&)
{
    PrintUsage();
    return 1;
}

} // namespace kelvorig
