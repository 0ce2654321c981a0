#include "config/trackref_tool.h"

#include <cstdio>
#include <cstdlib>

namespace kelvorig {

// Placeholders until the IMU tool lands.
void TrackrefSample()
{
    std::fputs("/trackref_from_imu is not available yet\n", stderr);
    std::exit(1);
}

void TrackrefFromFile(const std::string&)
{
    TrackrefSample();
}

} // namespace kelvorig
