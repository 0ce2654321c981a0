#include "config/device_config.h"

#include "config/enum_tables.h"

#include <json/reader.h>

namespace kelvorig {
namespace {

const char* ClassName(int32_t deviceClass)
{
    switch (deviceClass)
    {
    case 1:
        return "hmd";
    case 2:
        return "controller";
    case 3:
        return "generic_tracker";
    default:
        return nullptr;
    }
}

Json::Value EyeToJson(const EyeCalibration& eye)
{
    Json::Value object;
    object["intrinsics"] = Matrix3ToJson(eye.intrinsics);
    object["distortion"] = eye.distortion.ToJson();
    object["distortion_red"] = eye.distortion_red.ToJson();
    object["distortion_blue"] = eye.distortion_blue.ToJson();
    object["undistort_r2_cutoff"] = static_cast<double>(eye.undistort_r2_cutoff);
    object["grow_for_undistort"] = static_cast<double>(eye.grow_for_undistort);
    if (eye.has_eye_to_head)
        object["eye_to_head"] = Matrix3ToJson(eye.eye_to_head);
    return object;
}

// Format 1 writes a pose as its position and the rotated unit X and Z.
void WriteAxes(Json::Value& object, const CalibrationPoseFloat& pose)
{
    Eigen::Vector3d position, plusX, plusZ;
    AxesFromPose(&position, &plusX, &plusZ, WidenPose(pose));
    object["position"] = TripleToJson(position);
    object["plus_x"] = TripleToJson(plusX);
    object["plus_z"] = TripleToJson(plusZ);
}

void SetIfNotEmpty(Json::Value& root, const char* key, const std::string& text)
{
    if (!text.empty())
        root[key] = text;
}

void SetIfNotZero(Json::Value& root, const char* key, uint32_t value)
{
    if (value != 0)
        root[key] = value;
}

void SetIfNotZero(Json::Value& root, const char* key, float value)
{
    if (value != 0.0f)
        root[key] = static_cast<double>(value);
}

} // namespace

Json::Value DeviceConfig::ToJson() const
{
    Json::Value root;
    root["revision"] = revision;
    root["type"] = type;
    if (const char* name = ClassName(device_class))
        root["device_class"] = name;
    root["device_vid"] = device_vid;
    root["device_pid"] = device_pid;
    root["device_serial_number"] = device_serial_number;
    root["render_model"] = render_model;
    SetIfNotEmpty(root, "manufacturer", manufacturer);
    SetIfNotEmpty(root, "model_number", model_number);
    SetIfNotEmpty(root, "attached_device_id", attached_device_id);
    if (device_class == 1)
        WriteDisplayBlock(root);
    SetIfNotEmpty(root, "tracking_camera_intrinsics", tracking_camera_intrinsics);
    SetIfNotZero(root, "tracking_camera_unique_id", tracking_camera_unique_id);
    WriteImuAndHead(root);
    if (pharoscope_config.valid)
        root["pharoscope_config"] = pharoscope_config.ModelToJson();
    if (tracked_camera.IsWritable())
    {
        root["tracked_camera"]["intrinsics"] = tracked_camera.IntrinsicsToJson();
        root["tracked_camera"]["head_from_camera"] = PoseToJson(tracked_camera.head_from_camera);
    }
    root["tracked_controller_role"] = tracked_controller_role;
    root["resource_root"] = resource_root;
    if (!firmware_config.empty())
    {
        // Text that no longer parses is left out without a word.
        Json::Value firmware;
        if (Json::Reader().parse(firmware_config, firmware))
            root["firmware_config"] = firmware;
    }
    return root;
}

// Written for an hmd only, though the reader takes these keys for every class.
void DeviceConfig::WriteDisplayBlock(Json::Value& root) const
{
    Json::Value& section = root["device"];
    section["eye_target_width_in_pixels"] = device.eye_target_width_in_pixels;
    section["eye_target_height_in_pixels"] = device.eye_target_height_in_pixels;
    section["num_windows"] = device.num_windows;
    section["first_eye"] = NameOfValue(EyeEnumTable(), device.first_eye);
    section["last_eye"] = NameOfValue(EyeEnumTable(), device.last_eye);

    const int first = FirstEyeInUse();
    for (int eye = first; eye <= LastEyeInUse(); ++eye)
        root["display_edid"][static_cast<Json::ArrayIndex>(eye - first)] = display_edid[eye];

    if (display_mc_type != 0)
    {
        Json::Value& mc = root["display_mc"];
        mc["type"] = display_mc_type;
        mc["offset"] = static_cast<double>(display_mc_offset);
        mc["scale"] = static_cast<double>(display_mc_scale);
        mc["left"] = display_mc_left;
        mc["right"] = display_mc_right;
    }

    // note: "prescale" goes with the rest when the type is 0; its default of 1 comes back
    // on reading.
    Json::Value gc(Json::objectValue);
    SetIfNotZero(gc, "black_clamp", display_gc_black_clamp);
    if (display_gc_type != 0)
    {
        gc["type"] = display_gc_type;
        gc["offset"] = static_cast<double>(display_gc_offset);
        gc["scale"] = static_cast<double>(display_gc_scale);
        gc["prescale"] = static_cast<double>(display_gc_prescale);
        gc["image"] = display_gc_image;
    }
    if (!gc.empty())
        root["display_gc"] = gc;

    for (int eye = first; eye <= LastEyeInUse(); ++eye)
        root["tracking_to_eye_transform"][static_cast<Json::ArrayIndex>(eye - first)] = EyeToJson(eyes[eye]);

    SetIfNotZero(root, "direct_mode_edid_vid", direct_mode_edid_vid);
    SetIfNotZero(root, "direct_mode_edid_pid", direct_mode_edid_pid);
    SetIfNotZero(root, "seconds_from_vsync_to_photons", seconds_from_vsync_to_photons);
    SetIfNotZero(root, "seconds_from_photons_to_vblank", seconds_from_photons_to_vblank);
}

void DeviceConfig::WriteImuAndHead(Json::Value& root) const
{
    if (format == 1)
    {
        Json::Value& imu = root["imu"];
        imu["gyro_bias"] = TripleToJson(gyro_bias);
        imu["gyro_scale"] = TripleToJson(gyro_scale);
        imu["acc_bias"] = TripleToJson(acc_bias);
        imu["acc_scale"] = TripleToJson(acc_scale);
        WriteAxes(imu, trackref_from_imu);
        WriteAxes(root["head"], trackref_from_head);
        return;
    }
    root["trackref_from_imu"] = PoseToJson(trackref_from_imu);
    root["gyro_bias"] = TripleToJson(gyro_bias);
    root["gyro_scale"] = TripleToJson(gyro_scale);
    root["acc_bias"] = TripleToJson(acc_bias);
    root["acc_scale"] = TripleToJson(acc_scale);
    root["trackref_from_head"] = PoseToJson(trackref_from_head);
}

} // namespace kelvorig
