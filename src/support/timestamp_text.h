#pragma once

#include <string>

namespace kelvorig {

// Local time as "Sun Nov 22 2026 00:01:04.123" (withMilliseconds) or
// "Sun Nov 22 00:01:04 2026".
std::string TimestampText(bool withMilliseconds);

} // namespace kelvorig
