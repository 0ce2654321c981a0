#pragma once

#include "model/sensor_model.h"

#include <Eigen/Core>

#include <cmath>
#include <vector>

namespace kelvorig::test {

// An independent, plain double-precision model of what the base station measures, for
// checking the evaluator: rotation matrices from Eigen's angle-axis, Jacobians by central
// finite differences, weights from their closed form, inverses by Eigen's full-pivot LU.

// (tx, ty, tz) in metres, then the rotation vector.
using ReferencePose = Eigen::Matrix<double, 6, 1>;

Eigen::Matrix3d RotationOfVector(const Eigen::Vector3d& rotationVector);

// The two sweep angles of object-frame point p; `tilt` 0 selects the standard sweep.
Eigen::Vector2d ReferenceAngles(const ReferencePose& pose, const Eigen::Vector3d& p, double tilt);

// 2n by 6, rows in the order of `points`.
Eigen::MatrixXd ReferenceJacobian(const ReferencePose& pose, const std::vector<Eigen::Vector3d>& points, double tilt);

// Variances of tx, ty, tz, rx, ry, rz for these sensors seen at this pose; NaN when the
// sensors can't fix all six parameters.
Eigen::Matrix<double, 6, 1> ReferenceVariances(const ReferencePose& pose, const std::vector<Eigen::Vector3d>& points,
                                               double tilt = 0.0);

// What the reference model makes of `layout` turned by `rotation` and moved to `translation`:
// the sensors seen within the incidence limit and the variances of the six pose parameters
// (NaN when those sensors can't fix them or none is seen).
struct ReferenceView
{
    std::vector<int> ids;
    std::vector<Eigen::Vector3d> points;
    Eigen::Matrix<double, 6, 1> variances = Eigen::Matrix<double, 6, 1>::Constant(std::nan(""));
    bool borderline = false; // a sensor within 1e-9 of the limit, where rounding decides

    double PositionError() const { return std::sqrt(variances.head<3>().sum()); }
    double RotationError() const { return std::sqrt(variances.tail<3>().sum()); }
};

ReferenceView ReferenceViewOf(const SensorLayout& layout, const Eigen::Matrix3d& rotation,
                              const Eigen::Vector3d& translation);

// Unit direction (object frame) of a grid angle pair, and the pose that turns it onto +Z.
Eigen::Vector3d GridDirection(double yaw, double pitch);
Eigen::Matrix3d RotationOntoZ(const Eigen::Vector3d& direction);

// A layout of sensors with these ids, 0..n-1 when none are given.
SensorLayout MakeLayout(const std::vector<Eigen::Vector3f>& points, const std::vector<Eigen::Vector3f>& normals,
                        const std::vector<int32_t>& ids = {});

} // namespace kelvorig::test
