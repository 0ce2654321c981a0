#pragma once

#include "support/status.h"

#include <ostream>
#include <string>

namespace kelvorig {

// /formatconvert: reprints a whole device file in JSON format 0 or 1 on `out`. Fails, saying
// why, when the file can't be read or does not parse.
Status ConvertModelFormat(const std::string& path, int format, std::ostream& out);

} // namespace kelvorig
