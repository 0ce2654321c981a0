#pragma once

#include "config/sensor_model.h"

#include <json/value.h>

#include <string>

namespace kelvorig {

// The whole device configuration record. (Fields are filled in with the configuration
// reader; this is the part the sensor-model loader relies on.)
class DeviceConfig
{
public:
    TrackedObjectModel pharoscope_config;

    // Clears `error`; on false it holds the reason.
    bool Parse(std::string& error, const std::string& text);
    Json::Value ToJson() const;
};

} // namespace kelvorig
