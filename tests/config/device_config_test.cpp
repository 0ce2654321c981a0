#include "config/device_config.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

TEST(DeviceConfig, NewRecordIsAFormat0HmdWithIdentityPoses)
{
    const DeviceConfig config;
    EXPECT_EQ(config.device_class, 1);
    EXPECT_EQ(config.format, 0);
    EXPECT_EQ(config.trackref_from_imu, (PoseFloat{0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(config.trackref_from_head, (PoseFloat{0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(config.display_gc_prescale, 1.0f);
    EXPECT_EQ(config.gyro_scale, (TripleFloat{1, 1, 1}));
    EXPECT_EQ(config.acc_scale, (TripleFloat{1, 1, 1}));
    EXPECT_EQ(config.eyes[1].intrinsics, kIdentityMatrix3);
    EXPECT_EQ(config.tracked_camera.head_from_camera,
              (PoseFloat{-0.21644000709056854f, 0, 0, 0.9762960076332092f, 0, -0.03817800059914589f,
                         -0.07429400086402893f}));
    EXPECT_FALSE(config.pharoscope_config.valid);
}

TEST(DeviceConfig, ResetKeepsIdentityFieldsSecondEdidAndCadName)
{
    DeviceConfig config;
    config.type = "t";
    config.device_class = 2;
    config.format = 1;
    config.revision = 4;
    config.device_vid = 0x28de;
    config.device_pid = 0x2000;
    config.device_serial_number = "SN-1";
    config.render_model = "rm";
    config.manufacturer = "Maker";
    config.model_number = "M1";
    config.attached_device_id = "att";
    config.device.num_windows = 2;
    config.device.first_eye = 1;
    config.device.last_eye = 1;
    config.display_edid = {"left", "right"};
    config.display_gc_prescale = 3.0f;
    config.trackref_from_imu = {1, 0, 0, 0, 1, 2, 3};
    config.gyro_scale = {2, 2, 2};
    config.eyes[0].has_eye_to_head = true;
    config.eyes[0].distortion.type = 3;
    config.pharoscope_config.valid = true;
    config.pharoscope_config.modelCad = "shell.step";
    config.pharoscope_config.channelMap = {1};
    config.pharoscope_config.modelPoints = {Eigen::Vector3f(1, 2, 3)};
    config.pharoscope_config.modelNormals = {Eigen::Vector3f(0, 0, 1)};
    config.pharoscope_config.modelAngles = {0.5};
    config.tracked_camera.width = 640;
    config.tracked_camera.undist_width = 700;
    config.tracked_camera.distort.type = 2;
    config.tracked_camera.head_from_camera = {0, 0, 0, 1, 0, 0, 0};
    config.resource_root = "root";
    config.firmware_config = "{}\n";

    config.Reset();

    EXPECT_EQ(config.device_vid, 0x28deu);
    EXPECT_EQ(config.device_pid, 0x2000u);
    EXPECT_EQ(config.device_serial_number, "SN-1");
    EXPECT_EQ(config.manufacturer, "Maker");
    EXPECT_EQ(config.attached_device_id, "att");
    EXPECT_EQ(config.display_edid[0], "");
    EXPECT_EQ(config.display_edid[1], "right");
    EXPECT_EQ(config.pharoscope_config.modelCad, "shell.step");

    EXPECT_EQ(config.type, "");
    EXPECT_EQ(config.device_class, 1);
    EXPECT_EQ(config.format, 0);
    EXPECT_EQ(config.revision, 0u);
    EXPECT_EQ(config.render_model, "");
    EXPECT_EQ(config.model_number, "");
    EXPECT_EQ(config.device.num_windows, 0);
    EXPECT_EQ(config.device.last_eye, 0);
    EXPECT_EQ(config.display_gc_prescale, 1.0f);
    EXPECT_EQ(config.trackref_from_imu, kIdentityPoseFloat);
    EXPECT_EQ(config.gyro_scale, (TripleFloat{1, 1, 1}));
    EXPECT_FALSE(config.eyes[0].has_eye_to_head);
    EXPECT_EQ(config.eyes[0].distortion.type, 0);
    EXPECT_FALSE(config.pharoscope_config.valid);
    EXPECT_TRUE(config.pharoscope_config.channelMap.empty());
    EXPECT_TRUE(config.pharoscope_config.modelPoints.empty());
    EXPECT_TRUE(config.pharoscope_config.modelNormals.empty());
    EXPECT_TRUE(config.pharoscope_config.modelAngles.empty());
    EXPECT_EQ(config.tracked_camera.width, 0);
    EXPECT_EQ(config.tracked_camera.undist_width, 0);
    EXPECT_EQ(config.tracked_camera.distort.type, 0);
    EXPECT_EQ(config.tracked_camera.head_from_camera, TrackedCameraConfig::kDefaultHeadFromCamera);
    EXPECT_EQ(config.resource_root, "");
    EXPECT_EQ(config.firmware_config, "");
}

TEST(DeviceConfig, DeviceSectionNeedsPositiveSizesAndWindows)
{
    DeviceSection section;
    section.eye_target_width_in_pixels = 1080;
    section.eye_target_height_in_pixels = 1200;
    section.num_windows = 1;
    EXPECT_TRUE(section.IsDeviceSectionComplete());
    section.num_windows = 0;
    EXPECT_FALSE(section.IsDeviceSectionComplete());
    section.num_windows = 1;
    section.eye_target_height_in_pixels = -5;
    EXPECT_FALSE(section.IsDeviceSectionComplete());
}

TEST(DeviceConfig, DistortionTrivialityTest)
{
    DistortionModel none;
    EXPECT_TRUE(none.IsTrivial());
    none.coeffs[3] = 1.0;
    EXPECT_TRUE(none.IsTrivial());  // type 0 whatever the numbers

    DistortionModel tangent;
    tangent.type = 1;
    EXPECT_TRUE(tangent.IsTrivial());
    tangent.center_y = 0.1;
    EXPECT_FALSE(tangent.IsTrivial());
    tangent.center_y = 0.0;
    tangent.coeffs[7] = std::nan("");
    EXPECT_FALSE(tangent.IsTrivial());

    DistortionModel poly3;
    poly3.type = 4;
    EXPECT_FALSE(poly3.IsTrivial());
}

TEST(DeviceConfig, CameraIsWritableOnlyWithDistortionAndAllNonzeroNumbers)
{
    TrackedCameraConfig camera;
    camera.width = 640;
    camera.height = 480;
    camera.focal_x = 300;
    camera.focal_y = 300;
    camera.center_x = 320;
    camera.center_y = 240;
    EXPECT_FALSE(camera.IsWritable());
    camera.distort.type = 2;
    EXPECT_TRUE(camera.IsWritable());
    camera.center_y = 0;
    EXPECT_FALSE(camera.IsWritable());
}

} // namespace
} // namespace kelvorig
