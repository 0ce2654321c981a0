#pragma once

#include "driver/command_options.h"

#include <string>
#include <vector>

namespace kelvorig {

// Reads the switches (arguments behind the program name) into `options` by the table of
// switch_table.h, stopping at the first argument that is no known switch or whose value does
// not scan. Returns false then (the argument error), with a message printed for an unknown
// argument or switch only. /trackref_from_imu and /formatconvert end the reading: they set
// options.tool and take every argument behind them as the tool's.
bool ReadCommandLine(const std::vector<std::string>& arguments, CommandOptions& options);

} // namespace kelvorig
