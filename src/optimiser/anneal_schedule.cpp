#include "optimiser/anneal_schedule.h"

#include "optimiser/sensor_placement_annealer.h"

#include <algorithm>
#include <cmath>

namespace kelvorig {

double ExpectedMoveCount(int64_t movesPerTemperature, double coolingRate)
{
    return std::log(kStopTemperature / kStartTemperature) * static_cast<double>(movesPerTemperature) /
           std::log(coolingRate);
}

int64_t PlannedMoveCount(int64_t movesPerTemperature, double coolingRate)
{
    // The same steps as the anneal's loop, so that the count agrees with it to the last move.
    int64_t temperatures = 0;
    double temperature = kStartTemperature;
    do
    {
        ++temperatures;
        temperature *= coolingRate;
    } while (temperature >= kStopTemperature);
    return temperatures * std::max<int64_t>(movesPerTemperature, 0);
}

} // namespace kelvorig
