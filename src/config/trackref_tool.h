#pragma once

#include "support/status.h"

#include <ostream>
#include <string>

namespace kelvorig {

// /trackref_from_imu without a file: instructions and a sample file on `out`.
void TrackrefSample(std::ostream& out);

// /trackref_from_imu with a file: writes {"trackref_from_imu": [7 numbers]} on `out`.
// Fails, saying why, on an unreadable file or a zero axis; doubts about the axes are warned of
// on `warnings`.
Status TrackrefFromFile(const std::string& path, std::ostream& out, std::ostream& warnings);

// The same for a file's text already in memory; `name` stands for the file in messages.
Status TrackrefFromText(const std::string& name, const std::string& text, std::ostream& out, std::ostream& warnings);

} // namespace kelvorig
