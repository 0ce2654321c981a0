#include "geometry/keep_out_volume.h"

#include <Eigen/Geometry>

#include <cmath>
#include <limits>

namespace kelvorig {

KeepOutVolume::KeepOutVolume(const VertexMatrix& V, const TriangleMatrix& F)
    : low_(Eigen::Vector3d::Constant(std::numeric_limits<double>::infinity())),
      high_(Eigen::Vector3d::Constant(-std::numeric_limits<double>::infinity()))
{
    corners_.reserve(static_cast<size_t>(F.rows()) * 3);
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        for (int corner = 0; corner < 3; ++corner)
        {
            const Eigen::Vector3d p = V.row(F(facet, corner)).transpose().cast<double>();
            corners_.push_back(p);
            low_ = low_.cwiseMin(p);
            high_ = high_.cwiseMax(p);
        }
    }
}

bool KeepOutVolume::Contains(const Eigen::Vector3f& point) const
{
    const Eigen::Vector3d q = point.cast<double>();
    if ((q.array() < low_.array()).any() || (q.array() > high_.array()).any())
        return false;
    // Solid angle of each facet seen from q (Van Oosterom and Strackee); a closed mesh
    // subtends 4 pi around a point inside it and 0 around one outside.
    double solidAngle = 0.0;
    for (size_t i = 0; i + 2 < corners_.size(); i += 3)
    {
        const Eigen::Vector3d a = corners_[i] - q;
        const Eigen::Vector3d b = corners_[i + 1] - q;
        const Eigen::Vector3d c = corners_[i + 2] - q;
        const double la = a.norm(), lb = b.norm(), lc = c.norm();
        const double numerator = a.dot(b.cross(c));
        const double denominator = la * lb * lc + a.dot(b) * lc + b.dot(c) * la + c.dot(a) * lb;
        solidAngle += 2.0 * std::atan2(numerator, denominator);
    }
    constexpr double kFullSphere = 4.0 * 3.141592653589793;
    return std::abs(solidAngle) >= 0.5 * kFullSphere;
}

} // namespace kelvorig
