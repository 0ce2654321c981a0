#pragma once

#include "support/status.h"

#include "quality/direction_quality.h"
#include "report/coverage_summary.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kelvorig {

// A panel of the map, in points (pixels of the PNG): yaw -180 to 180 degrees across, pitch
// -90 to 90 degrees up.
struct MapPanel
{
    double left;
    double top;
    double width;
    double height;
};

constexpr int kMapWidth = 960;
constexpr int kMapHeight = 960;
constexpr MapPanel kErrorPanel = {80.0, 110.0, 720.0, 360.0};
constexpr MapPanel kCountPanel = {80.0, 550.0, 720.0, 360.0};

// Where a direction lies on a panel: x, then y.
std::array<double, 2> PanelPoint(const MapPanel& panel, double yawDegrees, double pitchDegrees);

enum class MapFormat
{
    kPng,
    kSvg
};

// The two-panel map (position error, visible-sensor count) under a title with the layout's
// name and headline numbers, as PNG bytes or SVG text. Fails, saying why, when Cairo fails or
// the directions form no grid.
Status DrawCoverageMap(const std::vector<DirectionQuality>& directions, const CoverageSummary& summary,
                       const std::string& layoutName, MapFormat format, std::string& bytes);

} // namespace kelvorig
