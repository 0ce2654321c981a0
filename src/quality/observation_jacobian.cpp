#include "quality/observation_jacobian.h"

#include "quality/dual_number.h"
#include "support/quaternion.h"

#include <array>

namespace kelvorig {
namespace {

// The rotation vector r (axis times angle) as a unit quaternion of dual numbers.
Quaternion<DualNumber> QuaternionFromRotationVector(const DualNumber& r0, const DualNumber& r1, const DualNumber& r2)
{
    const DualNumber squared = r0 * r0 + r1 * r1 + r2 * r2;
    if (squared.value > 0.0)
    {
        const DualNumber angle = sqrt(squared);
        const DualNumber half = angle / DualNumber(2.0);
        const DualNumber k = sin(half) / angle;
        return {cos(half), r0 * k, r1 * k, r2 * k};
    }
    // note: the small-angle form keeps the partials finite at the zero rotation.
    const DualNumber half(0.5);
    return {DualNumber(1.0), half * r0, half * r1, half * r2};
}

} // namespace

DualPose SeedDualPose(const double* pose)
{
    std::array<DualNumber, 6> parameters;
    for (int i = 0; i < 6; ++i)
        parameters[i] = DualNumber::Parameter(pose[i], i);
    return DualPose{{parameters[0], parameters[1], parameters[2]},
                    QuaternionFromRotationVector(parameters[3], parameters[4], parameters[5])};
}

bool BuildObservationJacobian(const SensorVisibility& visibility, const double* pose, int rows, double* residuals,
                              ObservationJacobian* jacobian)
{
    if (rows > kMaxObservationRows)
        return false;

    const DualPose seeded = SeedDualPose(pose);

    std::array<DualNumber, kMaxObservationRows> angles;
    int filled = 0;
    bool allObserved = true;
    for (size_t i = 0; i < visibility.observations.size(); ++i)
    {
        if (!visibility.visible[i])
            continue;
        if (filled + 2 > rows)
            return false;
        // A failed sensor clears the result, but the walk still goes to the end.
        if (!visibility.observations[i].ObserveAngles(seeded.rotation, seeded.translation, angles[filled],
                                                      angles[filled + 1]))
            allObserved = false;
        filled += 2;
    }
    if (!allObserved)
        return false;

    for (int row = 0; row < filled; ++row)
    {
        residuals[row] = angles[row].value;
        if (jacobian != nullptr)
        {
            for (int column = 0; column < 6; ++column)
                (*jacobian)(row, column) = angles[row].partials[column];
        }
    }
    return true;
}

} // namespace kelvorig
