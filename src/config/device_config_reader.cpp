#include "config/device_config.h"

#include "config/enum_tables.h"
#include "support/text_case.h"

#include <json/reader.h>
#include <json/writer.h>

namespace kelvorig {
namespace {

uint32_t ReadUnsigned(const Json::Value& object, const char* key)
{
    return object.get(key, 0u).asUInt();
}

std::string ReadText(const Json::Value& object, const char* key)
{
    return object.get(key, "").asString();
}

Json::Value ReadMember(const Json::Value& object, const char* key)
{
    return object.get(key, Json::Value());
}

// The four IMU calibration triples; a missing one reads as zeros, scales included.
void ReadImuCalibration(const Json::Value& object, TripleFloat& gyroBias, TripleFloat& gyroScale, TripleFloat& accBias,
                        TripleFloat& accScale)
{
    gyroBias = ReadTripleFloat(ReadMember(object, "gyro_bias"));
    gyroScale = ReadTripleFloat(ReadMember(object, "gyro_scale"));
    accBias = ReadTripleFloat(ReadMember(object, "acc_bias"));
    accScale = ReadTripleFloat(ReadMember(object, "acc_scale"));
}

bool HasAxes(const Json::Value& object)
{
    return object.isMember("position") || object.isMember("plus_x") || object.isMember("plus_z");
}

// A pose given as a position and two axes. Axes that make no rotation give the identity,
// without a word.
CalibrationPoseFloat PoseFromAxes(const Json::Value& object)
{
    const Eigen::Vector3d position = ReadTripleDouble(ReadMember(object, "position"));
    const Eigen::Vector3d plusX = ReadTripleDouble(ReadMember(object, "plus_x"));
    const Eigen::Vector3d plusZ = ReadTripleDouble(ReadMember(object, "plus_z"));
    CalibrationPose pose;
    if (!BuildPoseFromAxes(&pose, position, plusX, plusZ))
        return kIdentityCalibrationPoseFloat;
    return NarrowPose(pose);
}

} // namespace

bool DeviceConfig::Parse(std::string& error, const std::string& text)
{
    error.clear();
    if (text.empty())
    {
        error = "configuration string is empty";
        return false;
    }
    // The JSON library reports a value of the wrong type by throwing; this is the one
    // place that catches it.
    try
    {
        Json::Value root;
        Json::Reader reader;
        if (!reader.parse(text, root, true))
        {
            error = reader.getFormattedErrorMessages();
            return false;
        }
        ReadJson(root);
    }
    catch (...)
    {
        Reset();
        error = "exception thrown in JSON library";
        return false;
    }
    if (device_class == 1 && !device.IsDeviceSectionComplete())
    {
        Reset();
        error = "missing values from \"device\" section";
        return false;
    }
    return true;
}

void DeviceConfig::ReadJson(const Json::Value& root)
{
    revision = ReadUnsigned(root, "revision");
    type = ReadText(root, "type");

    // An unknown or missing class leaves the field alone, so a fresh record is an hmd.
    const std::string deviceClass = ToLowerCopy(ReadText(root, "device_class"));
    if (deviceClass == "hmd")
        device_class = 1;
    else if (deviceClass == "controller")
        device_class = 2;
    else if (deviceClass == "generic_tracker")
        device_class = 3;

    device_vid = ReadUnsigned(root, "device_vid");
    device_pid = ReadUnsigned(root, "device_pid");
    device_serial_number = ReadText(root, "device_serial_number");
    render_model = ReadText(root, "render_model");
    manufacturer = ReadText(root, "manufacturer");
    model_number = ReadText(root, "model_number");
    attached_device_id = ReadText(root, "attached_device_id");
    direct_mode_edid_vid = ReadUnsigned(root, "direct_mode_edid_vid");
    direct_mode_edid_pid = ReadUnsigned(root, "direct_mode_edid_pid");
    seconds_from_vsync_to_photons = ReadFloat(root, "seconds_from_vsync_to_photons", 0.0);
    seconds_from_photons_to_vblank = ReadFloat(root, "seconds_from_photons_to_vblank", 0.0);
    ReadDeviceSection(ReadMember(root, "device"));
    ReadDisplayEdid(ReadMember(root, "display_edid"));
    ReadDisplayCorrections(ReadMember(root, "display_mc"), ReadMember(root, "display_gc"));
    tracking_camera_intrinsics = ReadText(root, "tracking_camera_intrinsics");
    tracking_camera_unique_id = ReadUnsigned(root, "tracking_camera_unique_id");
    ReadEyes(ReadMember(root, "tracking_to_eye_transform"));
    ReadImuAndHead(root);
    if (root.isMember("pharoscope_config"))
        pharoscope_config.ParseModelSection(root);
    ReadTrackedCamera(ReadMember(root, "tracked_camera"));
    tracked_controller_role = ReadText(root, "tracked_controller_role");
    resource_root = ToLowerCopy(ReadText(root, "resource_root"));
    if (root.isMember("firmware_config"))
        firmware_config = Json::FastWriter().write(root["firmware_config"]);
}

void DeviceConfig::ReadDeviceSection(const Json::Value& section)
{
    device.eye_target_width_in_pixels = section.get("eye_target_width_in_pixels", 0).asInt();
    device.eye_target_height_in_pixels = section.get("eye_target_height_in_pixels", 0).asInt();
    device.num_windows = section.get("num_windows", 0).asInt();
    device.first_eye = EyeFromName(section.get("first_eye", "eEYE_LEFT").asString().c_str());
    device.last_eye = EyeFromName(section.get("last_eye", "eEYE_LEFT").asString().c_str());
    device.nominal_rate = 90.0f;
}

// The array is numbered from the first eye in use, the texts by eye.
void DeviceConfig::ReadDisplayEdid(const Json::Value& texts)
{
    const int first = FirstEyeInUse();
    for (int eye = first; eye <= LastEyeInUse(); ++eye)
        display_edid[eye] = texts.get(static_cast<Json::ArrayIndex>(eye - first), "").asString();
    if (device.num_windows == 2)
    {
        if (display_edid[1].empty())
            display_edid[1] = display_edid[0];
    }
    else
    {
        display_edid[1].clear();
    }
}

void DeviceConfig::ReadDisplayCorrections(const Json::Value& mc, const Json::Value& gc)
{
    display_mc_type = mc.get("type", 0).asInt();
    display_mc_offset = ReadFloat(mc, "offset", 0.0);
    display_mc_scale = ReadFloat(mc, "scale", 0.0);
    display_mc_left = ReadText(mc, "left");
    display_mc_right = ReadText(mc, "right");

    display_gc_black_clamp = ReadFloat(gc, "black_clamp", 0.0);
    display_gc_type = gc.get("type", 0).asInt();
    display_gc_offset = ReadFloat(gc, "offset", 0.0);
    display_gc_scale = ReadFloat(gc, "scale", 0.0);
    display_gc_prescale = ReadFloat(gc, "prescale", 1.0);
    display_gc_image = ReadText(gc, "image");
}

void DeviceConfig::ReadEyes(const Json::Value& transforms)
{
    const int first = FirstEyeInUse();
    for (int index = first; index <= LastEyeInUse(); ++index)
    {
        const Json::Value object = transforms.get(static_cast<Json::ArrayIndex>(index - first), Json::Value());
        EyeCalibration& eye = eyes[index];
        eye.intrinsics = ReadMatrix3(ReadMember(object, "intrinsics"));
        eye.distortion = DistortionModel::FromJson(ReadMember(object, "distortion"));
        eye.distortion_red = DistortionModel::FromJson(ReadMember(object, "distortion_red"));
        eye.distortion_blue = DistortionModel::FromJson(ReadMember(object, "distortion_blue"));
        // One model given alone serves all three colours.
        if (!eye.distortion.IsTrivial())
        {
            if (eye.distortion_red.IsTrivial())
                eye.distortion_red = eye.distortion;
            if (eye.distortion_blue.IsTrivial())
                eye.distortion_blue = eye.distortion;
        }
        eye.undistort_r2_cutoff = ReadFloat(object, "undistort_r2_cutoff", 0.0);
        eye.grow_for_undistort = ReadFloat(object, "grow_for_undistort", 0.0);
        const Json::Value eyeToHead = ReadMember(object, "eye_to_head");
        eye.has_eye_to_head = !eyeToHead.isNull();
        eye.eye_to_head = eye.has_eye_to_head ? ReadMatrix3(eyeToHead) : kIdentityMatrix3;
    }
}

// note: "imu" and "head" objects (format 1) take precedence over the flat keys, and a
// file with either object ignores root-level IMU calibration.
void DeviceConfig::ReadImuAndHead(const Json::Value& root)
{
    ResetImuAndHead();
    format = 0;

    if (root.isMember("imu"))
    {
        format = 1;
        const Json::Value& imu = root["imu"];
        if (imu.isMember("gyro_bias"))
            ReadImuCalibration(imu, gyro_bias, gyro_scale, acc_bias, acc_scale);
        if (HasAxes(imu))
            trackref_from_imu = PoseFromAxes(imu);
    }
    else if (root.isMember("trackref_from_imu"))
    {
        trackref_from_imu = ReadPoseFloat(root["trackref_from_imu"]);
    }

    if (root.isMember("head"))
    {
        format = 1;
        const Json::Value& head = root["head"];
        if (HasAxes(head))
            trackref_from_head = PoseFromAxes(head);
    }
    else if (root.isMember("trackref_from_head"))
    {
        trackref_from_head = ReadPoseFloat(root["trackref_from_head"]);
    }

    if (format == 0 && root.isMember("gyro_bias"))
        ReadImuCalibration(root, gyro_bias, gyro_scale, acc_bias, acc_scale);
}

void DeviceConfig::ReadTrackedCamera(const Json::Value& camera)
{
    tracked_camera.ReadIntrinsics(ReadMember(camera, "intrinsics"));
    if (camera.isMember("head_from_camera"))
        tracked_camera.head_from_camera = ReadPoseFloat(camera["head_from_camera"]);
}

} // namespace kelvorig
