#pragma once

#include <atomic>

namespace kelvorig {

// The request to stop that long steps deep inside the library look at between items (sampling
// many orientations, say), so that Ctrl-C acts at once there too. The driver hands over its
// signal handler's flag; with none, as in tests and benchmarks, no step stops early.
void WatchStopRequest(const std::atomic<bool>* request);
bool StopRequested();

} // namespace kelvorig
