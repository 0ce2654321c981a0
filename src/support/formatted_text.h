#pragma once

#include <string>

namespace kelvorig {

// printf onto the end of `text`, which grows to take the whole result however long.
__attribute__((format(printf, 2, 3))) void AppendFormatted(std::string& text, const char* format, ...);

// printf into a new string.
__attribute__((format(printf, 1, 2))) std::string Formatted(const char* format, ...);

} // namespace kelvorig
