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

TEST(DeviceConfigReader, WrongTypesAnywhereAreCaught)
{
    const char* const texts[] = {
        R"([1, 2])",
        R"({"revision": -1})",
        R"({"revision": "three"})",
        R"({"device": {"num_windows": "two"}})",
        R"({"imu": {"position": "here"}})",
        R"({"trackref_from_imu": {"x": 1}})",
        R"({"pharoscope_config": {"channelMap": [[1]]}})",
        R"({"tracked_camera": {"intrinsics": {"width": [640]}}})",
        R"({"tracking_to_eye_transform": [{"intrinsics": "I"}]})",
    };
    for (const char* text : texts)
    {
        DeviceConfig config;
        std::string error;
        EXPECT_FALSE(config.Parse(error, text)) << text;
        EXPECT_EQ(error, "exception thrown in JSON library") << text;
    }
}

TEST(DeviceConfigReader, OnlyAnHmdNeedsItsDeviceSection)
{
    std::string error;
    EXPECT_FALSE(DeviceConfig().Parse(error, "{}"));
    EXPECT_EQ(error, "missing values from \"device\" section");
    EXPECT_FALSE(DeviceConfig().Parse(error, R"({"device_class": "HMD"})"));
    EXPECT_EQ(error, "missing values from \"device\" section");
    EXPECT_FALSE(DeviceConfig().Parse(error, R"({"device_class": "headset"})"));

    EXPECT_EQ(ParseOrFail(R"({"device_class": "controller"})").device_class, 2);
    EXPECT_EQ(ParseOrFail(R"({"device_class": "Generic_Tracker"})").device_class, 3);
    EXPECT_EQ(ParseOrFail(Hmd(R"("device_class": "HMD")")).device_class, 1);
}

TEST(DeviceConfigReader, ReadsAFlatFileKeyByKey)
{
    const DeviceConfig config = ParseOrFail(R"({
        // comments are allowed
        "revision": 3, "type": "Lighthouse_HMD", "device_class": "hmd",
        "device_vid": 10462, "device_pid": 8192, "device_serial_number": "LHR-1",
        "render_model": "visor_rm", "manufacturer": "Maker", "model_number": "V1",
        "attached_device_id": "A-1", "direct_mode_edid_vid": 53838, "direct_mode_edid_pid": 43521,
        "seconds_from_vsync_to_photons": 0.1, "seconds_from_photons_to_vblank": 0.002,
        "device": {"eye_target_width_in_pixels": 1080, "eye_target_height_in_pixels": 1200,
                   "num_windows": 2, "first_eye": "eEYE_LEFT", "last_eye": "eEYE_RIGHT"},
        "display_edid": ["edid-left", ""],
        "display_mc": {"type": 2, "offset": 0.5, "scale": 1.5, "left": "l.png", "right": "r.png"},
        "display_gc": {"black_clamp": 0.25, "type": 1, "offset": 0.1, "scale": 0.9, "image": "gc.png"},
        "tracking_camera_intrinsics": "cam", "tracking_camera_unique_id": 77,
        "trackref_from_imu": [0, 0, 1, 0, 0.01, 0.02],
        "trackref_from_head": [0, 1, 0, 0, 1, 2, 3],
        "gyro_bias": [0.1, 0.2, 0.3], "gyro_scale": [1.1], "acc_bias": [1, 2, 3],
        "pharoscope_config": {"modelCad": "shell.step", "channelMap": [4], "modelPoints": [[1, 2, 3]],
                              "modelNormals": [[0, 0, 3]]},
        "tracked_controller_role": "TrackedControllerRole_LeftHand",
        "resource_root": "Visor_Root",
        "firmware_config": {"b": [1, 2], "a": "x"}
    })");
    EXPECT_EQ(config.format, 0);
    EXPECT_EQ(config.revision, 3u);
    EXPECT_EQ(config.type, "Lighthouse_HMD");
    EXPECT_EQ(config.device_vid, 10462u);
    EXPECT_EQ(config.device_pid, 8192u);
    EXPECT_EQ(config.device_serial_number, "LHR-1");
    EXPECT_EQ(config.render_model, "visor_rm");
    EXPECT_EQ(config.model_number, "V1");
    EXPECT_EQ(config.attached_device_id, "A-1");
    EXPECT_EQ(config.direct_mode_edid_vid, 53838u);
    EXPECT_EQ(config.direct_mode_edid_pid, 43521u);
    EXPECT_EQ(config.seconds_from_vsync_to_photons, 0.1f);
    EXPECT_EQ(config.seconds_from_photons_to_vblank, 0.002f);
    EXPECT_EQ(config.device.nominal_rate, 90.0f);
    EXPECT_EQ(config.device.last_eye, 1);
    // Two windows: an empty second text is a copy of the first.
    EXPECT_EQ(config.display_edid[0], "edid-left");
    EXPECT_EQ(config.display_edid[1], "edid-left");
    EXPECT_EQ(config.display_mc_type, 2);
    EXPECT_EQ(config.display_mc_scale, 1.5f);
    EXPECT_EQ(config.display_mc_right, "r.png");
    EXPECT_EQ(config.display_gc_black_clamp, 0.25f);
    EXPECT_EQ(config.display_gc_type, 1);
    EXPECT_EQ(config.display_gc_prescale, 1.0f);
    EXPECT_EQ(config.display_gc_image, "gc.png");
    EXPECT_EQ(config.tracking_camera_intrinsics, "cam");
    EXPECT_EQ(config.tracking_camera_unique_id, 77u);
    // Short arrays read 0 past their end; a missing scale reads 0, not 1.
    EXPECT_EQ(config.trackref_from_imu, (PoseFloat{0, 0, 1, 0, 0.01f, 0.02f, 0}));
    EXPECT_EQ(config.trackref_from_head, (PoseFloat{0, 1, 0, 0, 1, 2, 3}));
    EXPECT_EQ(config.gyro_bias, (TripleFloat{0.1f, 0.2f, 0.3f}));
    EXPECT_EQ(config.gyro_scale, (TripleFloat{1.1f, 0, 0}));
    EXPECT_EQ(config.acc_scale, (TripleFloat{0, 0, 0}));
    EXPECT_TRUE(config.pharoscope_config.valid);
    EXPECT_EQ(config.pharoscope_config.modelNormals[0], Eigen::Vector3f(0, 0, 1));
    EXPECT_EQ(config.tracked_controller_role, "TrackedControllerRole_LeftHand");
    EXPECT_EQ(config.resource_root, "visor_root");
    EXPECT_EQ(config.firmware_config, "{\"a\":\"x\",\"b\":[1,2]}\n");
}

