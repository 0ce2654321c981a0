#pragma once

#include "geometry/mesh_matrices.h"
#include "support/status.h"

#include <Eigen/Core>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace kelvorig {

struct RayHit
{
    int32_t primitiveId = -1; // row of the combined triangle list
    float hitU = 0.0f;
    float hitV = 0.0f;
    float hitDistance = 0.0f; // ray parameter at the hit
};

// Closest-hit ray queries over a triangle mesh, on Embree. Both faces of a triangle count.
// This class is the only code that sees Embree's API. intersectRay is safe to call from
// several threads at once once init has returned.
class EmbreeIntersector
{
public:
    EmbreeIntersector();
    ~EmbreeIntersector();
    EmbreeIntersector(const EmbreeIntersector&) = delete;
    EmbreeIntersector& operator=(const EmbreeIntersector&) = delete;

    // Builds, or rebuilds, the structure over V (n by 3) and the first three columns of F
    // (m by 3 or more, rows of V); primitive ids are rows of F. Leaves the object
    // uninitialised when either matrix is empty or too narrow. The first call of the process
    // starts Embree; a failure there or in the build fails, saying why, and leaves the object
    // uninitialised. note: Embree 3 names no structures, builders or traversers; its defaults
    // are the only ones used, so init takes no such names.
    Status init(const VertexMatrix& V, const TriangleMatrix& F);

    // True when a triangle lies along the ray with its parameter between tnear and tfar;
    // then `hit` is filled with the closest such triangle, otherwise left alone. The ray
    // parameter is in units of |direction|. Allocates nothing.
    bool intersectRay(const Eigen::Vector3f& origin, const Eigen::Vector3f& direction, RayHit& hit, float tnear = 0.0f,
                      float tfar = std::numeric_limits<float>::infinity()) const;

    bool isInitialised() const;

private:
    struct Scene;
    std::unique_ptr<Scene> scene;
};

} // namespace kelvorig
