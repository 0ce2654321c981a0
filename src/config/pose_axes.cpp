#include "config/pose_axes.h"

#include <cmath>

namespace kelvorig {
namespace {

// Squared length summed y first, as every normalisation here does it.
double LengthOf(const Eigen::Vector3d& v)
{
    return std::sqrt(v.y() * v.y() + v.x() * v.x() + v.z() * v.z());
}

Eigen::Vector3d Cross(const Eigen::Vector3d& a, const Eigen::Vector3d& b)
{
    return Eigen::Vector3d(a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(),
                           a.x() * b.y() - a.y() * b.x());
}

double Dot(const Eigen::Vector3d& a, const Eigen::Vector3d& b)
{
    return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
}

// Hamilton product a * b (apply b first, then a).
Quaternion Multiply(const Quaternion& a, const Quaternion& b)
{
    const double ax = a[0], ay = a[1], az = a[2], aw = a[3];
    const double bx = b[0], by = b[1], bz = b[2], bw = b[3];
    return {aw * bx + ax * bw + ay * bz - az * by, aw * by - ax * bz + ay * bw + az * bx,
            aw * bz + ax * by - ay * bx + az * bw, aw * bw - ax * bx - ay * by - az * bz};
}

// Normalises `input` into `unit`; refuses a zero length and a result that is exactly zero
// (an input so small that the scaled vector underflows).
bool UnitOf(const Eigen::Vector3d& input, Eigen::Vector3d& unit)
{
    const double length = LengthOf(input);
    if (length == 0.0)
        return false;
    unit = input * (1.0 / length);
    return !(unit.x() == 0.0 && unit.y() == 0.0 && unit.z() == 0.0);
}

constexpr double kFloatEpsilon = 1.1920928955078125e-07;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kPerpendicularLimit = 0.001;
constexpr double kQuaternionCleanLimit = 1e-10;

} // namespace

bool NormalizeVector(Eigen::Vector3d& v)
{
    const double length = LengthOf(v);
    if (length == 0.0)
        return false;
    v *= 1.0 / length;
    return true;
}

Eigen::Vector3d RotateByQuaternion(const Quaternion& q, const Eigen::Vector3d& v)
{
    const Eigen::Vector3d axis(q[0], q[1], q[2]);
    const Eigen::Vector3d once = Cross(axis, v);
    const Eigen::Vector3d twice = Cross(axis, once);
    return v + (2.0 * q[3]) * once + 2.0 * twice;
}

Quaternion ShortestArc(const Eigen::Vector3d& from, const Eigen::Vector3d& to)
{
    const double d = Dot(to, from);
    if (d >= 1.0)
        return {0, 0, 0, 1};
    if (d < -1.0 + kFloatEpsilon)
    {
        // Opposite vectors: any axis perpendicular to `from` will do.
        Eigen::Vector3d axis = Cross(Eigen::Vector3d(1, 0, 0), from);
        if (axis.squaredNorm() < kFloatEpsilon)
            axis = Cross(Eigen::Vector3d(0, 1, 0), from);
        NormalizeVector(axis);
        NormalizeVector(axis);
        // note: cos(pi/2) in doubles is ~6e-17, not 0; BuildPoseFromAxes cleans it away.
        const double s = std::sin(kHalfPi);
        return {axis.x() * s, axis.y() * s, axis.z() * s, std::cos(kHalfPi)};
    }
    const Eigen::Vector3d c = Cross(from, to);
    const double w = 1.0 + d;
    const double inverse = 1.0 / std::sqrt(c.y() * c.y() + c.x() * c.x() + c.z() * c.z() + w * w);
    return {c.x() * inverse, c.y() * inverse, c.z() * inverse, w * inverse};
}

bool BuildPoseFromAxes(Pose* pose, const Eigen::Vector3d& position, const Eigen::Vector3d& plusX,
                       const Eigen::Vector3d& plusZ)
{
    Eigen::Vector3d a, b;
    if (!UnitOf(plusX, a) || !UnitOf(plusZ, b))
        return false;
    if (std::abs(Dot(b, a)) > kPerpendicularLimit)
        return false;

    // First take Z onto the reference Z, then turn about it to bring X onto the reference X.
    NormalizeVector(b);
    const Quaternion toZ = ShortestArc(b, Eigen::Vector3d(0, 0, 1));
    Eigen::Vector3d flat = RotateByQuaternion(toZ, a);
    flat.z() = 0.0;
    if (!NormalizeVector(flat))
        return false;
    NormalizeVector(flat);
    const Quaternion toX = ShortestArc(flat, Eigen::Vector3d(1, 0, 0));

    // That rotation takes the given axes to the reference ones; its conjugate goes the
    // other way, which is the pose's rotation.
    const Quaternion q = Multiply(toX, toZ);
    Pose result = {-q[0], -q[1], -q[2], q[3], position.x(), position.y(), position.z()};
    for (int k = 0; k < 4; ++k)
    {
        if (std::abs(result[k]) < kQuaternionCleanLimit)
            result[k] = 0.0;
    }
    if (pose != nullptr)
        *pose = result;
    return true;
}

void AxesFromPose(Eigen::Vector3d* position, Eigen::Vector3d* plusX, Eigen::Vector3d* plusZ,
                  const Pose& pose)
{
    const Quaternion q = {pose[0], pose[1], pose[2], pose[3]};
    if (position != nullptr)
        *position = Eigen::Vector3d(pose[4], pose[5], pose[6]);
    if (plusX != nullptr)
        *plusX = RotateByQuaternion(q, Eigen::Vector3d(1, 0, 0));
    if (plusZ != nullptr)
        *plusZ = RotateByQuaternion(q, Eigen::Vector3d(0, 0, 1));
}

} // namespace kelvorig
