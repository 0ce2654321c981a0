#pragma once

#include "geometry/seat_checks.h"
#include "model/sensor_model.h"
#include "quality/direction_quality.h"

#include <json/value.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvorig {

// How the run was made, so that its files can repeat it.
struct RunRecord
{
    std::vector<std::string> commandLine; // the arguments behind the program name
    std::optional<uint32_t> seed;         // of the anneal that placed the layout, when it repeats
    int32_t restarts = 1;
    int32_t nIterations = 0;
    double coolingRate = 0.0;
    std::array<double, 2> qualityRange = {0.0, 0.0};
    double maxSurfaceAngleDegrees = 0.0;
    double tiltRadians = 0.0;
    std::optional<double> maxSeatDepthMm;
    std::optional<double> minSensorSpacingMm;
    std::vector<std::string> keepOutPaths;
    std::string meshUnit; // as given to /meshunit; empty: inferred
    bool normalsFromWinding = false;
};

// What an analysis was run on, for the summary's "inputs".
struct SummaryInputs
{
    std::string layoutName; // file name of the layout without folder and extension
    std::string modelPath;  // empty for the result of a generate run
    std::string sensorsPath;
    std::vector<std::string> obstaclePaths;
    std::optional<double> unitScale;                // metres per file unit, with a surface
    std::array<double, 3> sizeMm = {0.0, 0.0, 0.0}; // the sensor surface's extent, with a surface
    double distanceMeters = 0.0;
    double maxIncidenceDegrees = 0.0;
    double gridStepDegrees = 0.0;
    int32_t nOrientations = 0;
    RunRecord run;
};

struct ErrorPercentiles
{
    double p50 = 0.0;
    double p90 = 0.0;
    double p99 = 0.0;
    double max = 0.0;
};

// Part of a region of bad directions connected on the grid, the part nearest to its worst
// direction, which stands for it.
struct WorstRegion
{
    DirectionQuality worst;
    double sharePercent = 0.0; // of the solid angle
    size_t directions = 0;     // of the grid
};

// How well a layout tracks over the report's grid. Every share weighs a direction by the
// solid angle of its grid cell (cos pitch), so the crowded rows near the poles do not
// outweigh the rest. An unsolvable direction counts at the report's ceiling (1 m, 1 rad).
struct CoverageSummary
{
    double score = 0.0;                                          // the anneal's score of this layout
    std::array<double, 4> solvableShares = {0.0, 0.0, 0.0, 0.0}; // percent at 100, 99, 96, 0
    ErrorPercentiles positionMm;
    ErrorPercentiles rotationDegrees;
    std::vector<double> seenPercent; // per sensor, in layout order
    std::vector<WorstRegion> worst;  // up to ten, worst first, at least 15 degrees apart
    std::vector<SeatFindings> seats; // per sensor, in layout order; empty without a surface
};

// The errors a direction counts with: the report's, or the ceiling where it is unsolvable.
double CountedPositionError(const DirectionQuality& direction);
double CountedRotationError(const DirectionQuality& direction);

CoverageSummary SummariseCoverage(const std::vector<DirectionQuality>& directions, const SensorLayout& layout,
                                  double score);

// The summary file's one object.
Json::Value SummaryToJson(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout);

// The same numbers as a few lines for standard error.
std::string SummaryBlock(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout);

} // namespace kelvorig
