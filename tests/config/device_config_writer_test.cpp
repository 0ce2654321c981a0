#include "config/device_config.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// What the conversions in the command-line table can't show: a class without a name and
// firmware text that no longer parses are left out.
TEST(DeviceConfigWriter, KeysAreWrittenOnlyWhenTheyMeanSomething)
{
    DeviceConfig config;
    config.device_class = 9;
    config.firmware_config = "{broken";
    const Json::Value root = config.ToJson();
    EXPECT_FALSE(root.isMember("device_class"));
    EXPECT_FALSE(root.isMember("firmware_config"));
}

} // namespace
} // namespace kelvorig
