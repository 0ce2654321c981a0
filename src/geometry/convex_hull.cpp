#include "geometry/convex_hull.h"

extern "C" {
#include <libqhull_r/qhull_ra.h>
}

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace kelvorig {

std::optional<ConvexHull> ConvexHull::Build(const std::vector<Eigen::Vector3d>& points)
{
    std::vector<coordT> coordinates;
    coordinates.reserve(points.size() * 3);
    for (const Eigen::Vector3d& point : points)
    {
        if (point.allFinite())
            coordinates.insert(coordinates.end(), {point.x(), point.y(), point.z()});
    }
    const int count = static_cast<int>(coordinates.size() / 3);
    if (count < 4)
        return std::nullopt;

    // note: qhull's own messages would only repeat what our caller says; they go nowhere.
    FILE* quiet = std::fopen("/dev/null", "w");
    qhT state;
    qhT* qh = &state;
    qh_zero(qh, quiet);
    char options[] = "qhull QJ";
    const int failed = qh_new_qhull(qh, 3, count, coordinates.data(), False, options, nullptr, quiet);
    std::optional<ConvexHull> hull;
    if (!failed)
    {
        hull.emplace();
        facetT* facet;
        FORALLfacets
        {
            hull->normals_.emplace_back(facet->normal[0], facet->normal[1], facet->normal[2]);
            hull->offsets_.push_back(facet->offset);
        }
    }
    qh_freeqhull(qh, !qh_ALL);
    int longLeft = 0;
    int longTotal = 0;
    qh_memfreeshort(qh, &longLeft, &longTotal);
    if (quiet != nullptr)
        std::fclose(quiet);
    return hull;
}

double ConvexHull::ExitDistance(const Eigen::Vector3d& position, const Eigen::Vector3d& direction) const
{
    // Only planes the ray runs towards can let it out; the nearest of them does.
    double exit = std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < normals_.size(); ++i)
    {
        const double towards = normals_[i].dot(direction);
        if (towards > 0.0)
            exit = std::min(exit, -(normals_[i].dot(position) + offsets_[i]) / towards);
    }
    return std::max(exit, 0.0);
}

} // namespace kelvorig
