#pragma once

#include <string>
#include <vector>

namespace kelvorig {

// The whole process behind main: reads and checks the switches (arguments behind the
// program name), loads the model and surface they name, and runs exactly one job.
// Returns the exit status; nothing below it ends the process.
int RunCommandLine(const std::vector<std::string>& arguments);

} // namespace kelvorig
