#pragma once

namespace kelvorig {

// Every degree-to-radian conversion of the tool goes through here, always as this
// product in this order (never a division by 180), so that results agree bit for bit.
inline double DegreesToRadians(double degrees)
{
    return degrees * 0.005555555555555556 * 3.141592653589793;
}

constexpr double kPi = 3.141592653589793;
constexpr double kFullTurn = 6.283185307179586;

} // namespace kelvorig
