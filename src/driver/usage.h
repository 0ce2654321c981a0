#pragma once

namespace kelvorig {

// Writes the usage text to standard error. A run that shows it ends with status 1.
void PrintUsage();

} // namespace kelvorig
