#include "driver/run_limits.h"

#include "optimiser/anneal_schedule.h"
#include "support/angles.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

constexpr double kLargestSurfaceAngle = 180.0;  // degrees; a negative angle acts like its positive value

// Moves of the whole anneal, all restarts together. note: worked out in closed form, since
// counting the temperatures one by one would itself take for ever at a rate just below 1;
// every schedule has at least one temperature.
double AnnealMoves(const CommandOptions& options)
{
    const double temperatures = std::max(1.0, std::floor(ExpectedMoveCount(1, options.coolingRate)));
    const double movesPerTemperature = static_cast<double>(int64_t{options.nSensors} * options.nIterations);
    return temperatures * movesPerTemperature * options.restarts;
}

} // namespace

bool CheckRunLimits(const CommandOptions& options)
{
    if (options.verifyCoverage > kMaxCoverageSeats)
    {
        std::fprintf(stderr, "/verifycoverage %d is more than the %d seats one drawing can show\n",
                     options.verifyCoverage, kMaxCoverageSeats);
        return false;
    }
    if (options.threads > kMaxThreads)
    {
        std::fprintf(stderr, "/threads %d is more than the %d threads kelvorig can start\n", options.threads,
                     kMaxThreads);
        return false;
    }
    // The coverage run takes precedence over the anneal, which then never starts.
    if (!options.generate || options.verifyCoverage != 0)
        return true;
    if (!(std::abs(options.maxSurfaceAngle) <= kLargestSurfaceAngle))
    {
        std::fprintf(stderr, "/maxsurfaceangle %g: the angle must be from -180 to 180 degrees\n",
                     options.maxSurfaceAngle);
        return false;
    }
    if (options.nOrientations > kMaxOrientations)
    {
        std::fprintf(stderr, "/norientations %d is more than the %d orientations an anneal can sample\n",
                     options.nOrientations, kMaxOrientations);
        return false;
    }
    const double moves = AnnealMoves(options);
    if (moves > kMaxAnnealMoves)
    {
        std::fprintf(stderr,
                     "the anneal would make about %.3g moves (/nsensors %d, /niterations %d, /coolingrate %.12g, "
                     "/restarts %d): more than the %.0f a run can finish\n",
                     moves, options.nSensors, options.nIterations, options.coolingRate, options.restarts,
                     kMaxAnnealMoves);
        return false;
    }
    return true;
}

bool CheckAnalysisGridSize(double angleResolutionDegrees)
{
    // Ring entries from -pi/2 to pi/2 times turn steps from -pi to pi. note: in 64-bit floating
    // point, which no step can overflow.
    const double step = DegreesToRadians(angleResolutionDegrees);
    const double rows = (std::floor(kPi / step) + 1.0) * (std::floor(kFullTurn / step) + 1.0);
    if (rows > kMaxAnalysisRows)
    {
        std::fprintf(stderr, "/angleresolutiondegrees %g would make a grid of %.3g rows: more than the %.0f a report can take\n",
                     angleResolutionDegrees, rows, kMaxAnalysisRows);
        return false;
    }
    return true;
}

} // namespace kelvorig
