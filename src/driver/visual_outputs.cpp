#include "driver/visual_outputs.h"

#include "driver/generate_run.h"
#include "driver/output_file.h"
#include "geometry/tracked_surface.h"
#include "optimiser/anneal_score.h"
#include "report/coverage_map.h"
#include "report/coverage_summary.h"
#include "report/html_report.h"
#include "support/stop_request.h"
#include "support/text_case.h"

#include <json/writer.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

namespace kelvorig {
namespace {

// True when the map was drawn; otherwise says why.
bool Drawn(const Status& drawing)
{
    std::fputs(drawing.message().c_str(), stderr);
    return drawing.ok();
}

// The layout's file: the one analysed, or the one a generate run wrote.
std::string LayoutPath(const CommandOptions& options)
{
    if (!options.generate)
        return options.modelPath;
    return options.outModelPath.empty() ? options.outScadPath : options.outModelPath;
}

RunRecord RunRecordOf(const CommandOptions& options, std::optional<uint32_t> seed)
{
    RunRecord run;
    run.commandLine = options.arguments;
    run.seed = seed;
    run.restarts = options.restarts;
    run.nIterations = options.nIterations;
    run.coolingRate = options.coolingRate;
    run.qualityRange = {options.qualityLow, options.qualityHigh};
    run.maxSurfaceAngleDegrees = options.maxSurfaceAngle;
    run.tiltRadians = options.srbTiltRadians;
    run.maxSeatDepthMm = options.maxSeatDepth;
    if (options.minSensorSpacing && *options.minSensorSpacing > 0.0)
        run.minSensorSpacingMm = options.minSensorSpacing;
    run.keepOutPaths = options.keepOutPaths;
    run.meshUnit = options.meshUnit;
    run.normalsFromWinding = options.normalsFromWinding;
    return run;
}

SummaryInputs InputsOf(const CommandOptions& options, const LayoutSource& source)
{
    const TrackedSurface* surface = source.surface;
    SummaryInputs inputs;
    const std::string layoutPath = LayoutPath(options);
    inputs.layoutName = std::filesystem::path(layoutPath).stem().string();
    inputs.modelPath = layoutPath;
    inputs.sensorsPath = options.sensorsPath;
    inputs.obstaclePaths = options.obstaclePaths;
    if (surface != nullptr)
    {
        inputs.unitScale = surface->unitScale();
        const VertexMatrix& vertices = surface->vertices();
        for (Eigen::Index axis = 0; axis < 3 && vertices.rows() > 0; ++axis)
        {
            // Rounded to micrometres: the mesh is in 32-bit floats.
            const double extent = static_cast<double>(vertices.col(axis).maxCoeff() - vertices.col(axis).minCoeff());
            inputs.sizeMm[static_cast<size_t>(axis)] = std::round(extent * 1e6) / 1000.0;
        }
    }
    inputs.distanceMeters = std::abs(options.distanceBaseMeters);
    inputs.maxIncidenceDegrees = options.maxIncidenceAngle;
    inputs.gridStepDegrees = options.angleResolutionDegrees;
    inputs.nOrientations = options.nOrientations;
    inputs.run = RunRecordOf(options, source.seed);
    return inputs;
}

} // namespace

bool WriteVisualOutputs(const CommandOptions& options, const SensorLayout& layout, const LayoutSource& source,
                        const std::vector<DirectionQuality>& directions, const std::vector<SeatFindings>& seats)
{
    const TrackedSurface* surface = source.surface;
    const SummaryInputs inputs = InputsOf(options, source);
    const double score = AnnealScoreOf(layout, surface, AnnealSettingsOf(options));
    CoverageSummary summary = SummariseCoverage(directions, layout, score);
    summary.seats = seats;

    // note: a stop request ends the files' writing between two of them; each one written is whole.
    if (StopRequested())
        return true;
    if (!options.outSummaryPath.empty())
        std::fputs(SummaryBlock(inputs, summary, layout).c_str(), stderr);
    bool written = true;
    if (!options.outSummaryPath.empty())
    {
        const std::string text = Json::StyledWriter().write(SummaryToJson(inputs, summary, layout));
        written = WriteOutputFile(options.outSummaryPath, text) && written;
    }
    if (!options.outPngPath.empty() && !StopRequested())
    {
        const MapFormat format = EndsWithIgnoringCase(options.outPngPath, ".svg") ? MapFormat::kSvg : MapFormat::kPng;
        std::string bytes;
        written = Drawn(DrawCoverageMap(directions, summary, inputs.layoutName, format, bytes)) &&
                  WriteOutputFile(options.outPngPath, bytes) && written;
    }
    if (!options.outHtmlPath.empty() && !StopRequested())
    {
        std::string map;
        written = Drawn(DrawCoverageMap(directions, summary, inputs.layoutName, MapFormat::kPng, map)) &&
                  WriteOutputFile(options.outHtmlPath, HtmlReport(inputs, summary, layout, directions, surface, map)) &&
                  written;
    }
    return written;
}

} // namespace kelvorig
