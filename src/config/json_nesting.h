#pragma once

#include <string_view>

namespace kelvorig {

// JSON nested deeper than this is refused by the JSON library's reader, with a text of its own.
constexpr int kMaxJsonNesting = 1000;

// True when `text` opens more than kMaxJsonNesting arrays and objects inside one another,
// counting the brackets outside strings; a file that deep is said to be so before it is parsed.
bool NestedTooDeep(std::string_view text);

} // namespace kelvorig
