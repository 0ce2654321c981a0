#pragma once

#include <atomic>

namespace kelvorig {

// Exit status of a run ended by Ctrl-C (SIGINT) or SIGTERM, as a shell reports a SIGINT.
constexpr int kInterruptedStatus = 130;

// Catches SIGINT and SIGTERM for a generate run and returns its stop request. Until
// BeginReportUnlessInterrupted, a signal only sets the request, which the anneal looks at
// between moves, so that the best layout so far can still be written.
const std::atomic<bool>& CatchInterrupts();

// Called when the output files are written and the report is next. False when a signal has
// come already, and the report is to be skipped. From then on a signal ends the process at
// once with kInterruptedStatus: what was written stays, the rest of the report is dropped.
bool BeginReportUnlessInterrupted();

} // namespace kelvorig
