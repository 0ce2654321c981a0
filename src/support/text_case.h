#pragma once

#include <string>

namespace kelvorig {

// A copy of `text` with each character passed through the C library's tolower.
std::string ToLowerCopy(const std::string& text);

} // namespace kelvorig
