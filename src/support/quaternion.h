#pragma once

#include "support/vector_math.h"

namespace kelvorig {

// A rotation as w, x, y, z, Hamilton convention. The one quaternion type of the code: files
// that store x, y, z, w convert at their edge.
template <typename Scalar>
struct Quaternion
{
    Scalar w;
    Scalar x;
    Scalar y;
    Scalar z;
};

// Hamilton product a * b (apply b first, then a).
template <typename Scalar>
Quaternion<Scalar> Multiply(const Quaternion<Scalar>& a, const Quaternion<Scalar>& b)
{
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
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
    return {v[0] + twoW * uv[0] + two * uuv[0], v[1] + twoW * uv[1] + two * uuv[1], v[2] + twoW * uv[2] + two * uuv[2]};
}

} // namespace kelvorig
