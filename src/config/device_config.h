#pragma once

#include "config/calibration_values.h"
#include "config/distortion_model.h"
#include "config/tracked_camera_config.h"
#include "model/sensor_model.h"

#include <json/value.h>

#include <array>
#include <cstdint>
#include <string>

namespace kelvorig {

// Display geometry of a head-mounted device, key "device".
struct DeviceSection
{
    int32_t eye_target_width_in_pixels = 0;
    int32_t eye_target_height_in_pixels = 0;
    int32_t num_windows = 0;   // 2 pairs the two display_edid texts
    float nominal_rate = 0.0f; // no key: 90 after reading, read by nothing
    int32_t first_eye = 0;     // eye enumerator of the first eye in use
    int32_t last_eye = 0;      // eye enumerator of the last eye in use

    // Width, height and window count all at least 1.
    bool IsDeviceSectionComplete() const;
};

// One element of "tracking_to_eye_transform".
struct EyeCalibration
{
    Matrix3Float intrinsics = kIdentityMatrix3;
    Matrix3Float eye_to_head = kIdentityMatrix3;
    DistortionModel distortion;
    DistortionModel distortion_red;
    DistortionModel distortion_blue;
    float undistort_r2_cutoff = 0.0f;
    float grow_for_undistort = 0.0f;
    bool has_eye_to_head = false; // the file held "eye_to_head"
};

// The whole calibration and identity record of one tracked device, as a device file holds
// it. Most fields are only carried through from reading to writing.
class DeviceConfig
{
public:
    static constexpr int kEyeCount = 2;

    std::string type;
    int32_t device_class = 1; // 1 hmd, 2 controller, 3 generic tracker
    int32_t format = 0;       // 0 flat, 1 with "imu" and "head" objects
    uint32_t revision = 0;
    uint32_t device_vid = 0;
    uint32_t device_pid = 0;
    std::string device_serial_number;
    std::string render_model;
    std::string manufacturer;
    std::string model_number;
    std::string attached_device_id;
    DeviceSection device;
    std::array<EyeCalibration, kEyeCount> eyes; // key "tracking_to_eye_transform"
    std::string tracking_camera_intrinsics;
    uint32_t tracking_camera_unique_id = 0;
    std::array<std::string, kEyeCount> display_edid; // by eye
    uint32_t direct_mode_edid_vid = 0;
    uint32_t direct_mode_edid_pid = 0;
    float seconds_from_vsync_to_photons = 0.0f;
    float seconds_from_photons_to_vblank = 0.0f;
    int32_t display_mc_type = 0;
    float display_mc_offset = 0.0f;
    float display_mc_scale = 0.0f;
    std::string display_mc_left;
    std::string display_mc_right;
    float display_gc_black_clamp = 0.0f;
    int32_t display_gc_type = 0;
    float display_gc_offset = 0.0f;
    float display_gc_scale = 0.0f;
    float display_gc_prescale = 1.0f;
    std::string display_gc_image;
    CalibrationPoseFloat trackref_from_imu = kIdentityCalibrationPoseFloat;
    CalibrationPoseFloat trackref_from_head = kIdentityCalibrationPoseFloat;
    TripleFloat gyro_bias = {0, 0, 0};
    TripleFloat gyro_scale = {1, 1, 1};
    TripleFloat acc_bias = {0, 0, 0};
    TripleFloat acc_scale = {1, 1, 1};
    TrackedObjectModel pharoscope_config;
    TrackedCameraConfig tracked_camera;
    std::string tracked_controller_role;
    std::string resource_root;   // lower case
    std::string firmware_config; // compact JSON text ending in a line feed

    DeviceConfig();

    // Back to the defaults, except device_vid, device_pid, device_serial_number,
    // manufacturer, attached_device_id, the second display_edid text and
    // pharoscope_config's modelCad, which are kept.
    void Reset();

    // Clears `error`; on false it holds the reason. Reads over the present values without
    // resetting first (the sensor model lists are appended to); resets on a JSON type
    // error and on an hmd without a complete "device" section.
    bool Parse(std::string& error, const std::string& text);

    // The record in the JSON format that `format` names.
    Json::Value ToJson() const;

private:
    // Key-by-key reader; throws Json::Exception on a value of the wrong type.
    void ReadJson(const Json::Value& root);
    void ReadDeviceSection(const Json::Value& section);
    void ReadDisplayEdid(const Json::Value& texts);
    void ReadDisplayCorrections(const Json::Value& mc, const Json::Value& gc);
    void ReadEyes(const Json::Value& transforms);
    void ReadImuAndHead(const Json::Value& root);
    // Identity poses, zero biases and unit scales.
    void ResetImuAndHead();
    void ReadTrackedCamera(const Json::Value& camera);

    void WriteDisplayBlock(Json::Value& root) const;
    void WriteImuAndHead(Json::Value& root) const;

    // The eye indices of the eyes in use, limited to the two eyes there are.
    int FirstEyeInUse() const;
    int LastEyeInUse() const;
};

} // namespace kelvorig
