#include "config/pose_axes.h"

#include "support/angles.h"

#include <cmath>

namespace kelvorig {
namespace {

// Squared length summed y first, as every normalisation here does it.
double LengthOf(const Eigen::Vector3d& v)
{
    return std::sqrt(v.y() * v.y() + v.x() * v.x() + v.z() * v.z());
}

Eigen::Vector3d Rotated(const Quaternion<double>& q, const Eigen::Vector3d& v)
{
    const Triple<double> r = RotateByUnitQuaternion(q, Triple<double>{v.x(), v.y(), v.z()});
    return Eigen::Vector3d(r[0], r[1], r[2]);
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

Quaternion<double> ShortestArc(const Eigen::Vector3d& from, const Eigen::Vector3d& to)
{
    const double d = Dot(to, from);
    if (d >= 1.0)
        return {1, 0, 0, 0};
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
        return {std::cos(kHalfPi), axis.x() * s, axis.y() * s, axis.z() * s};
    }
    const Eigen::Vector3d c = Cross(from, to);
    const double w = 1.0 + d;
    const double inverse = 1.0 / std::sqrt(c.y() * c.y() + c.x() * c.x() + c.z() * c.z() + w * w);
    return {w * inverse, c.x() * inverse, c.y() * inverse, c.z() * inverse};
}

bool BuildPoseFromAxes(CalibrationPose* pose, const Eigen::Vector3d& position, const Eigen::Vector3d& plusX,
                       const Eigen::Vector3d& plusZ)
{
    Eigen::Vector3d a, b;
    if (!UnitOf(plusX, a) || !UnitOf(plusZ, b))
        return false;
    if (std::abs(Dot(b, a)) > kPerpendicularLimit)
        return false;

    // First take Z onto the reference Z, then turn about it to bring X onto the reference X.
    NormalizeVector(b);
    const Quaternion<double> toZ = ShortestArc(b, Eigen::Vector3d(0, 0, 1));
    Eigen::Vector3d flat = Rotated(toZ, a);
    flat.z() = 0.0;
    if (!NormalizeVector(flat))
        return false;
    NormalizeVector(flat);
    const Quaternion<double> toX = ShortestArc(flat, Eigen::Vector3d(1, 0, 0));

    // That rotation takes the given axes to the reference ones; its conjugate goes the
    // other way, which is the pose's rotation.
    const Quaternion<double> q = Multiply(toX, toZ);
    CalibrationPose result = {-q.x, -q.y, -q.z, q.w, position.x(), position.y(), position.z()};
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
                  const CalibrationPose& pose)
{
    const Quaternion<double> q = {pose[3], pose[0], pose[1], pose[2]};
    if (position != nullptr)
        *position = Eigen::Vector3d(pose[4], pose[5], pose[6]);
    if (plusX != nullptr)
        *plusX = Rotated(q, Eigen::Vector3d(1, 0, 0));
    if (plusZ != nullptr)
        *plusZ = Rotated(q, Eigen::Vector3d(0, 0, 1));
}

} // namespace kelvorig
