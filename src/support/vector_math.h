#pragma once

#include <array>

namespace kelvorig {

// Three numbers of one scalar type: a point or direction, or a rotation vector.
template <typename Scalar>
using Triple = std::array<Scalar, 3>;

// The products below take any three-element vector indexed by [] (a Triple, an
// Eigen::Vector3d) and keep one order of operations everywhere, so that the same inputs give
// the same bits in every caller.

// a · b, summed x, y, z in that order.
template <typename Vector>
auto Dot(const Vector& a, const Vector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// a × b.
template <typename Vector>
Vector Cross(const Vector& a, const Vector& b)
{
    return Vector{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

} // namespace kelvorig
