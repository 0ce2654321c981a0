#pragma once

#include <string>

namespace kelvorig {

// Text of relativePath under the runtime's drivers directory; empty on any failure.
std::string ReadRuntimeFile(const std::string& relativePath);

// The runtime's drivers directory, found from the current directory and the executable's
// path (see the .cpp for the order of the searches). May be relative to the current
// directory when nothing is found.
std::string RuntimeDriversPath();

// a + separator + b, dropping one trailing slash or backslash of a. separator 0 means '/'.
std::string JoinPath(const std::string& a, const std::string& b, char separator = 0);

// Every backslash becomes '/'.
std::string FixSlashes(const std::string& path);

// Walks from `start` upward while the path exists; the first path whose last component
// equals `name` (case-insensitive), or empty.
std::string FindAncestorNamed(const std::string& start, const std::string& name);

// `start` must exist; from its parent upward, the first parent/name that exists, or empty.
std::string FindChildInAncestors(const std::string& start, const std::string& name);

} // namespace kelvorig
