#include "quality/sensor_observation.h"

#include <cmath>

namespace kelvorig {
namespace {

constexpr double kSixthPi = 0.5235987755982988;   // π/6
constexpr double kThirdTurn = 2.0943951023931953; // 2π/3

} // namespace

bool SensorObservation::ObserveAngles(const Quaternion<DualNumber>& q, const Triple<DualNumber>& t, DualNumber& first,
                                      DualNumber& second) const
{
    const Eigen::Vector3d& p = model->positions[sensorIndex];
    const Triple<DualNumber> rotated = RotateByUnitQuaternion(q, Triple<double>{p.x(), p.y(), p.z()});
    const DualNumber x = rotated[0] + t[0];
    const DualNumber y = rotated[1] + t[1];
    const DualNumber z = rotated[2] + t[2];

    if (sweepModel == 1)
    {
        first = atan2(-z, x);
        second = atan2(-z, -y);
        return true;
    }
    if (sweepModel < 2 || sweepModel > 5)
        return false;

    const DualNumber a = atan2(-z, x);
    const DualNumber s = DualNumber(std::tan(baseStation->tiltRadians)) * y / sqrt(x * x + z * z);
    // note: a NaN s passes both comparisons and yields NaN angles, not a failure.
    if (s.value > 1.0 || s.value < -1.0)
        return false;
    const DualNumber b = asin(s);
    first = (DualNumber(kSixthPi) + a) - (-b);
    second = ((DualNumber(kSixthPi) + a) - b) + DualNumber(kThirdTurn);
    return true;
}

} // namespace kelvorig
