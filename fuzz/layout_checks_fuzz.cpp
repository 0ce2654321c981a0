// Any text as the section of a sensor layout: the checks of a layout file before it is read.
#include "config/layout_checks.h"

#include <json/reader.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Json::Value section;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try
    {
        if (!Json::Reader().parse(text, section, false))
            return 0;
    }
    catch (const Json::Exception&)
    {
        return 0; // the reader's own limits
    }
    std::string warnings;
    static_cast<void>(kelvorig::CheckLayoutSection("fuzz.json", section, warnings));
    return 0;
}
