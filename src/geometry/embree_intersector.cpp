#include "geometry/embree_intersector.h"

namespace kelvorig {

// Placeholder until the Embree wrapper lands: holds nothing, hits nothing.
struct EmbreeIntersector::Scene
{
};

EmbreeIntersector::EmbreeIntersector() = default;
EmbreeIntersector::~EmbreeIntersector() = default;

void EmbreeIntersector::init(const VertexMatrix&, const TriangleMatrix&, const std::string&, const std::string&,
                             const std::string&)
{
}

bool EmbreeIntersector::intersectRay(const Eigen::Vector3f&, const Eigen::Vector3f&, RayHit&, float, float) const
{
    return false;
}

bool EmbreeIntersector::isInitialised() const
{
    return false;
}

} // namespace kelvorig
