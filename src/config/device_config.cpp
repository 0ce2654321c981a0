#include "config/device_config.h"

namespace kelvorig {

// Placeholder until the configuration reader lands.
bool DeviceConfig::Parse(std::string& error, const std::string& text)
{
    error = text.empty() ? "configuration string is empty" : "device files are not supported yet";
    return false;
}

Json::Value DeviceConfig::ToJson() const
{
    return Json::Value();
}

} // namespace kelvorig
