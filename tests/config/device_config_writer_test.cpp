#include "config/device_config.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <cmath>
#include <limits>

namespace kelvorig {
namespace {

DeviceConfig Controller()
{
    DeviceConfig config;
    config.device_class = 2;
    return config;
}

DeviceConfig CompleteHmd()
{
    DeviceConfig config;
    config.device.eye_target_width_in_pixels = 1080;
    config.device.eye_target_height_in_pixels = 1200;
    config.device.num_windows = 1;
    return config;
}

std::vector<std::string> Keys(const Json::Value& object)
{
    return object.getMemberNames();
}

TEST(DeviceConfigWriter, AlwaysWrittenKeysAndOmittedDefaults)
{
    const Json::Value root = Controller().ToJson();
    EXPECT_EQ(Keys(root), (std::vector<std::string>{"acc_bias", "acc_scale", "device_class", "device_pid",
                                                     "device_serial_number", "device_vid", "gyro_bias", "gyro_scale",
                                                     "render_model", "resource_root", "revision",
                                                     "tracked_controller_role", "trackref_from_head",
                                                     "trackref_from_imu", "type"}));
    EXPECT_EQ(root["device_class"].asString(), "controller");
    EXPECT_EQ(root["revision"].asUInt(), 0u);
    EXPECT_EQ(root["trackref_from_imu"].size(), 7u);

    DeviceConfig strange = Controller();
    strange.device_class = 9;
    EXPECT_FALSE(strange.ToJson().isMember("device_class"));
    strange.device_class = 3;
    EXPECT_EQ(strange.ToJson()["device_class"].asString(), "generic_tracker");
}

TEST(DeviceConfigWriter, OptionalTextsAndNumbersOnlyWhenSet)
{
    DeviceConfig config = Controller();
    config.manufacturer = "Maker";
    config.model_number = "M";
    config.attached_device_id = "A";
    config.tracking_camera_intrinsics = "cam";
    config.tracking_camera_unique_id = 5;
    config.direct_mode_edid_vid = 7;  // display block: hmd only
    const Json::Value root = config.ToJson();
    EXPECT_EQ(root["manufacturer"].asString(), "Maker");
    EXPECT_EQ(root["model_number"].asString(), "M");
    EXPECT_EQ(root["attached_device_id"].asString(), "A");
    EXPECT_EQ(root["tracking_camera_intrinsics"].asString(), "cam");
    EXPECT_EQ(root["tracking_camera_unique_id"].asUInt(), 5u);
    EXPECT_FALSE(root.isMember("direct_mode_edid_vid"));
    EXPECT_FALSE(root.isMember("device"));
}

TEST(DeviceConfigWriter, DisplayBlockOfAnHmd)
{
    DeviceConfig config = CompleteHmd();
    config.device.last_eye = 1;
    config.display_edid = {"l", "r"};
    config.display_gc_prescale = 2.0f;
    config.seconds_from_vsync_to_photons = 0.1f;
    config.direct_mode_edid_pid = 3;
    Json::Value root = config.ToJson();
    EXPECT_EQ(root["device"]["first_eye"].asString(), "eEYE_LEFT");
    EXPECT_EQ(root["device"]["last_eye"].asString(), "eEYE_RIGHT");
    EXPECT_EQ(root["device"]["num_windows"].asInt(), 1);
    EXPECT_EQ(root["display_edid"][1].asString(), "r");
    EXPECT_EQ(root["tracking_to_eye_transform"].size(), 2u);
    EXPECT_FALSE(root.isMember("display_mc"));
    // Type 0 drops the prescale with the rest, and an empty object is no key.
    EXPECT_FALSE(root.isMember("display_gc"));
    EXPECT_EQ(root["seconds_from_vsync_to_photons"].asDouble(), static_cast<double>(0.1f));
    EXPECT_FALSE(root.isMember("seconds_from_photons_to_vblank"));
    EXPECT_EQ(root["direct_mode_edid_pid"].asUInt(), 3u);
    EXPECT_FALSE(root.isMember("direct_mode_edid_vid"));

    config.display_gc_black_clamp = 0.5f;
    EXPECT_EQ(Keys(config.ToJson()["display_gc"]), (std::vector<std::string>{"black_clamp"}));
    config.display_gc_type = 2;
    config.display_mc_type = 1;
    root = config.ToJson();
    EXPECT_EQ(Keys(root["display_gc"]),
              (std::vector<std::string>{"black_clamp", "image", "offset", "prescale", "scale", "type"}));
    EXPECT_EQ(root["display_gc"]["prescale"].asDouble(), 2.0);
    EXPECT_EQ(Keys(root["display_mc"]), (std::vector<std::string>{"left", "offset", "right", "scale", "type"}));

    // Reversed eyes write neither per-eye array.
    config.device.first_eye = 1;
    config.device.last_eye = 0;
    root = config.ToJson();
    EXPECT_FALSE(root.isMember("display_edid"));
    EXPECT_FALSE(root.isMember("tracking_to_eye_transform"));
}

TEST(DeviceConfigWriter, EyeObjectsAndTrimmedCoefficients)
{
    DeviceConfig config = CompleteHmd();
    EyeCalibration& eye = config.eyes[0];
    eye.distortion.type = 10;
    eye.distortion.coeffs = {0.5, 0, 2, 0, 0, 0, 0, 0};
    eye.distortion_red.type = 1;
    eye.distortion_red.coeffs[7] = std::numeric_limits<double>::quiet_NaN();
    Json::Value object = config.ToJson()["tracking_to_eye_transform"][0];
    EXPECT_EQ(Keys(object), (std::vector<std::string>{"distortion", "distortion_blue", "distortion_red",
                                                       "grow_for_undistort", "intrinsics", "undistort_r2_cutoff"}));
    EXPECT_EQ(object["distortion"]["type"].asString(), "DISTORT_DPOLY3");
    EXPECT_EQ(object["distortion"]["coeffs"].size(), 3u);
    EXPECT_EQ(object["distortion"]["coeffs"][2].asDouble(), 2.0);
    EXPECT_EQ(object["distortion_red"]["coeffs"].size(), 8u);
    EXPECT_TRUE(object["distortion_blue"].isMember("coeffs"));
    EXPECT_TRUE(object["distortion_blue"]["coeffs"].isNull());
    EXPECT_EQ(object["intrinsics"][2][2].asDouble(), 1.0);

    const std::string text = Json::StyledWriter().write(object["distortion_blue"]);
    EXPECT_NE(text.find("\"coeffs\" : null"), std::string::npos) << text;

    eye.has_eye_to_head = true;
    eye.eye_to_head[1] = 0.25f;
    object = config.ToJson()["tracking_to_eye_transform"][0];
    EXPECT_EQ(object["eye_to_head"][0][1].asDouble(), 0.25);
}

TEST(DeviceConfigWriter, Format1WritesAxesInsteadOfPoses)
{
    DeviceConfig config = Controller();
    config.format = 1;
    config.trackref_from_imu = {0, 0, 0, 1, 0.5f, 0, 0};
    config.trackref_from_head = {1, 0, 0, 0, 0, 0, 0};
    config.acc_bias = {1, 2, 3};
    const Json::Value root = config.ToJson();
    EXPECT_FALSE(root.isMember("trackref_from_imu"));
    EXPECT_FALSE(root.isMember("trackref_from_head"));
    EXPECT_FALSE(root.isMember("gyro_bias"));
    EXPECT_EQ(Keys(root["imu"]), (std::vector<std::string>{"acc_bias", "acc_scale", "gyro_bias", "gyro_scale",
                                                            "plus_x", "plus_z", "position"}));
    EXPECT_EQ(root["imu"]["position"][0].asDouble(), 0.5);
    EXPECT_EQ(root["imu"]["acc_bias"][2].asDouble(), 3.0);
    EXPECT_EQ(Keys(root["head"]), (std::vector<std::string>{"plus_x", "plus_z", "position"}));
    EXPECT_EQ(root["head"]["plus_z"][2].asDouble(), -1.0);
    EXPECT_EQ(root["head"]["plus_x"][0].asDouble(), 1.0);
}

TEST(DeviceConfigWriter, CameraIsShiftedOrDropped)
{
    DeviceConfig config = Controller();
    TrackedCameraConfig& camera = config.tracked_camera;
    camera.width = 640;
    camera.height = 480;
    camera.undist_width = 700;
    camera.undist_height = 480;
    camera.focal_x = 300;
    camera.focal_y = 301;
    camera.center_x = 350;
    camera.center_y = 240;
    EXPECT_FALSE(config.ToJson().isMember("tracked_camera"));

    camera.distort.type = 12;
    const Json::Value written = config.ToJson()["tracked_camera"];
    EXPECT_EQ(written["intrinsics"]["center_x"].asDouble(), 320.0);
    EXPECT_EQ(written["intrinsics"]["center_y"].asDouble(), 240.0);
    EXPECT_FALSE(written["intrinsics"].isMember("undist_width"));
    EXPECT_EQ(Keys(written["intrinsics"]), (std::vector<std::string>{"center_x", "center_y", "distort", "focal_x",
                                                                      "focal_y", "height", "interface", "width"}));
    EXPECT_EQ(written["head_from_camera"][0].asDouble(), static_cast<double>(-0.21644000709056854f));
}

TEST(DeviceConfigWriter, SensorModelAndFirmwareText)
{
    DeviceConfig config = Controller();
    config.pharoscope_config.modelCad = "cad";
    EXPECT_FALSE(config.ToJson().isMember("pharoscope_config"));
    config.pharoscope_config.valid = true;
    EXPECT_EQ(config.ToJson()["pharoscope_config"]["modelCad"].asString(), "cad");

    config.firmware_config = "{\"a\":1}\n";
    EXPECT_EQ(config.ToJson()["firmware_config"]["a"].asInt(), 1);
    config.firmware_config = "{broken";
    const Json::Value root = config.ToJson();
    EXPECT_FALSE(root.isMember("firmware_config"));
    EXPECT_TRUE(root.isMember("pharoscope_config"));
}

} // namespace
} // namespace kelvorig
