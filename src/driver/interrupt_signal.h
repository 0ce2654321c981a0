#pragma once

#include <atomic>

namespace kelvorig {

// Exit status of a run ended by Ctrl-C (SIGINT) or SIGTERM, as a shell reports a SIGINT.
constexpr int kInterruptedStatus = 130;

// Catches SIGINT and SIGTERM for the run and returns its stop request, which a signal sets and
// nothing else: the orientation sampling, the anneal (between moves, so that the best layout so
// far can still be written), the coverage run and the report (between rows) look at it and end
// in order, and no file is left half written.
const std::atomic<bool>& CatchInterrupts();

} // namespace kelvorig
