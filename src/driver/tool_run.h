#pragma once

#include "driver/command_options.h"

#include <ostream>

namespace kelvorig {

// /trackref_from_imu and /formatconvert: runs the tool that options.tool names on
// options.toolArguments, writing its result to `out`. Returns the exit status.
int RunTool(const CommandOptions& options, std::ostream& out);

} // namespace kelvorig
