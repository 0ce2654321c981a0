#pragma once

namespace kelvorig {

// Every degree-to-radian conversion of the tool goes through here, always as this
// product in this order (never a division by 180), so that results agree bit for bit.
inline double DegreesToRadians(double degrees)
{
    return degrees * 0.005555555555555556 * 3.141592653589793;
}

constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kFullTurn = 6.283185307179586;
constexpr double kDegreesPerRadian = 180.0 / kPi; // for what is shown to people, never for the scores

// Lengths are metres inside the tool and millimetres where people read or give them.
constexpr double kMillimetresPerMetre = 1000.0;
constexpr double kMetresPerMillimetre = 0.001;

} // namespace kelvorig
