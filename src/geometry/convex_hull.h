#pragma once

#include <Eigen/Core>

#include <optional>
#include <vector>

namespace kelvorig {

// The convex hull of a point set as its facet planes, for one question: how far a ray from a
// point inside runs before it leaves the hull.
class ConvexHull
{
public:
    // The hull of `points` (n by 3, any unit, non-finite rows skipped), computed by qhull with
    // joggled input so that flat point sets still give a (thin) hull. Nothing when fewer than
    // four finite points remain or qhull fails.
    static std::optional<ConvexHull> Build(const std::vector<Eigen::Vector3d>& points);

    // Distance along the unit `direction` from `position` to where the ray leaves the hull: 0
    // for a point on or outside the hull's face it looks out of, infinity when it never leaves
    // (a direction that isn't a number).
    double ExitDistance(const Eigen::Vector3d& position, const Eigen::Vector3d& direction) const;

    size_t PlaneCount() const { return normals_.size(); }

private:
    std::vector<Eigen::Vector3d> normals_; // outward, unit length
    std::vector<double> offsets_;          // a point x lies inside when normal . x + offset <= 0
};

} // namespace kelvorig
