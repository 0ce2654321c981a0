#include "config/device_config.h"

#include <algorithm>

namespace kelvorig {

bool DeviceSection::IsDeviceSectionComplete() const
{
    return eye_target_width_in_pixels >= 1 && eye_target_height_in_pixels >= 1 && num_windows >= 1;
}

DeviceConfig::DeviceConfig()
{
    Reset();
}

// note: the identity fields are kept on purpose, so a record whose parse failed still
// tells whose file it was.
void DeviceConfig::Reset()
{
    type.clear();
    device_class = 1;
    format = 0;
    revision = 0;
    render_model.clear();
    model_number.clear();
    device = DeviceSection();
    eyes.fill(EyeCalibration());
    tracking_camera_intrinsics.clear();
    tracking_camera_unique_id = 0;
    // The device was zeroed above, so only the first eye's text is in use here.
    display_edid[0].clear();
    direct_mode_edid_vid = 0;
    direct_mode_edid_pid = 0;
    seconds_from_vsync_to_photons = 0.0f;
    seconds_from_photons_to_vblank = 0.0f;
    display_mc_type = 0;
    display_mc_offset = 0.0f;
    display_mc_scale = 0.0f;
    display_mc_left.clear();
    display_mc_right.clear();
    display_gc_black_clamp = 0.0f;
    display_gc_type = 0;
    display_gc_offset = 0.0f;
    display_gc_scale = 0.0f;
    display_gc_prescale = 1.0f;
    display_gc_image.clear();
    ResetImuAndHead();
    // The CAD name of the sensor model stays.
    pharoscope_config.valid = false;
    pharoscope_config.channelMap.clear();
    pharoscope_config.modelPoints.clear();
    pharoscope_config.modelNormals.clear();
    pharoscope_config.modelAngles.clear();
    tracked_camera.ReadIntrinsics(Json::Value());
    tracked_camera.head_from_camera = TrackedCameraConfig::kDefaultHeadFromCamera;
    tracked_controller_role.clear();
    resource_root.clear();
    firmware_config.clear();
}

int DeviceConfig::FirstEyeInUse() const
{
    return std::max(device.first_eye, 0);
}

// note: "eNUM_EYES" is a name of the eye table too; as a last eye it would run past the
// two eyes there are, so the range stops at the right eye.
int DeviceConfig::LastEyeInUse() const
{
    return std::min(device.last_eye, kEyeCount - 1);
}

void DeviceConfig::ResetImuAndHead()
{
    trackref_from_imu = kIdentityCalibrationPoseFloat;
    trackref_from_head = kIdentityCalibrationPoseFloat;
    gyro_bias = {0, 0, 0};
    gyro_scale = {1, 1, 1};
    acc_bias = {0, 0, 0};
    acc_scale = {1, 1, 1};
}

} // namespace kelvorig
