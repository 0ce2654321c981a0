#pragma once

#include <string>

namespace kelvorig {

// /trackref_from_imu without a file: instructions and a sample file on standard output.
void TrackrefSample();

// /trackref_from_imu with a file: prints {"trackref_from_imu": [7 numbers]}; ends the
// process with status 1 on an unreadable file or a zero axis.
void TrackrefFromFile(const std::string& path);

} // namespace kelvorig
