#pragma once

#include <string>
#include <string_view>

namespace kelvorig {

// Case is folded by the C library's tolower, byte by byte, in every comparison of the tool.

// A copy of `text` with each character passed through tolower.
std::string ToLowerCopy(const std::string& text);

bool EqualsIgnoringCase(std::string_view a, std::string_view b);
bool EndsWithIgnoringCase(std::string_view text, std::string_view ending);

} // namespace kelvorig
