#pragma once

#include "driver/command_options.h"

#include <string>
#include <vector>

namespace kelvorig {

// Reads the switches (arguments behind the program name) into `options`, stopping at the
// first argument that is no known switch or whose value does not scan. Returns false then
// (the argument error), with a message printed for an unknown argument or switch only.
// /trackref_from_imu and /formatconvert end the reading: they set options.tool and take
// every argument behind them as the tool's.
bool ReadCommandLine(const std::vector<std::string>& arguments, CommandOptions& options);

// The checks after the switches, in their fixed order. Prints the first failure (the usage
// text included) and returns false; true when a run may start.
bool CheckCommandLine(const CommandOptions& options, bool argumentError);

// Leading-number scans with the syntax of "%d" and "%lf": text behind the number is
// ignored. On false the value is left as it was.
bool ScanInt(const std::string& text, int32_t& value);
bool ScanInt64(const std::string& text, int64_t& value);
bool ScanDouble(const std::string& text, double& value);

} // namespace kelvorig
