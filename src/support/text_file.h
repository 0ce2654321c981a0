#pragma once

#include <string>

namespace kelvorig {

// Whole file as text with CR LF folded to LF; empty on any failure, a 0-byte file included.
std::string ReadTextFile(const std::string& path);

// Why ReadTextFile gave `path` no text: "file is empty or does not exist" (one case to the
// user), "is a directory", or the system's own words ("Permission denied", "Not a directory" for
// a path through a file).
std::string UnreadableReason(const std::string& path);

} // namespace kelvorig
