#pragma once

#include <cstdint>

namespace kelvorig {

// The sweep-geometry descriptor: kind 0 (standard) unless /srbtiltdegrees asks for 7.
struct BaseStationModel
{
    int32_t kind = 0;
    double tiltRadians = 0.5; // radians; read by the tilted sweep models only
};

// The kind that /srbtiltdegrees selects, with its tilt.
constexpr int32_t kTiltedBaseStationKind = 7;

// The sweep model (1 standard, 2 to 5 tilted) that a descriptor kind selects. The tilted
// models share one formula but keep their numbers apart.
inline int32_t SweepModelForKind(int32_t kind)
{
    switch (kind)
    {
    case 7:
    case 8:
        return 2;
    case 10:
        return 3;
    case 11:
        return 4;
    case 13:
        return 5;
    default:
        return 1;
    }
}

} // namespace kelvorig
