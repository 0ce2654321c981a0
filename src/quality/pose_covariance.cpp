#include "quality/pose_covariance.h"

#include <Eigen/LU>

namespace kelvorig {

Vector6d PoseCovarianceDiagonal(const ObservationJacobian& jacobian, const Eigen::MatrixXd& weights)
{
    const Eigen::Index rows = jacobian.rows();
    const Eigen::Matrix<double, 6, Eigen::Dynamic, 0, 6, kMaxObservationRows> weighted =
        jacobian.transpose() * weights.topLeftCorner(rows, rows);
    const Eigen::Matrix<double, 6, 6> information = weighted * jacobian;
    const Eigen::Matrix<double, 6, 6> covariance = information.partialPivLu().inverse();
    return covariance.diagonal();
}

} // namespace kelvorig
