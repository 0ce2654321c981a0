#include "config/device_config.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// The smallest hmd that passes: display sizes and a window.
const std::string kDevice =
    R"("device": {"eye_target_width_in_pixels": 1080, "eye_target_height_in_pixels": 1200, "num_windows": 1})";

std::string Hmd(const std::string& members)
{
    return "{" + kDevice + (members.empty() ? "" : ", " + members) + "}";
}

DeviceConfig ParseOrFail(const std::string& text)
{
    DeviceConfig config;
    std::string error = "stale";
    EXPECT_TRUE(config.Parse(error, text)) << error;
    EXPECT_EQ(error, "");
    return config;
}

TEST(DeviceConfigReader, FailureTextsAndWhatTheyDoToTheRecord)
{
    DeviceConfig config;
    config.model_number = "before";
    std::string error;

    EXPECT_FALSE(config.Parse(error, ""));
    EXPECT_EQ(error, "configuration string is empty");
    EXPECT_EQ(config.model_number, "before");

    EXPECT_FALSE(config.Parse(error, "{\"revision\": 3,"));
    EXPECT_EQ(error.rfind("* Line 1, Column ", 0), 0u) << error;
    EXPECT_EQ(config.model_number, "before");

    // Identity fields read before the bad value survive the reset.
    EXPECT_FALSE(config.Parse(error, R"({"manufacturer": "Maker", "model_number": "M7", "device": "big"})"));
    EXPECT_EQ(error, "exception thrown in JSON library");
    EXPECT_EQ(config.manufacturer, "Maker");
    EXPECT_EQ(config.model_number, "");

    EXPECT_FALSE(config.Parse(error, R"({"manufacturer": "Other", "model_number": "M8"})"));
    EXPECT_EQ(error, "missing values from \"device\" section");
    EXPECT_EQ(config.manufacturer, "Other");
    EXPECT_EQ(config.model_number, "");
}

TEST(DeviceConfigReader, OnlyAnHmdNeedsItsDeviceSection)
{
    std::string error;
    for (const char* text : {"{}", R"({"device_class": "HMD"})", R"({"device_class": "headset"})"})
        EXPECT_TRUE(!DeviceConfig().Parse(error, text) && error == "missing values from \"device\" section") << text;

    EXPECT_EQ(ParseOrFail(R"({"device_class": "controller"})").device_class, 2);
    EXPECT_EQ(ParseOrFail(R"({"device_class": "Generic_Tracker"})").device_class, 3);
    EXPECT_EQ(ParseOrFail(Hmd(R"("device_class": "HMD")")).device_class, 1);
}

TEST(DeviceConfigReader, EdidTextsAreNumberedFromTheFirstEyeInUse)
{
    DeviceConfig right = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "first_eye": "eEYE_RIGHT", "last_eye": "eeye_r"}, "display_edid": ["second"]})");
    EXPECT_EQ(right.display_edid[0], "");
    EXPECT_EQ(right.display_edid[1], "second");

    // Reversed eyes read nothing.
    DeviceConfig reversed = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "first_eye": "eEYE_RIGHT", "last_eye": "eEYE_LEFT"}, "display_edid": ["a", "b"],
        "tracking_to_eye_transform": [{"undistort_r2_cutoff": 5}]})");
    EXPECT_EQ(reversed.display_edid[0], "");
    EXPECT_EQ(reversed.eyes[0].undistort_r2_cutoff, 0.0f);
    EXPECT_EQ(reversed.eyes[1].undistort_r2_cutoff, 0.0f);

    // The eye count as a last eye reads both eyes and no further.
    DeviceConfig counted = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "last_eye": "eNUM_EYES"}, "display_edid": ["a", "b", "c"]})");
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
    const char* const keys[] = {
        "revision", "type", "device_class", "device_vid", "device_serial_number", "seconds_from_vsync_to_photons",
        "device", "display_edid", "display_mc", "display_gc", "tracking_camera_unique_id",
        "tracking_to_eye_transform", "imu", "head", "trackref_from_imu", "trackref_from_head", "gyro_bias",
        "pharoscope_config", "tracked_camera", "resource_root", "firmware_config"};
    const char* const values[] = {"null", "true", "-3", "4000000000", "1e300", "\"text\"", "[]", "[1, \"a\", [2]]",
                                  "{}", "{\"type\": [1], \"position\": {}, \"intrinsics\": 3}", "[{\"a\": 1}]"};
    for (const char* key : keys)
        for (const char* value : values)
        {
            const std::string text = "{" + kDevice + R"(, "device_class": "controller", ")" + key + "\": " + value + "}";
            DeviceConfig config;
            std::string error;
            bool passed = false;
            EXPECT_NO_THROW(passed = config.Parse(error, text)) << text;
            EXPECT_TRUE(passed || error == "exception thrown in JSON library" ||
                        error == "missing values from \"device\" section")
                << text << " -> " << error;
        }
}

} // namespace
} // namespace kelvorig
