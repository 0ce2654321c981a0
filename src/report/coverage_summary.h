#pragma once

#include "model/sensor_model.h"
#include "quality/direction_quality.h"

#include <json/value.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvorig {

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
};

struct ErrorPercentiles
{
    double p50 = 0.0;
    double p90 = 0.0;
    double p99 = 0.0;
    double max = 0.0;
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
    std::vector<double> seenPercent;     // per sensor, in layout order
    std::vector<DirectionQuality> worst; // up to ten, worst first
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
