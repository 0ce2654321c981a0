#pragma once

namespace kelvorig {

// Writes the usage text to standard error and ends the process with status 1.
[[noreturn]] void PrintUsage();

} // namespace kelvorig
