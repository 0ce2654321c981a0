#include "config/format_conversion.h"

#include "config/device_config.h"
#include "config/json_nesting.h"
#include "support/text_file.h"

#include <json/writer.h>

#include <ostream>

namespace kelvorig {

Status ConvertModelFormat(const std::string& path, int format, std::ostream& out)
{
    const std::string text = ReadTextFile(path);
    if (text.empty())
        return Status::Failure("couldn't read " + path + ": " + UnreadableReason(path) + "\n");
    if (NestedTooDeep(text))
        return Status::Failure("couldn't read " + path + ": nested more than " + std::to_string(kMaxJsonNesting) +
                               " levels deep\n");
    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, text))
        return Status::Failure("couldn't read " + path + ": " + error + "\n");
    config.format = format;
    out << Json::StyledWriter().write(config.ToJson()) << "\n";
    out.flush();
    return {};
}

} // namespace kelvorig
