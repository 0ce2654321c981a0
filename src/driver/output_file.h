#pragma once

#include <cstdio>
#include <iosfwd>
#include <string>

namespace kelvorig {

// Writes `text` to `path` through a temporary file in the same folder that is renamed into
// place once complete, so that a reader finds the old file or the new one, never part of
// one. An existing file that may not be written is left alone. On failure prints
// "cannot write <path>: <reason>" on standard error, removes the temporary file and
// returns false.
bool WriteOutputFile(const std::string& path, const std::string& text);

// Flushes standard output, written through `out`; false, with "cannot write standard output:
// <reason>" on standard error, when anything written there was lost (a full disk, a closed
// pipe), which may show only at the flush.
bool ReportStandardOutput(std::FILE* out);
bool ReportStandardOutput(std::ostream& out);

} // namespace kelvorig
