#pragma once

#include <string>
#include <vector>

namespace kelvorig {

// The whole process behind main: reads and checks the switches (arguments behind the
// program name), loads the model and surface they name, and runs exactly one job.
// Returns the exit status; some failures end the process on their own with status 1.
int RunCommandLine(const std::vector<std::string>& arguments);

} // namespace kelvorig
