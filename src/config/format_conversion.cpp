#include "config/format_conversion.h"

#include "config/device_config.h"
#include "support/text_file.h"

#include <json/writer.h>

#include <cstdio>
#include <ostream>

namespace kelvorig {

bool ConvertModelFormat(const std::string& path, int format, std::ostream& out)
{
    const std::string text = ReadTextFile(path);
    if (text.empty())
    {
        // note: counts as success, so the run still ends with status 0, unlike a parse failure.
        std::fprintf(stderr, "couldn't read %s: file is empty or does not exist\n", path.c_str());
        return true;
    }
    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, text))
    {
        std::fprintf(stderr, "couldn't read %s: %s\n", path.c_str(), error.c_str());
        return false;
    }
    config.format = format;
    out << Json::StyledWriter().write(config.ToJson()) << "\n";
    out.flush();
    return true;
}

} // namespace kelvorig
