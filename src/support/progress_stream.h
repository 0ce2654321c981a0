#pragma once

#include <iosfwd>

namespace kelvorig {

// Where a long step deep inside the library (sampling many orientations, say) tells how far it
// has got. The driver points it at standard error once, before any work; left null, as in
// tests and benchmarks, such steps are silent.
void SetProgressStream(std::ostream* stream);
std::ostream* ProgressStream();

} // namespace kelvorig
