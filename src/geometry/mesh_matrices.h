#pragma once

#include <Eigen/Core>

#include <cstdint>

namespace kelvorig {

// n by 3, 32-bit floats, one row per vertex (file unit until scaled, then metres).
using VertexMatrix = Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic>;
// one row per facet, one column per facet vertex (3 in a well-formed file): vertex rows.
using TriangleMatrix = Eigen::Matrix<int32_t, Eigen::Dynamic, Eigen::Dynamic>;
// one row per facet, 3 columns: the normal as the file states it.
using NormalMatrix = Eigen::Matrix<float, Eigen::Dynamic, Eigen::Dynamic>;

} // namespace kelvorig
