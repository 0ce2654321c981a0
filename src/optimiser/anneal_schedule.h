#pragma once

#include <cstdint>

namespace kelvorig {

// Expected number of moves of a whole anneal, ln(stop / start) * moves / ln(rate), with its
// fraction: the value of the "anneal duration: " line.
double ExpectedMoveCount(int64_t movesPerTemperature, double coolingRate);

// Moves the schedule really makes: each temperature from the start one down to the last one
// at or above the stop temperature gets movesPerTemperature moves.
int64_t PlannedMoveCount(int64_t movesPerTemperature, double coolingRate);

} // namespace kelvorig
