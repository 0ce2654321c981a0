#pragma once

#include "quality/observation_jacobian.h"

#include <Eigen/Core>

namespace kelvorig {

using Vector6d = Eigen::Matrix<double, 6, 1>;

// The diagonal of C = H⁻¹, H = Jᵀ·B·J, with J the rows by 6 `jacobian` and B the top-left
// rows by rows block of `weights`: variances of tx, ty, tz (m²) and rx, ry, rz (rad²).
// H is inverted by LU with partial pivoting and never tested for singularity, so the
// result may hold infinities or NaN. Allocates nothing.
Vector6d PoseCovarianceDiagonal(const ObservationJacobian& jacobian, const Eigen::MatrixXd& weights);

} // namespace kelvorig
