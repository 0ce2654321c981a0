#pragma once

#include <Eigen/Core>

namespace kelvorig {

// Rows of the observation Jacobian: two angles for each of at most 32 visible sensors.
constexpr int kMaxObservationRows = 64;

// The 64 by 64 inverse noise covariance of the sweep angles (1/rad²): each angle has noise
// of its own, plus a part shared by all angles of the same axis (rows of one parity).
// Callers take its top-left rows by rows block; note: that block is not the inverse of the
// covariance's own block, since the shared noise is modelled over all 32 sensor slots.
Eigen::MatrixXd MeasurementWeights();

} // namespace kelvorig
