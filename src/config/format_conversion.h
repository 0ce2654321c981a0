#pragma once

#include <ostream>
#include <string>

namespace kelvorig {

// /formatconvert: reprints a whole device file in JSON format 0 or 1 on `out`. Returns false,
// with a message on standard error, when the file does not parse.
bool ConvertModelFormat(const std::string& path, int format, std::ostream& out);

} // namespace kelvorig
