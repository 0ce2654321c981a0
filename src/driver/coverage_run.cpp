#include "driver/coverage_run.h"

#include "driver/usage.h"

namespace kelvorig {

// Placeholder until the surface sampling lands.
int RunCoverage(const CommandOptions&, TrackedSurface&)
{
    PrintUsage();
    return 1;
}

} // namespace kelvorig
