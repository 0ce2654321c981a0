#include "config/tracked_camera_config.h"

namespace kelvorig {
namespace {

// Half the growth of the undistorted image, taken as a signed 32-bit difference.
double HalfGrowth(int32_t undistorted, int32_t plain)
{
    const int32_t growth = static_cast<int32_t>(static_cast<uint32_t>(undistorted) - static_cast<uint32_t>(plain));
    return static_cast<double>(growth) * 0.5;
}

} // namespace

bool TrackedCameraConfig::IsWritable() const
{
    return !distort.IsTrivial() && width != 0 && height != 0 && focal_x != 0.0 && center_x != 0.0 && focal_y != 0.0 &&
           center_y != 0.0;
}

void TrackedCameraConfig::ReadIntrinsics(const Json::Value& intrinsics)
{
    interface = intrinsics.get("interface", "").asString();
    width = intrinsics.get("width", 0).asInt();
    height = intrinsics.get("height", 0).asInt();
    undist_width = intrinsics.get("undist_width", 0).asInt();
    undist_height = intrinsics.get("undist_height", 0).asInt();
    focal_x = intrinsics.get("focal_x", 0.0).asDouble();
    center_x = intrinsics.get("center_x", 0.0).asDouble();
    focal_y = intrinsics.get("focal_y", 0.0).asDouble();
    center_y = intrinsics.get("center_y", 0.0).asDouble();
    distort = DistortionModel::FromJson(intrinsics.get("distort", Json::Value()));
    if (undist_width == 0)
        undist_width = width;
    if (undist_height == 0)
        undist_height = height;
}

Json::Value TrackedCameraConfig::IntrinsicsToJson() const
{
    Json::Value object;
    object["interface"] = interface;
    object["width"] = width;
    object["height"] = height;
    object["focal_x"] = focal_x;
    object["center_x"] = center_x - HalfGrowth(undist_width, width);
    object["focal_y"] = focal_y;
    object["center_y"] = center_y - HalfGrowth(undist_height, height);
    object["distort"] = distort.ToJson();
    return object;
}

} // namespace kelvorig
