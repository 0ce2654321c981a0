#include "quality/sensor_visibility.h"

#include "geometry/tracked_surface.h"
#include "quality/sensor_index_lookup.h"
#include "support/quaternion.h"

#include <cmath>
#include <limits>

namespace kelvorig {
bool SensorRayTest::IsSensorVisible(const PoseVector& pose) const
{
    const Eigen::Vector3d& p = model->positions[sensorIndex];
    const Eigen::Vector3d& n = model->normals[sensorIndex];
    const Quaternion<double> q = {pose[3], pose[4], pose[5], pose[6]};

    const Triple<double> rotated = RotateByUnitQuaternion(q, Triple<double>{p.x(), p.y(), p.z()});
    const Triple<double> placed = {rotated[0] + pose[0], rotated[1] + pose[1], rotated[2] + pose[2]};
    const Triple<double> normal = RotateByUnitQuaternion(q, Triple<double>{n.x(), n.y(), n.z()});

    const double distance = std::sqrt(Dot(placed, placed));
    const Triple<double> view = {-placed[0] / distance, -placed[1] / distance, -placed[2] / distance};
    const double cosIncidence = Dot(normal, view);
    // note: a NaN cosine is not refused here; the ray decides.
    if (model->cosMaxIncidence >= cosIncidence)
        return false;
    if (surface == nullptr)
        return true;

    // Back into the object frame, so the mesh's structure never moves with the pose.
    const double inverseLength = 1.0 / std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    const Quaternion<double> conjugate = {q.w * inverseLength, -q.x * inverseLength, -q.y * inverseLength,
                                          -q.z * inverseLength};
    const Triple<double> direction = RotateByUnitQuaternion(conjugate, view);

    const Eigen::Vector3f origin(static_cast<float>(p.x() + kRayLift * n.x()),
                                 static_cast<float>(p.y() + kRayLift * n.y()),
                                 static_cast<float>(p.z() + kRayLift * n.z()));
    const Eigen::Vector3f towardBase(static_cast<float>(direction[0]), static_cast<float>(direction[1]),
                                     static_cast<float>(direction[2]));
    RayHit hit;
    return !surface->intersector().intersectRay(origin, towardBase, hit, kRayNear,
                                                std::numeric_limits<float>::infinity());
}

SensorVisibility::SensorVisibility(const SensorLayout& model, const TrackedSurface* occluders,
                                   const BaseStationModel& baseStation)
    : surface(occluders)
{
    const int32_t sweepModel = SweepModelForKind(baseStation.kind);
    for (const int32_t id : model.sensorIds)
    {
        const uint32_t index = static_cast<uint32_t>(SensorIndexOfId(model, id));
        observations.push_back(SensorObservation{&model, index, &baseStation, sweepModel});
        rayTests.push_back(SensorRayTest{&model, index, surface});
        visible.push_back(true);
        everSeen.push_back(false);
    }
}

void SensorVisibility::UpdateVisibility(const PoseVector& pose)
{
    for (size_t i = 0; i < rayTests.size(); ++i)
    {
        const bool seen = rayTests[i].IsSensorVisible(pose);
        visible[i] = seen;
        if (seen)
            everSeen[i] = true;
    }
}

size_t SensorVisibility::VisibleCount() const
{
    size_t count = 0;
    for (const bool seen : visible)
        count += seen ? 1 : 0;
    return count;
}

} // namespace kelvorig
