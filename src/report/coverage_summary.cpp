#include "report/coverage_summary.h"

#include "geometry/surface_loading.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/formatted_text.h"
#include "support/tool_version.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <tuple>
#include <utility>

namespace kelvorig {
namespace {

constexpr double kErrorCeiling = 1.0; // the report's: no usable estimate
constexpr size_t kWorstCount = 10;
// Worst regions whose worst directions lie closer than this to a worse one's are not listed:
// they are most likely one region that the grid split.
constexpr double kWorstSeparationDegrees = 15.0;

double Weight(const DirectionQuality& direction)
{
    return std::max(0.0, std::cos(direction.pitch));
}

// The smallest value whose cumulative weight reaches each fraction of the total, and the
// largest value overall.
ErrorPercentiles WeightedPercentiles(std::vector<std::pair<double, double>> valueWeights)
{
    ErrorPercentiles result;
    if (valueWeights.empty())
        return result;
    std::sort(valueWeights.begin(), valueWeights.end());
    double total = 0.0;
    for (const auto& entry : valueWeights)
        total += entry.second;
    const std::array<double*, 3> targets = {&result.p50, &result.p90, &result.p99};
    const std::array<double, 3> fractions = {0.5, 0.9, 0.99};
    for (size_t t = 0; t < targets.size(); ++t)
    {
        double cumulative = 0.0;
        *targets[t] = valueWeights.back().first;
        for (const auto& [value, weight] : valueWeights)
        {
            cumulative += weight;
            if (cumulative >= fractions[t] * total)
            {
                *targets[t] = value;
                break;
            }
        }
    }
    result.max = valueWeights.back().first;
    return result;
}

size_t ShareIndex(int32_t solvablePercent)
{
    switch (solvablePercent)
    {
    case 100:
        return 0;
    case 99:
        return 1;
    case 96:
        return 2;
    default:
        return 3;
    }
}

// The order of the direction indices, worst first: larger position error, then larger rotation
// error, then fewer sensors seen, then grid order.
std::vector<size_t> WorstFirst(const std::vector<DirectionQuality>& directions)
{
    std::vector<size_t> order(directions.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const auto key = [&directions](size_t k)
    {
        const DirectionQuality& d = directions[k];
        return std::make_tuple(-CountedPositionError(d), -CountedRotationError(d), d.visibleCount, k);
    };
    std::sort(order.begin(), order.end(), [&key](size_t a, size_t b) { return key(a) < key(b); });
    return order;
}

size_t RootOf(std::vector<size_t>& parent, size_t k)
{
    while (parent[k] != k)
        k = parent[k] = parent[parent[k]];
    return k;
}

// Joins every bad direction with its bad neighbours on the grid (the eight around it, yaw
// wrapping round, and all of a row that lies on a pole); returns each direction's region root.
std::vector<size_t> RegionsOf(const std::vector<DirectionQuality>& directions, const DirectionGrid& grid,
                              const std::vector<bool>& bad)
{
    std::vector<size_t> parent(directions.size());
    std::iota(parent.begin(), parent.end(), size_t{0});
    const auto join = [&](size_t a, size_t b)
    {
        if (bad[a] && bad[b])
            parent[RootOf(parent, a)] = RootOf(parent, b);
    };
    const size_t rows = grid.pitchCount;
    for (size_t column = 0; column < grid.yawCount; ++column)
    {
        const size_t next = (column + 1) % grid.yawCount;
        for (size_t row = 0; row < rows; ++row)
        {
            const size_t k = column * rows + row;
            if (row + 1 < rows)
                join(k, k + 1);
            for (size_t other = row > 0 ? row - 1 : 0; other <= std::min(row + 1, rows - 1); ++other)
                join(k, next * rows + other);
            if (std::abs(std::abs(directions[k].pitch) - kHalfPi) < 1e-9)
                join(k, next * rows + row);
        }
    }
    std::vector<size_t> roots(directions.size());
    for (size_t k = 0; k < directions.size(); ++k)
        roots[k] = RootOf(parent, k);
    return roots;
}

Eigen::Vector3d Unit(const DirectionQuality& d)
{
    return {std::sin(d.yaw) * std::cos(d.pitch), std::sin(d.pitch), std::cos(d.yaw) * std::cos(d.pitch)};
}

// The worst regions of bad directions: those unsolvable or with a position error of at least
// `badError` (metres). Off a grid, each bad direction is a region of its own. A large region
// (a side no sensor faces) is split among several of the listed directions.
std::vector<WorstRegion> WorstRegions(const std::vector<DirectionQuality>& directions, double badError)
{
    std::vector<bool> bad(directions.size());
    double total = 0.0;
    for (size_t k = 0; k < directions.size(); ++k)
    {
        bad[k] = CountedPositionError(directions[k]) >= badError;
        total += Weight(directions[k]);
    }
    std::vector<size_t> roots(directions.size());
    std::iota(roots.begin(), roots.end(), size_t{0});
    if (const std::optional<DirectionGrid> grid = GridOf(directions))
        roots = RegionsOf(directions, *grid, bad);
    // The worst bad directions at least kWorstSeparationDegrees apart stand for the regions;
    // each bad direction counts towards the nearest of them in its own connected region.
    std::vector<WorstRegion> regions;
    std::vector<size_t> picked;
    const double separation = std::cos(kWorstSeparationDegrees / kDegreesPerRadian);
    for (const size_t k : WorstFirst(directions))
    {
        if (regions.size() == kWorstCount || !bad[k])
            break;
        if (std::all_of(picked.begin(), picked.end(),
                        [&](size_t p) { return Unit(directions[p]).dot(Unit(directions[k])) < separation; }))
        {
            picked.push_back(k);
            regions.push_back({directions[k], 0.0, 0});
        }
    }
    for (size_t k = 0; k < directions.size() && total > 0.0; ++k)
    {
        std::optional<size_t> nearest;
        double closest = -2.0;
        for (size_t r = 0; r < picked.size() && bad[k]; ++r)
        {
            const double dot = Unit(directions[picked[r]]).dot(Unit(directions[k]));
            if (roots[picked[r]] == roots[k] && dot > closest)
                nearest = r, closest = dot;
        }
        if (nearest)
            regions[*nearest].sharePercent += 100.0 * Weight(directions[k]) / total, ++regions[*nearest].directions;
    }
    return regions;
}

Json::Value PercentilesToJson(const ErrorPercentiles& percentiles)
{
    Json::Value object;
    object["p50"] = percentiles.p50;
    object["p90"] = percentiles.p90;
    object["p99"] = percentiles.p99;
    object["max"] = percentiles.max;
    return object;
}

Json::Value TextsToJson(const std::vector<std::string>& texts)
{
    Json::Value array(Json::arrayValue);
    for (const std::string& text : texts)
        array.append(text);
    return array;
}

Json::Value OptionalToJson(const std::optional<double>& value)
{
    return value ? Json::Value(*value) : Json::Value();
}

Json::Value RunToJson(const RunRecord& run)
{
    Json::Value object;
    object["command_line"] = Json::Value(Json::arrayValue);
    for (const std::string& argument : run.commandLine)
        object["command_line"].append(argument);
    object["version"] = ToolVersion();
    object["seed"] = run.seed ? Json::Value(*run.seed) : Json::Value();
    object["restarts"] = run.restarts;
    object["iterations"] = run.nIterations;
    object["cooling_rate"] = run.coolingRate;
    object["quality_range"].append(run.qualityRange[0]);
    object["quality_range"].append(run.qualityRange[1]);
    object["max_surface_angle_degrees"] = run.maxSurfaceAngleDegrees;
    object["tilt_radians"] = run.tiltRadians;
    object["mesh_unit"] = run.meshUnit.empty() ? Json::Value() : Json::Value(run.meshUnit);
    object["normals_from_winding"] = run.normalsFromWinding;
    Json::Value& rules = object["seat_rules"];
    rules["max_seat_depth_mm"] = OptionalToJson(run.maxSeatDepthMm);
    rules["min_sensor_spacing_mm"] = OptionalToJson(run.minSensorSpacingMm);
    rules["keep_outs"] = TextsToJson(run.keepOutPaths);
    return object;
}

void AppendPercentiles(std::string& text, const char* name, const ErrorPercentiles& p)
{
    AppendFormatted(text, "  %s: median %.4g, 90 %% %.4g, 99 %% %.4g, max %.4g\n", name, p.p50, p.p90, p.p99, p.max);
}

} // namespace

double CountedPositionError(const DirectionQuality& direction)
{
    return direction.solvablePercent == 0 ? kErrorCeiling : direction.positionError;
}

double CountedRotationError(const DirectionQuality& direction)
{
    return direction.solvablePercent == 0 ? kErrorCeiling : direction.rotationError;
}

CoverageSummary SummariseCoverage(const std::vector<DirectionQuality>& directions, const SensorLayout& layout,
                                  double score)
{
    CoverageSummary summary;
    summary.score = score;
    summary.seenPercent.assign(layout.SensorCount(), 0.0);
    std::vector<std::pair<double, double>> positions;
    std::vector<std::pair<double, double>> rotations;
    double total = 0.0;
    for (const DirectionQuality& direction : directions)
    {
        const double weight = Weight(direction);
        total += weight;
        summary.solvableShares[ShareIndex(direction.solvablePercent)] += weight;
        for (size_t i = 0; i < summary.seenPercent.size(); ++i)
        {
            if (direction.visibleMask >> i & 1u)
                summary.seenPercent[i] += weight;
        }
        positions.emplace_back(CountedPositionError(direction) * kMillimetresPerMetre, weight);
        rotations.emplace_back(CountedRotationError(direction) * kDegreesPerRadian, weight);
    }
    const double toPercent = total > 0.0 ? 100.0 / total : 0.0;
    for (double& share : summary.solvableShares)
        share *= toPercent;
    for (double& share : summary.seenPercent)
        share *= toPercent;
    summary.positionMm = WeightedPercentiles(std::move(positions));
    summary.rotationDegrees = WeightedPercentiles(std::move(rotations));

    summary.worst = WorstRegions(directions, summary.positionMm.p90 * kMetresPerMillimetre);
    return summary;
}

Json::Value SummaryToJson(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout)
{
    Json::Value root;
    root["layout"] = inputs.layoutName;

    Json::Value& in = root["inputs"];
    in["model"] = inputs.modelPath;
    in["sensors"] = inputs.sensorsPath;
    in["obstacles"] = TextsToJson(inputs.obstaclePaths);
    if (inputs.unitScale)
    {
        in["unit"] = UnitSymbol(*inputs.unitScale);
        for (double extent : inputs.sizeMm)
            in["size_mm"].append(extent);
    }
    else
    {
        in["unit"] = Json::Value();
        in["size_mm"] = Json::Value();
    }
    in["sensor_count"] = static_cast<Json::UInt64>(layout.SensorCount());
    in["distance_m"] = inputs.distanceMeters;
    in["max_incidence_degrees"] = inputs.maxIncidenceDegrees;
    in["grid_step_degrees"] = inputs.gridStepDegrees;
    root["run"] = RunToJson(inputs.run);

    Json::Value& score = root["score"];
    score["value"] = summary.score;
    score["scale"] = kQualityScale;
    score["orientations"] = inputs.nOrientations;

    Json::Value& shares = root["solvable_percent"];
    shares["100"] = summary.solvableShares[0];
    shares["99"] = summary.solvableShares[1];
    shares["96"] = summary.solvableShares[2];
    shares["0"] = summary.solvableShares[3];

    root["position_error_mm"] = PercentilesToJson(summary.positionMm);
    root["rotation_error_degrees"] = PercentilesToJson(summary.rotationDegrees);

    Json::Value& sensors = root["sensors"];
    sensors = Json::Value(Json::arrayValue);
    for (size_t i = 0; i < layout.SensorCount(); ++i)
    {
        Json::Value sensor;
        sensor["id"] = layout.sensorIds[i];
        for (int axis = 0; axis < 3; ++axis)
            sensor["position_mm"].append(layout.positions[i][axis] * kMillimetresPerMetre);
        sensor["seen_percent"] = summary.seenPercent[i];
        if (i < summary.seats.size())
        {
            const SeatFindings& seat = summary.seats[i];
            for (int axis = 0; axis < 3; ++axis)
                sensor["normal"].append(seat.normal[axis]);
            sensor["hull_depth_mm"] = OptionalToJson(seat.hullDepthMm);
            sensor["faces_device_at_mm"] = OptionalToJson(seat.facingDeviceMm);
            sensor["problems"] = TextsToJson(seat.problems);
        }
        sensors.append(sensor);
    }

    Json::Value& worst = root["worst_directions"];
    worst = Json::Value(Json::arrayValue);
    for (const WorstRegion& region : summary.worst)
    {
        const DirectionQuality& direction = region.worst;
        Json::Value entry;
        entry["yaw_degrees"] = direction.yaw * kDegreesPerRadian;
        entry["pitch_degrees"] = direction.pitch * kDegreesPerRadian;
        entry["visible_sensors"] = direction.visibleCount;
        entry["solvable_percent"] = direction.solvablePercent;
        entry["position_error_mm"] = CountedPositionError(direction) * kMillimetresPerMetre;
        entry["rotation_error_degrees"] = CountedRotationError(direction) * kDegreesPerRadian;
        entry["region_share_percent"] = region.sharePercent;
        entry["region_directions"] = static_cast<Json::UInt64>(region.directions);
        worst.append(entry);
    }
    return root;
}

std::string SummaryBlock(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout)
{
    const auto& shares = summary.solvableShares;
    std::string text;
    AppendFormatted(text, "\nsummary of %s: score %g / %g (lower is better) with %d orientations\n",
                    inputs.layoutName.c_str(), summary.score, kQualityScale, inputs.nOrientations);
    AppendFormatted(text, "  directions solvable (%% of solid angle): 100: %.2f, 99: %.2f, 96: %.2f, 0: %.2f\n",
                    shares[0], shares[1], shares[2], shares[3]);
    AppendPercentiles(text, "position error (mm)", summary.positionMm);
    AppendPercentiles(text, "rotation error (degrees)", summary.rotationDegrees);
    AppendFormatted(text, "  sensors seen (%% of directions):");
    for (size_t i = 0; i < layout.SensorCount(); ++i)
        AppendFormatted(text, " %d: %.1f", layout.sensorIds[i], summary.seenPercent[i]);
    AppendFormatted(text, "\n  worst regions (yaw, pitch degrees of the worst direction: position mm, rotation "
                          "degrees, sensors seen; %% of solid angle):\n");
    for (const WorstRegion& region : summary.worst)
    {
        const DirectionQuality& d = region.worst;
        AppendFormatted(text, "    %.1f, %.1f: %.4g, %.4g, %d; %.2f %%\n", d.yaw * kDegreesPerRadian,
                        d.pitch * kDegreesPerRadian, CountedPositionError(d) * kMillimetresPerMetre,
                        CountedRotationError(d) * kDegreesPerRadian, d.visibleCount, region.sharePercent);
    }
    return text;
}

} // namespace kelvorig
