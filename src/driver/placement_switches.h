#pragma once

#include "driver/command_options.h"
#include "geometry/seat_rules.h"
#include "geometry/surface_loading.h"
#include "geometry/tracked_surface.h"

#include <memory>

namespace kelvorig {

// How the sensor surface is read: /normalsfromwinding and /meshunit (checked before).
SurfaceLoading SurfaceLoadingOf(const CommandOptions& options);

// The seat rules of /maxseatdepth (a convex hull of the surface and its obstacles),
// /keepout and /minsensorspacing, in `rules`, left null when none is given. False, with the
// reason on standard error, when a keep-out or the hull can't be built.
bool BuildSeatRules(const CommandOptions& options, const TrackedSurface& surface, std::unique_ptr<SeatRules>& rules);

} // namespace kelvorig
