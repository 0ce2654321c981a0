// Any bytes as a command line, the arguments split at NUL bytes: read and checked as the driver
// does before it loads anything.
#include "driver/command_line.h"
#include "driver/option_checks.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvorig;
    std::vector<std::string> arguments(1);
    for (size_t i = 0; i < size; ++i)
    {
        if (data[i] == 0)
            arguments.emplace_back();
        else
            arguments.back().push_back(static_cast<char>(data[i]));
    }
    CommandOptions options;
    const bool argumentError = !ReadCommandLine(arguments, options);
    if (options.tool == CommandOptions::Tool::kNone)
        static_cast<void>(CheckOptions(options, argumentError));
    return 0;
}
