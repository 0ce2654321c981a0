#pragma once

#include "driver/command_options.h"
#include "geometry/seat_rules.h"
#include "geometry/surface_loading.h"
#include "geometry/tracked_surface.h"

#include <memory>

namespace kelvorig {

// Says on standard error, for the sensor surface and then each obstacle and keep-out, the unit
// it is read in (and whether inferred) and its extent in millimetres; and warns of an obstacle or
// keep-out whose box does not meet the sensor surface's box grown by a tenth, or whose size is
// over 100 times off the surface's: most likely a mesh in another unit, which would block or
// keep out nothing.
void DescribeMeshes(const CommandOptions& options, const TrackedSurface& surface);

// How the sensor surface is read: /normalsfromwinding and /meshunit (checked before).
SurfaceLoading SurfaceLoadingOf(const CommandOptions& options);

// The seat rules of /maxseatdepth, /keepout and /minsensorspacing in `rules`, with the convex
// hull of the surface and its obstacles that seat depths are measured against (none when it
// can't be built). False, with the reason on standard error, when a keep-out, or the hull that
// /maxseatdepth needs, can't be built.
bool BuildSeatRules(const CommandOptions& options, const TrackedSurface& surface, std::unique_ptr<SeatRules>& rules);

} // namespace kelvorig
