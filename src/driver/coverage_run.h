#pragma once

#include "driver/command_options.h"
#include "geometry/tracked_surface.h"

namespace kelvorig {

// /verifycoverage: draws that many random seats and writes them as an OpenSCAD file.
// Returns the exit status.
int RunCoverage(const CommandOptions& options, TrackedSurface& surface);

} // namespace kelvorig
