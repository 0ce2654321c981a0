#pragma once

#include "driver/command_options.h"
#include "geometry/tracked_surface.h"

namespace kelvorig {

// /model with /outscad: reads the model file again and draws it as an OpenSCAD file over
// the surface's meshes (`surface` may be null). Returns the exit status.
int RunModelDrawing(const CommandOptions& options, const TrackedSurface* surface);

} // namespace kelvorig