TEST(DeviceConfigReader, EdidTextsAreNumberedFromTheFirstEyeInUse)
{
    DeviceConfig right = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "first_eye": "eEYE_RIGHT", "last_eye": "eeye_r"}, "display_edid": ["second"]})");
    EXPECT_EQ(right.display_edid[0], "");
    EXPECT_EQ(right.display_edid[1], "second");

    // One window clears that very text.
    DeviceConfig single = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 1, "first_eye": "eEYE_RIGHT", "last_eye": "eEYE_RIGHT"}, "display_edid": ["second"]})");
    EXPECT_EQ(single.display_edid[1], "");

    // Reversed eyes read nothing; an unknown name is the left eye.
    DeviceConfig reversed = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "first_eye": "eEYE_RIGHT", "last_eye": "eEYE_LEFT"}, "display_edid": ["a", "b"],
        "tracking_to_eye_transform": [{"undistort_r2_cutoff": 5}]})");
    EXPECT_EQ(reversed.display_edid[0], "");
    EXPECT_EQ(reversed.eyes[0].undistort_r2_cutoff, 0.0f);
    EXPECT_EQ(reversed.eyes[1].undistort_r2_cutoff, 0.0f);

    DeviceConfig unknown = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 1, "first_eye": "eEYE_MIDDLE", "last_eye": "eEYE_MIDDLE"}, "display_edid": ["a", "b"]})");
    EXPECT_EQ(unknown.device.first_eye, 0);
    EXPECT_EQ(unknown.display_edid[0], "a");

    // The eye count as a last eye reads both eyes and no further.
    DeviceConfig counted = ParseOrFail(R"({"device": {"eye_target_width_in_pixels": 1, "eye_target_height_in_pixels": 1,
        "num_windows": 2, "last_eye": "eNUM_EYES"}, "display_edid": ["a", "b", "c"]})");
    EXPECT_EQ(counted.device.last_eye, 2);
    EXPECT_EQ(counted.display_edid[1], "b");
}

