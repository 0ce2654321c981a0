#include "config/format_conversion.h"

#include "config/device_config.h"
#include "config/model_file.h"

#include <json/writer.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace kelvorig {

void ConvertModelFormat(const std::string& path, int format)
{
    const std::string text = ReadTextFile(path);
    if (text.empty())
    {
        // note: returns, so the run still ends with status 0, unlike a parse failure.
        std::fprintf(stderr, "couldn't read %s: file is empty or does not exist\n", path.c_str());
        return;
    }
    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, text))
    {
        std::fprintf(stderr, "couldn't read %s: %s\n", path.c_str(), error.c_str());
        std::exit(1);
    }
    config.format = format;
    std::cout << Json::StyledWriter().write(config.ToJson()) << "\n";
    std::cout.flush();
}

} // namespace kelvorig
