#pragma once

#include <string>

namespace kelvorig {

// /formatconvert: reprints a whole device file in JSON format 0 or 1 on standard output.
// Ends the process with status 1 when the file does not parse.
void ConvertModelFormat(const std::string& path, int format);

} // namespace kelvorig