TEST(DeviceConfigReader, EyeCalibrationsAndDistortionSharing)
{
    const DeviceConfig config = ParseOrFail(Hmd(R"("device": {"eye_target_width_in_pixels": 1,
        "eye_target_height_in_pixels": 1, "num_windows": 1, "last_eye": "eEYE_RIGHT"},
        "tracking_to_eye_transform": [
          {"intrinsics": [[1, 0, 0.1], [0, 2]], "eye_to_head": [[0, 1, 0], [1, 0, 0], [0, 0, 1]],
           "distortion": {"type": "DISTORT_DPOLY3", "center_x": 0.5, "coeffs": [1, 2, 3, 4, 5, 6, 7, 8, 9]},
           "distortion_blue": {"type": "distort_poly3", "coeffs": [0.5]},
           "undistort_r2_cutoff": 1.5, "grow_for_undistort": 0.25},
          {"distortion": {"type": "DISTORT_POLY2_TANGENT"}, "distortion_red": {"type": "DISTORT_FOV1"},
           "eye_to_head": null}
        ])"));
    const EyeCalibration& left = config.eyes[0];
    EXPECT_EQ(left.intrinsics, (Matrix3Float{1, 0, 0.1f, 0, 2, 0, 0, 0, 0}));
    EXPECT_TRUE(left.has_eye_to_head);
    EXPECT_EQ(left.eye_to_head, (Matrix3Float{0, 1, 0, 1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(left.distortion.type, 10);
    EXPECT_EQ(left.distortion.center_x, 0.5);
    EXPECT_EQ(left.distortion.coeffs, (std::array<double, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
    // Red was trivial and takes the main model; blue was not and stays.
    EXPECT_EQ(left.distortion_red.type, 10);
    EXPECT_EQ(left.distortion_red.coeffs[7], 8.0);
    EXPECT_EQ(left.distortion_blue.type, 4);
    EXPECT_EQ(left.distortion_blue.coeffs, (std::array<double, 8>{0.5, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(left.undistort_r2_cutoff, 1.5f);
    EXPECT_EQ(left.grow_for_undistort, 0.25f);

    // A zero POLY2_TANGENT counts as none, so nothing is shared from it.
    const EyeCalibration& right = config.eyes[1];
    EXPECT_EQ(right.distortion.type, 1);
    EXPECT_EQ(right.distortion_red.type, 5);
    EXPECT_EQ(right.distortion_blue.type, 0);
    EXPECT_FALSE(right.has_eye_to_head);
    EXPECT_EQ(right.eye_to_head, kIdentityMatrix3);
    EXPECT_EQ(right.intrinsics, (Matrix3Float{}));
}

TEST(DeviceConfigReader, ImuAndHeadObjectsMakeFormat1)
{
    const DeviceConfig config = ParseOrFail(R"({"device_class": "controller",
        "imu": {"gyro_bias": [1, 2, 3], "acc_scale": [2, 2, 2],
                "position": [0.1, 0.2, 0.3], "plus_x": [0, 1, 0], "plus_z": [1, 0, 0]},
        "head": {"plus_x": [-1, 0, 0], "plus_z": [0, 0, -1]},
        "trackref_from_imu": [1, 0, 0, 0, 0, 0, 0], "gyro_scale": [5, 5, 5]})");
    EXPECT_EQ(config.format, 1);
    EXPECT_EQ(config.gyro_bias, (TripleFloat{1, 2, 3}));
    EXPECT_EQ(config.gyro_scale, (TripleFloat{0, 0, 0}));
    EXPECT_EQ(config.acc_bias, (TripleFloat{0, 0, 0}));
    EXPECT_EQ(config.acc_scale, (TripleFloat{2, 2, 2}));
    const PoseFloat& imu = config.trackref_from_imu;
    EXPECT_NEAR(imu[0], 0.5f, 1e-7f);
    EXPECT_NEAR(imu[3], 0.5f, 1e-7f);
    EXPECT_EQ(imu[6], 0.3f);
    // A half turn about Y takes X to -X and Z to -Z.
    EXPECT_NEAR(std::abs(config.trackref_from_head[1]), 1.0f, 1e-7f);
    EXPECT_EQ(config.trackref_from_head[3], 0.0f);
}

TEST(DeviceConfigReader, ImuObjectsIgnoreRootCalibrationAndRefuseSilently)
{
    // Only X given: Z is zero, the pose stays the identity, and the file is format 1.
    const DeviceConfig onlyX = ParseOrFail(R"({"device_class": "controller", "imu": {"plus_x": [1, 0, 0]},
        "gyro_bias": [9, 9, 9]})");
    EXPECT_EQ(onlyX.format, 1);
    EXPECT_EQ(onlyX.trackref_from_imu, kIdentityPoseFloat);
    EXPECT_EQ(onlyX.gyro_bias, (TripleFloat{0, 0, 0}));
    EXPECT_EQ(onlyX.gyro_scale, (TripleFloat{1, 1, 1}));

    const DeviceConfig onlyHead = ParseOrFail(R"({"device_class": "controller", "head": {},
        "trackref_from_imu": [0, 0, 0, 1, 4, 5, 6], "gyro_bias": [9, 9, 9]})");
    EXPECT_EQ(onlyHead.format, 1);
    EXPECT_EQ(onlyHead.trackref_from_imu, (PoseFloat{0, 0, 0, 1, 4, 5, 6}));
    EXPECT_EQ(onlyHead.gyro_bias, (TripleFloat{0, 0, 0}));

    const DeviceConfig flat = ParseOrFail(R"({"device_class": "controller", "gyro_bias": [9, 9, 9]})");
    EXPECT_EQ(flat.gyro_bias, (TripleFloat{9, 9, 9}));
    EXPECT_EQ(flat.acc_scale, (TripleFloat{0, 0, 0}));
}

TEST(DeviceConfigReader, TrackedCameraFillsUndistortedSizesAndKeepsDefaultMounting)
{
    const DeviceConfig config = ParseOrFail(R"({"device_class": "controller", "tracked_camera": {"intrinsics": {
        "interface": "usb", "width": 640, "height": 480, "undist_height": 520, "focal_x": 300.5,
        "center_x": 320, "focal_y": 301, "center_y": 240, "distort": {"type": "DISTORT_FTHETA", "coeffs": [0.1]}}}})");
    const TrackedCameraConfig& camera = config.tracked_camera;
    EXPECT_EQ(camera.interface, "usb");
    EXPECT_EQ(camera.undist_width, 640);
    EXPECT_EQ(camera.undist_height, 520);
    EXPECT_EQ(camera.focal_x, 300.5);
    EXPECT_EQ(camera.distort.type, 12);
    EXPECT_EQ(camera.head_from_camera, TrackedCameraConfig::kDefaultHeadFromCamera);

    const DeviceConfig mounted = ParseOrFail(R"({"device_class": "controller",
        "tracked_camera": {"head_from_camera": [0, 0, 0, 1, 0.5]}})");
    EXPECT_EQ(mounted.tracked_camera.head_from_camera, (PoseFloat{0, 0, 0, 1, 0.5f, 0, 0}));
}

TEST(DeviceConfigReader, SensorModelSectionNeverFailsTheParseAndASecondParseExtendsIt)
{
    const DeviceConfig broken = ParseOrFail(R"({"device_class": "controller", "pharoscope_config": {"modelCad": "c"}})");
    EXPECT_FALSE(broken.pharoscope_config.valid);
    EXPECT_EQ(broken.pharoscope_config.modelCad, "c");

    DeviceConfig twice;
    std::string error;
    const std::string text = R"({"device_class": "controller", "pharoscope_config": {"channelMap": [1, 2]}})";
    ASSERT_TRUE(twice.Parse(error, text));
    ASSERT_TRUE(twice.Parse(error, text));
    EXPECT_EQ(twice.pharoscope_config.channelMap, (std::vector<int32_t>{1, 2, 1, 2}));
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
    {
        for (const char* value : values)
        {
            const std::string text = "{" + kDevice + R"(, "device_class": "controller", ")" + key + "\": " + value + "}";
            DeviceConfig config;
            std::string error;
            bool passed = false;
            EXPECT_NO_THROW(passed = config.Parse(error, text)) << text;
            if (!passed)
            {
                EXPECT_TRUE(error == "exception thrown in JSON library" ||
                            error == "missing values from \"device\" section")
                    << text << " -> " << error;
            }
        }
    }
}

} // namespace
} // namespace kelvorig
