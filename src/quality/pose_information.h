#pragma once

#include <Eigen/Core>

#include <array>

namespace kelvorig {

using Matrix6d = Eigen::Matrix<double, 6, 6>;

// One sensor's two Jacobian rows at one pose: the partials of its first angle, then of its
// second, six each (tx, ty, tz, rx, ry, rz).
using SensorRows = std::array<double, 12>;

// Running totals of the rows of one pose's visible sensors: JᵀJ and the sums of the
// first-angle rows and of the second-angle rows. With weights w·I + v·P (P: 1 where two rows
// belong to the same angle), Jᵀ·W·J = w·JᵀJ + v·(sₑsₑᵀ + sₒsₒᵀ), so a sensor enters or
// leaves a pose by its own two rows alone.
struct PoseInformation
{
    std::array<double, 21> gram = {}; // JᵀJ, upper triangle row by row
    std::array<double, 6> firstSum = {};
    std::array<double, 6> secondSum = {};

    void Add(const SensorRows& rows);
    // `from` without `removed` and with `added` (either may be null), into this.
    void Update(const PoseInformation& from, const SensorRows* removed, const SensorRows* added);
    // w·JᵀJ + v·(sₑsₑᵀ + sₒsₒᵀ).
    Matrix6d Information(double ownWeight, double sharedWeight) const;
};

} // namespace kelvorig
