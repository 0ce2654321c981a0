#pragma once

#include "support/status.h"

#include <json/value.h>

#include <string>

namespace kelvorig {

// The checks of a sensor layout's section as the file holds it ("channelMap", "modelPoints",
// "modelNormals"), before it is read into a model. Faults the reading has always let through
// (lists of different lengths, a missing or non-array channelMap, a repeated id) load as they
// always did, but each appends a "WARNING: " line naming `name` to `warnings`, so that an empty
// or doubled report is never a surprise. A point or normal that is not three finite numbers, or
// a normal of zero length, would make every sensor seen from everywhere or be written as null:
// it fails, naming the file and the entry.
Status CheckLayoutSection(const std::string& name, const Json::Value& section, std::string& warnings);

} // namespace kelvorig
