#include "quality/base_station_pose.h"

#include <cmath>

namespace kelvorig {
namespace {

using Matrix3 = std::array<Triple<double>, 3>;

// The largest of four candidates, so that the divisor is never small.
Quaternion<double> QuaternionFromMatrix(const Matrix3& m)
{
    const double trace = m[0][0] + m[1][1] + m[2][2];
    Quaternion<double> q;
    if (trace > 0.0)
    {
        const double r = 0.5 / std::sqrt(trace + 1.0);
        q = {0.25 / r, (m[2][1] - m[1][2]) * r, (m[0][2] - m[2][0]) * r, (m[1][0] - m[0][1]) * r};
    }
    else if (m[0][0] > m[1][1] && m[0][0] > m[2][2])
    {
        const double r = 0.5 / std::sqrt(m[0][0] + 1.0 - m[1][1] - m[2][2]);
        q = {(m[2][1] - m[1][2]) * r, 0.25 / r, (m[0][1] + m[1][0]) * r, (m[0][2] + m[2][0]) * r};
    }
    else if (m[1][1] > m[2][2])
    {
        const double r = 0.5 / std::sqrt(m[1][1] + 1.0 - m[0][0] - m[2][2]);
        q = {(m[0][2] - m[2][0]) * r, (m[0][1] + m[1][0]) * r, 0.25 / r, (m[1][2] + m[2][1]) * r};
    }
    else
    {
        const double r = 0.5 / std::sqrt(m[2][2] + 1.0 - m[0][0] - m[1][1]);
        q = {(m[1][0] - m[0][1]) * r, (m[0][2] + m[2][0]) * r, (m[1][2] + m[2][1]) * r, 0.25 / r};
    }
    return q;
}

} // namespace

BaseStationPose PoseTowardDirection(const Triple<double>& v)
{
    const Triple<double> up = {0.0, 0.0, 1.0};
    const Triple<double> axis = Cross(v, up);
    const double cosAngle = Dot(v, up);
    const double axisSquared = Dot(axis, axis);
    const double k = (1.0 - cosAngle) / axisSquared;

    // m = I + K + k·K², with K the skew matrix of the axis: Rodrigues without the angle.
    const double a = axis[0], b = axis[1], c = axis[2];
    const Matrix3 skew = {Triple<double>{0.0, -c, b}, Triple<double>{c, 0.0, -a}, Triple<double>{-b, a, 0.0}};
    Matrix3 m;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = 0; j < 3; ++j)
        {
            const double skewSquared = skew[i][0] * skew[0][j] + skew[i][1] * skew[1][j] + skew[i][2] * skew[2][j];
            const double identity = i == j ? 1.0 : 0.0;
            m[i][j] = identity + skew[i][j] + k * skewSquared;
        }
    }

    Quaternion<double> q = QuaternionFromMatrix(m);
    if (q.w < 0.0)
        q = {-q.w, -q.x, -q.y, -q.z};

    BaseStationPose pose;
    pose.quaternion = q;
    pose.rotationVector = RotationVectorFromQuaternion(q);
    pose.direction = v;
    return pose;
}

Triple<double> RotationVectorFromQuaternion(const Quaternion<double>& q)
{
    const double squared = q.x * q.x + q.y * q.y + q.z * q.z;
    if (squared > 0.0)
    {
        const double s = std::sqrt(squared);
        // The shorter way round; s itself stays the divisor.
        const double angle = q.w < 0.0 ? std::atan2(-s, -q.w) : std::atan2(s, q.w);
        const double k = 2.0 * angle / s;
        return {q.x * k, q.y * k, q.z * k};
    }
    return {2.0 * q.x, 2.0 * q.y, 2.0 * q.z};
}

} // namespace kelvorig
