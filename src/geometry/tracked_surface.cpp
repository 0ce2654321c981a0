#include "geometry/tracked_surface.h"

namespace kelvorig {

// Placeholder until mesh loading lands: a surface that is never built.
TrackedSurface::TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths)
    : TrackedSurface(surfacePath, obstaclePaths, TimeAndProcessSeed())
{
}

TrackedSurface::TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths,
                               uint32_t)
    : surfacePath_(surfacePath), obstaclePaths_(obstaclePaths)
{
}

bool TrackedSurface::isBuilt() const { return false; }
const std::string& TrackedSurface::surfacePath() const { return surfacePath_; }
const std::vector<std::string>& TrackedSurface::obstaclePaths() const { return obstaclePaths_; }
double TrackedSurface::unitScale() const { return 1.0; }
const EmbreeIntersector& TrackedSurface::intersector() const { return intersector_; }
void TrackedSurface::SetMaxSurfaceAngle(double) {}
bool TrackedSurface::CanSeatSensor(const Eigen::Vector3f&, const Eigen::Vector3f&) const { return false; }
bool TrackedSurface::SampleSeat(Eigen::Vector3f&, Eigen::Vector3f&) { return true; }
bool TrackedSurface::SampleSeatNear(Eigen::Vector3f&, Eigen::Vector3f&, float) { return true; }
bool TrackedSurface::IsOnSensorSurface(const Eigen::Vector3f&, const Eigen::Vector3f&) const { return true; }

} // namespace kelvorig
