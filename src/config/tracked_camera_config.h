#pragma once

#include "config/calibration_values.h"
#include "config/distortion_model.h"

#include <json/value.h>

#include <cstdint>
#include <string>

namespace kelvorig {

// A camera attached to the device: its intrinsics (pixels) and its mounting.
struct TrackedCameraConfig
{
    std::string interface;
    int32_t width = 0;
    int32_t height = 0;
    int32_t undist_width = 0;
    int32_t undist_height = 0;
    double focal_x = 0.0;
    double center_x = 0.0;
    double focal_y = 0.0;
    double center_y = 0.0;
    DistortionModel distort;
    CalibrationPoseFloat head_from_camera = kDefaultHeadFromCamera;

    // The calibration of the one camera mounting known here, used until a file names another.
    static constexpr CalibrationPoseFloat kDefaultHeadFromCamera = {
        -0.21644000709056854f, 0.0f, 0.0f, 0.9762960076332092f, 0.0f, -0.03817800059914589f, -0.07429400086402893f};

    // Only a camera with a real distortion and nonzero sizes, focal lengths and centres is
    // written out.
    bool IsWritable() const;

    // Reads the "intrinsics" object (null: all zeros); zero undistorted sizes take the
    // plain ones. Leaves head_from_camera alone.
    void ReadIntrinsics(const Json::Value& intrinsics);

    // The "intrinsics" object. note: the undistorted sizes are not written; the centres
    // are shifted by half the difference instead.
    Json::Value IntrinsicsToJson() const;
};

} // namespace kelvorig
