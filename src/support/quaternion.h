#pragma once

#include <array>

namespace kelvorig {

// Three numbers of one scalar type: a point or direction, or a rotation vector.
template <typename Scalar>
using Triple = std::array<Scalar, 3>;

// A rotation as w, x, y, z, Hamilton convention.
template <typename Scalar>
struct Quaternion
{
    Scalar w;
    Scalar x;
    Scalar y;
    Scalar z;
};

template <typename Scalar>
Triple<Scalar> Cross(const Triple<Scalar>& a, const Triple<Scalar>& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// R(q)·v = v + 2w(u × v) + 2u × (u × v), with u = (x, y, z). The form holds for a unit
// quaternion only and does not normalise q. `Vector` may be a plainer scalar than q's
// (object-frame coordinates enter the dual-number rotation as plain numbers).
template <typename Scalar, typename Vector>
Triple<Scalar> RotateByUnitQuaternion(const Quaternion<Scalar>& q, const Triple<Vector>& vector)
{
    const Triple<Scalar> v = {Scalar(vector[0]), Scalar(vector[1]), Scalar(vector[2])};
    const Triple<Scalar> u = {q.x, q.y, q.z};
    const Triple<Scalar> uv = Cross(u, v);
    const Triple<Scalar> uuv = Cross(u, uv);
    const Scalar two(2.0);
    const Scalar twoW = two * q.w;
    return {v[0] + twoW * uv[0] + two * uuv[0], v[1] + twoW * uv[1] + two * uuv[1],
            v[2] + twoW * uv[2] + two * uuv[2]};
}

} // namespace kelvorig
