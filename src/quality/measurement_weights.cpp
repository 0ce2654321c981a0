#include "quality/measurement_weights.h"

#include <Eigen/LU>

namespace kelvorig {

Eigen::MatrixXd MeasurementWeights()
{
    // (1.5e-5·π)² of noise per angle, (4e-6·π)² shared per axis.
    constexpr double kOwnNoise = 2.2206609902451057e-09;
    constexpr double kSharedNoise = 1.579136704174297e-10;

    Eigen::MatrixXd covariance(kMaxObservationRows, kMaxObservationRows);
    for (int i = 0; i < kMaxObservationRows; ++i)
    {
        for (int j = 0; j < kMaxObservationRows; ++j)
        {
            const double delta = i == j ? 1.0 : 0.0;
            const double sameAxis = (i % 2) == (j % 2) ? 1.0 : 0.0;
            covariance(i, j) = kOwnNoise * delta + kSharedNoise * sameAxis;
        }
    }
    return covariance.partialPivLu().inverse();
}

} // namespace kelvorig
