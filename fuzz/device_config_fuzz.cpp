// Any text as a device configuration file, then written back in both formats, as
// /formatconvert does.
#include "config/device_config.h"

#include <json/writer.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvorig;
    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, std::string(reinterpret_cast<const char*>(data), size)))
        return 0;
    for (int format : {0, 1})
    {
        config.format = format;
        Json::StyledWriter().write(config.ToJson());
    }
    return 0;
}
