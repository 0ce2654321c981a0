#pragma once

#include "quality/base_station_pose.h"

#include <cstdint>
#include <vector>

namespace kelvorig {

// Replaces `poses` by `count` directions spread evenly but irregularly over the sphere, by
// best-candidate sampling on its own MT19937 seeded 5489: every call gives the same list,
// and the first n of a longer list are the list of n. The first is +Z, whose record is not
// a number. gridPitch and gridYaw hold the x and y of the rotation vector. Fewer when a stop is
// requested meanwhile (see stop_request.h).
void SampleBestCandidatePoses(int32_t count, std::vector<BaseStationPose>& poses);

// Replaces `poses` by a grid: for yaw φ from -fullTurn/2 up to fullTurn/2, and for each
// pitch θ from -π/2 up to π/2 (at least one), the direction (sin φ cos θ, sin θ, cos φ cos θ).
// Both angles (radians) advance by repeated addition of `step`, which must be positive. Fewer
// turn steps when a stop is requested meanwhile.
void SampleGridPoses(double fullTurn, double step, std::vector<BaseStationPose>& poses);

// Angular spacing of n sampled orientations, in radians: 2 asin(1.9 / sqrt(n)).
double OrientationSpacing(int32_t nOrientations);

} // namespace kelvorig
