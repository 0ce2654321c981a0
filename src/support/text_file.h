#pragma once

#include <string>

namespace kelvorig {

// Whole file as text with CR LF folded to LF; empty on any failure, a 0-byte file included.
std::string ReadTextFile(const std::string& path);

} // namespace kelvorig
