#pragma once

#include <ostream>
#include <string>

namespace kelvorig {

// /trackref_from_imu without a file: instructions and a sample file on `out`.
void TrackrefSample(std::ostream& out);

// /trackref_from_imu with a file: writes {"trackref_from_imu": [7 numbers]} on `out`.
// Returns false, with a message on standard error, on an unreadable file or a zero axis.
bool TrackrefFromFile(const std::string& path, std::ostream& out);

// The same for a file's text already in memory; `name` stands for the file in messages.
bool TrackrefFromText(const std::string& name, const std::string& text, std::ostream& out);

} // namespace kelvorig
