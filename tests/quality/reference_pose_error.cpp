#include "quality/reference_pose_error.h"

#include <Eigen/Geometry>
#include <Eigen/LU>

#include <cmath>
#include <limits>
#include <numbers>

namespace kelvorig::test {

Eigen::Matrix3d RotationOfVector(const Eigen::Vector3d& rotationVector)
{
    const double angle = rotationVector.norm();
    if (angle == 0.0)
        return Eigen::Matrix3d::Identity();
    return Eigen::AngleAxisd(angle, rotationVector / angle).toRotationMatrix();
}

Eigen::Vector2d ReferenceAngles(const ReferencePose& pose, const Eigen::Vector3d& p, double tilt)
{
    const Eigen::Vector3d q = RotationOfVector(pose.tail<3>()) * p + pose.head<3>();
    const double sweep = std::atan2(-q.z(), q.x());
    if (tilt == 0.0)
        return {sweep, std::atan2(-q.z(), -q.y())};
    const double lift = std::asin(std::tan(tilt) * q.y() / std::hypot(q.x(), q.z()));
    const double sixth = std::numbers::pi / 6.0;
    return {sixth + sweep + lift, sixth + sweep - lift + 2.0 * std::numbers::pi / 3.0};
}

Eigen::MatrixXd ReferenceJacobian(const ReferencePose& pose, const std::vector<Eigen::Vector3d>& points, double tilt)
{
    constexpr double kStep = 1e-6;
    Eigen::MatrixXd jacobian(2 * points.size(), 6);
    for (int column = 0; column < 6; ++column)
    {
        ReferencePose ahead = pose, behind = pose;
        ahead[column] += kStep;
        behind[column] -= kStep;
        for (size_t k = 0; k < points.size(); ++k)
        {
            const Eigen::Vector2d slope =
                (ReferenceAngles(ahead, points[k], tilt) - ReferenceAngles(behind, points[k], tilt)) / (2.0 * kStep);
            jacobian(2 * k, column) = slope[0];
            jacobian(2 * k + 1, column) = slope[1];
        }
    }
    return jacobian;
}

Eigen::Matrix<double, 6, 1> ReferenceVariances(const ReferencePose& pose, const std::vector<Eigen::Vector3d>& points,
                                               double tilt)
{
    // Own noise A per angle, shared noise B per axis over 32 sensor slots:
    // W = (1/A)(I - B/(A + 32B)·P), P = 1 where the parities agree.
    const double own = std::pow(1.5e-5 * std::numbers::pi, 2);
    const double shared = std::pow(4e-6 * std::numbers::pi, 2);
    const Eigen::Index rows = static_cast<Eigen::Index>(2 * points.size());
    Eigen::MatrixXd weights(rows, rows);
    for (Eigen::Index i = 0; i < rows; ++i)
    {
        for (Eigen::Index j = 0; j < rows; ++j)
        {
            const double parity = (i % 2 == j % 2) ? 1.0 : 0.0;
            weights(i, j) = ((i == j ? 1.0 : 0.0) - shared / (own + 32.0 * shared) * parity) / own;
        }
    }
    const Eigen::MatrixXd jacobian = ReferenceJacobian(pose, points, tilt);
    const Eigen::Matrix<double, 6, 6> information = jacobian.transpose() * weights * jacobian;
    const Eigen::FullPivLU<Eigen::Matrix<double, 6, 6>> lu(information);
    if (!lu.isInvertible())
        return Eigen::Matrix<double, 6, 1>::Constant(std::numeric_limits<double>::quiet_NaN());
    return lu.inverse().diagonal();
}

ReferenceView ReferenceViewOf(const SensorLayout& layout, const Eigen::Matrix3d& rotation,
                              const Eigen::Vector3d& translation)
{
    ReferenceView view;
    for (size_t i = 0; i < layout.SensorCount(); ++i)
    {
        const double c =
            (rotation * layout.normals[i]).dot(-(rotation * layout.positions[i] + translation).normalized());
        view.borderline = view.borderline || std::abs(c - layout.cosMaxIncidence) < 1e-9;
        if (c > layout.cosMaxIncidence)
        {
            view.ids.push_back(layout.sensorIds[i]);
            view.points.push_back(layout.positions[i]);
        }
    }
    if (view.points.empty())
        return view;
    const Eigen::AngleAxisd turn(rotation);
    ReferencePose pose;
    pose << translation, turn.angle() * turn.axis();
    view.variances = ReferenceVariances(pose, view.points);
    return view;
}

Eigen::Vector3d GridDirection(double yaw, double pitch)
{
    return {std::sin(yaw) * std::cos(pitch), std::sin(pitch), std::cos(yaw) * std::cos(pitch)};
}

Eigen::Matrix3d RotationOntoZ(const Eigen::Vector3d& direction)
{
    return Eigen::Quaterniond::FromTwoVectors(direction, Eigen::Vector3d::UnitZ()).toRotationMatrix();
}

SensorLayout MakeLayout(const std::vector<Eigen::Vector3f>& points, const std::vector<Eigen::Vector3f>& normals,
                        const std::vector<int32_t>& ids)
{
    TrackedObjectModel model;
    model.valid = true;
    for (size_t i = 0; i < points.size(); ++i)
    {
        model.channelMap.push_back(ids.empty() ? static_cast<int32_t>(i) : ids[i]);
        model.modelPoints.push_back(points[i]);
        model.modelNormals.push_back(normals[i].normalized());
    }
    return SensorLayout(model, kIdentityTransform);
}

} // namespace kelvorig::test
