#include "report/coverage_summary.h"

#include "geometry/surface_loading.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/formatted_text.h"

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

Json::Value PercentilesToJson(const ErrorPercentiles& percentiles)
{
    Json::Value object;
    object["p50"] = percentiles.p50;
    object["p90"] = percentiles.p90;
    object["p99"] = percentiles.p99;
    object["max"] = percentiles.max;
    return object;
}

Json::Value PathsToJson(const std::vector<std::string>& paths)
{
    Json::Value array(Json::arrayValue);
    for (const std::string& path : paths)
        array.append(path);
    return array;
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

    // Worst first: larger position error, then larger rotation error, then fewer sensors seen,
    // then grid order.
    std::vector<size_t> order(directions.size());
    std::iota(order.begin(), order.end(), size_t{0});
    const size_t worstCount = std::min(kWorstCount, order.size());
    std::partial_sort(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(worstCount), order.end(),
                      [&](size_t a, size_t b)
                      {
                          const DirectionQuality& x = directions[a];
                          const DirectionQuality& y = directions[b];
                          const auto key = [](const DirectionQuality& d) {
                              return std::make_tuple(-CountedPositionError(d), -CountedRotationError(d),
                                                     d.visibleCount);
                          };
                          return std::make_pair(key(x), a) < std::make_pair(key(y), b);
                      });
    for (size_t k = 0; k < worstCount; ++k)
        summary.worst.push_back(directions[order[k]]);
    return summary;
}

Json::Value SummaryToJson(const SummaryInputs& inputs, const CoverageSummary& summary, const SensorLayout& layout)
{
    Json::Value root;
    root["layout"] = inputs.layoutName;

    Json::Value& in = root["inputs"];
    in["model"] = inputs.modelPath;
    in["sensors"] = inputs.sensorsPath;
    in["obstacles"] = PathsToJson(inputs.obstaclePaths);
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
        sensors.append(sensor);
    }

    Json::Value& worst = root["worst_directions"];
    worst = Json::Value(Json::arrayValue);
    for (const DirectionQuality& direction : summary.worst)
    {
        Json::Value entry;
        entry["yaw_degrees"] = direction.yaw * kDegreesPerRadian;
        entry["pitch_degrees"] = direction.pitch * kDegreesPerRadian;
        entry["visible_sensors"] = direction.visibleCount;
        entry["solvable_percent"] = direction.solvablePercent;
        entry["position_error_mm"] = CountedPositionError(direction) * kMillimetresPerMetre;
        entry["rotation_error_degrees"] = CountedRotationError(direction) * kDegreesPerRadian;
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
    AppendFormatted(text, "\n  worst directions (yaw, pitch degrees: position mm, rotation degrees, sensors seen):\n");
    for (const DirectionQuality& d : summary.worst)
    {
        AppendFormatted(text, "    %.1f, %.1f: %.4g, %.4g, %d\n", d.yaw * kDegreesPerRadian,
                        d.pitch * kDegreesPerRadian, CountedPositionError(d) * kMillimetresPerMetre,
                        CountedRotationError(d) * kDegreesPerRadian, d.visibleCount);
    }
    return text;
}

} // namespace kelvorig
