#include "config/device_config.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// The rules a flat reprint can't show: keys that depend on the class, on being set, on
// being valid.
TEST(DeviceConfigWriter, KeysAreWrittenOnlyWhenTheyMeanSomething)
{
    DeviceConfig config;
    config.device_class = 9;
    EXPECT_FALSE(config.ToJson().isMember("device_class"));
    config.device_class = 3;
    EXPECT_EQ(config.ToJson()["device_class"].asString(), "generic_tracker");

    config.device_class = 2;
    config.manufacturer = "Maker";
    config.direct_mode_edid_vid = 7;  // display keys: hmd only
    config.pharoscope_config.modelCad = "cad";
    config.firmware_config = "{\"a\":1}\n";
    Json::Value root = config.ToJson();
    EXPECT_EQ(root["manufacturer"].asString(), "Maker");
    EXPECT_FALSE(root.isMember("model_number"));
    EXPECT_FALSE(root.isMember("direct_mode_edid_vid"));
    EXPECT_FALSE(root.isMember("device"));
    EXPECT_FALSE(root.isMember("pharoscope_config"));
    EXPECT_EQ(root["firmware_config"]["a"].asInt(), 1);

    config.pharoscope_config.valid = true;
    config.firmware_config = "{broken";
    root = config.ToJson();
    EXPECT_EQ(root["pharoscope_config"]["modelCad"].asString(), "cad");
    EXPECT_FALSE(root.isMember("firmware_config"));
}

} // namespace
} // namespace kelvorig
