#pragma once

#include "driver/command_options.h"

namespace kelvorig {

// The runs a command line can start; which one follows from the switches alone.
enum class RunMode
{
    kModelDrawing, // /model with /outscad and no /generate
    kCoverage,     // /verifycoverage other than 0
    kGenerate,     // /generate: the anneal, then the analysis of its result
    kAnalysis      // /model alone
};
RunMode ModeOf(const CommandOptions& options);

// The most work one run may be given beyond the switches' own limits: more would not finish
// on one machine in reasonable time, or would outgrow its memory.
constexpr double kMaxAnnealMoves = 1e9;  // all restarts together
constexpr double kMaxAnalysisRows = 1e7; // each row held in memory until the report is printed

// Every check of the switches' values, before anything is loaded: the command line's own
// checks in their fixed order (the usage text when a value did not scan), then each value the
// run reads against its range, then the size of the run. Prints the first failure and returns
// false; true when the run may start.
bool CheckOptions(const CommandOptions& options, bool argumentError);

} // namespace kelvorig
