#pragma once

#include "geometry/mesh_matrices.h"

#include <Eigen/Core>

#include <vector>

namespace kelvorig {

// A closed mesh marking a volume where no sensor may sit. It blocks no ray.
class KeepOutVolume
{
public:
    // V: vertex rows, metres; F: facets by 3 or more. The mesh must be closed; its winding's
    // orientation doesn't matter.
    KeepOutVolume(const VertexMatrix& V, const TriangleMatrix& F);

    // True when `point` (metres) lies inside: the mesh winds around it (generalised winding
    // number of one half or more in size), which holds for either orientation of the facets.
    bool Contains(const Eigen::Vector3f& point) const;

private:
    std::vector<Eigen::Vector3d> corners_; // 3 per facet
    Eigen::Vector3d low_;
    Eigen::Vector3d high_;
};

} // namespace kelvorig
