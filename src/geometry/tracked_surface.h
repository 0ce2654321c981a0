#pragma once

#include "geometry/embree_intersector.h"
#include "geometry/mesh_matrices.h"
#include "geometry/random_draws.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <vector>

namespace kelvorig {

// The device's shape: the sensor surface in metres (the only place sensors may sit), and
// ray queries against the sensor surface and all obstacles together.
class TrackedSurface
{
public:
    // Reads the meshes; the engine is seeded from time and process id.
    TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths);
    // Same, with a fixed seed for the engine's final reseeding (tests, benchmarks).
    TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths,
                   uint32_t seed);

    bool isBuilt() const;

    const std::string& surfacePath() const;
    const std::vector<std::string>& obstaclePaths() const;
    double unitScale() const;
    const EmbreeIntersector& intersector() const;

    // Seating and sampling. Positions and normals are metres, mesh frame, 32-bit floats.
    void SetMaxSurfaceAngle(double degrees);
    bool CanSeatSensor(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const;
    bool SampleSeat(Eigen::Vector3f& position, Eigen::Vector3f& normal);
    bool SampleSeatNear(Eigen::Vector3f& position, Eigen::Vector3f& normal, float limit);
    bool IsOnSensorSurface(const Eigen::Vector3f& position, const Eigen::Vector3f& normal) const;

private:
    std::string surfacePath_;
    std::vector<std::string> obstaclePaths_;
    EmbreeIntersector intersector_;
};

} // namespace kelvorig
