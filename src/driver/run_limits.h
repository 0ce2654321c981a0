#pragma once

#include "driver/command_options.h"

#include <cstdint>

namespace kelvorig {

// The most work one run may be given. Beyond these a run would not finish on one machine in
// reasonable time, or would outgrow its memory, so it is refused before any work starts.
constexpr double kMaxAnnealMoves = 1e9;         // all restarts together
constexpr int32_t kMaxOrientations = 1'000'000;  // sampling them is quadratic in the count
constexpr int32_t kMaxCoverageSeats = 10'000'000;
constexpr double kMaxAnalysisRows = 1e8;
constexpr int32_t kMaxThreads = 1024;  // each a stack of its own, started at once

// Checks the switch values that set the size of the run, and /maxsurfaceangle, after the
// command line's own checks. Prints the first failure and returns false.
bool CheckRunLimits(const CommandOptions& options);

// False, with the message printed, when the analysis grid at this step would have more than
// kMaxAnalysisRows rows. A step that is not a number passes (the grid then has one row).
bool CheckAnalysisGridSize(double angleResolutionDegrees);

} // namespace kelvorig
