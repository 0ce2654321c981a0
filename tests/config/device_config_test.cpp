#include "config/device_config.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kelvorig {
namespace {

// An hmd of two windows that passes, with more members in its device section and at the root.
std::string Hmd(const std::string& eyes, const std::string& members)
{
    return R"({"device": {"eye_target_width_in_pixels": 1080, "eye_target_height_in_pixels": 1200, "num_windows": 2)" +
           eyes + "}, " + members + "}";
}

DeviceConfig ParseOrFail(const std::string& text)
{
    DeviceConfig config;
    std::string error;
    EXPECT_TRUE(config.Parse(error, text)) << error;
    return config;
}

// The other texts, and the classes read, are in the command-line table's conversions.
TEST(DeviceConfigReader, EmptyTextAndAnHmdWithoutItsDeviceSectionFail)
{
    std::string error;
    EXPECT_FALSE(DeviceConfig().Parse(error, ""));
    EXPECT_EQ(error, "configuration string is empty");
    // An unknown class leaves the record an hmd.
    for (const char* text : {R"({"device_class": "HMD"})", R"({"device_class": "headset"})"})
        EXPECT_TRUE(!DeviceConfig().Parse(error, text) && error == "missing values from \"device\" section") << text;
}

TEST(DeviceConfigReader, EdidTextsAreNumberedFromTheFirstEyeInUse)
{
    const DeviceConfig right =
        ParseOrFail(Hmd(R"(, "first_eye": "eEYE_RIGHT", "last_eye": "eeye_r")", R"("display_edid": ["second"])"));
    EXPECT_EQ(right.display_edid[0], "");
    EXPECT_EQ(right.display_edid[1], "second");

    // Reversed eyes read nothing.
    const DeviceConfig reversed =
        ParseOrFail(Hmd(R"(, "first_eye": "eEYE_RIGHT", "last_eye": "eEYE_LEFT")",
                        R"("display_edid": ["a", "b"], "tracking_to_eye_transform": [{"undistort_r2_cutoff": 5}])"));
    EXPECT_EQ(reversed.display_edid[0], "");
    EXPECT_EQ(reversed.eyes[0].undistort_r2_cutoff, 0.0f);
    EXPECT_EQ(reversed.eyes[1].undistort_r2_cutoff, 0.0f);

    // The eye count as a last eye reads both eyes and no further.
    const DeviceConfig counted = ParseOrFail(Hmd(R"(, "last_eye": "eNUM_EYES")", R"("display_edid": ["a", "b", "c"])"));
    EXPECT_EQ(counted.device.last_eye, 2);
    EXPECT_EQ(counted.display_edid[1], "b");
}

TEST(DeviceConfigReader, ImuOrHeadObjectMakesFormat1AndIgnoresTheRootCalibration)
{
    // Only X given: Z is zero and the pose stays the identity, without a word.
    const DeviceConfig onlyX = ParseOrFail(R"({"device_class": "controller", "imu": {"plus_x": [1, 0, 0]},
        "gyro_bias": [9, 9, 9]})");
    EXPECT_EQ(onlyX.trackref_from_imu, kIdentityCalibrationPoseFloat);

    // A head object alone keeps the root's IMU pose.
    const DeviceConfig onlyHead = ParseOrFail(R"({"device_class": "controller", "head": {},
        "trackref_from_imu": [0, 0, 0, 1, 4, 5, 6], "gyro_bias": [9, 9, 9]})");
    EXPECT_EQ(onlyHead.trackref_from_imu, (CalibrationPoseFloat{0, 0, 0, 1, 4, 5, 6}));
    for (const DeviceConfig& config : {onlyX, onlyHead})
        EXPECT_TRUE(config.format == 1 && config.gyro_bias == (TripleFloat{0, 0, 0}));
}

// Every key the reader knows, with every JSON kind in its place: the parse either passes
// or fails with one of its own texts, and never throws.
TEST(DeviceConfigReader, AnyKindOfValueUnderAnyKeyIsHandled)
{
    // note: one text, so that the list stays a few lines long.
    std::istringstream keys("revision type device_class device_vid device_serial_number seconds_from_vsync_to_photons "
                            "device display_edid display_mc display_gc tracking_camera_unique_id "
                            "tracking_to_eye_transform imu head trackref_from_imu trackref_from_head gyro_bias "
                            "pharoscope_config tracked_camera resource_root firmware_config");
    const char* const values[] = {"null",        "true",
                                  "-3",          "4000000000",
                                  "1e300",       "\"text\"",
                                  "[]",          "[1, \"a\", [2]]",
                                  "{}",          "{\"type\": [1], \"position\": {}, \"intrinsics\": 3}",
                                  "[{\"a\": 1}]"};
    for (std::string key; keys >> key;)
        for (const char* value : values)
        {
            const std::string text = Hmd("", R"("device_class": "controller", ")" + std::string(key) + "\": " + value);
            std::string error;
            bool passed = false;
            EXPECT_NO_THROW(passed = DeviceConfig().Parse(error, text)) << text;
            EXPECT_TRUE(passed || error == "exception thrown in JSON library" ||
                        error == "missing values from \"device\" section")
                << text << " -> " << error;
        }
}

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
