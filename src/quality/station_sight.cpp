#include "quality/station_sight.h"

#include "geometry/tracked_surface.h"
#include "quality/sensor_visibility.h"

#include <cmath>
#include <limits>

namespace kelvorig {
Eigen::Vector3d StationInObjectFrame(const PoseVector& pose)
{
    const double norm = std::sqrt(pose[3] * pose[3] + pose[4] * pose[4] + pose[5] * pose[5] + pose[6] * pose[6]);
    const double w = pose[3] / norm;
    const double x = pose[4] / norm;
    const double y = pose[5] / norm;
    const double z = pose[6] / norm;
    Eigen::Matrix3d rotation;
    rotation << 1.0 - 2.0 * (y * y + z * z), 2.0 * (x * y - w * z), 2.0 * (x * z + w * y), 2.0 * (x * y + w * z),
        1.0 - 2.0 * (x * x + z * z), 2.0 * (y * z - w * x), 2.0 * (x * z - w * y), 2.0 * (y * z + w * x),
        1.0 - 2.0 * (x * x + y * y);
    const Eigen::Vector3d translation(pose[0], pose[1], pose[2]);
    return -(rotation.transpose() * translation);
}

SensorSight::SensorSight(const SensorLayout& model, uint32_t sensorIndex, const TrackedSurface* surface)
    : position_(model.positions[sensorIndex]),
      normal_(model.normals[sensorIndex]),
      rayOrigin_(static_cast<float>(position_.x() + kRayLift * normal_.x()),
                 static_cast<float>(position_.y() + kRayLift * normal_.y()),
                 static_cast<float>(position_.z() + kRayLift * normal_.z())),
      cosMaxIncidence_(model.cosMaxIncidence),
      surface_(surface)
{
}

bool SensorSight::Sees(const Eigen::Vector3d& station) const
{
    const Eigen::Vector3d toStation = station - position_;
    const Eigen::Vector3d view = toStation / toStation.norm();
    // note: a NaN cosine is not refused here; the ray decides.
    if (cosMaxIncidence_ >= normal_.dot(view))
        return false;
    if (surface_ == nullptr)
        return true;
    RayHit hit;
    return !surface_->intersector().intersectRay(rayOrigin_, view.cast<float>(), hit, kRayNear,
                                                 std::numeric_limits<float>::infinity());
}

} // namespace kelvorig
