#pragma once

namespace kelvorig {

// Lowers the calling thread's scheduling priority for the rest of the process, so that a
// long anneal leaves the machine usable. Failure is ignored.
void LowerThreadPriority();

} // namespace kelvorig
