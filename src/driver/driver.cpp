#include "driver/driver.h"

#include "config/model_file.h"
#include "driver/analysis_run.h"
#include "driver/command_line.h"
#include "driver/coverage_run.h"
#include "driver/generate_run.h"
#include "driver/interrupt_signal.h"
#include "driver/model_drawing_run.h"
#include "driver/option_checks.h"
#include "driver/placement_switches.h"
#include "driver/tool_run.h"
#include "geometry/tracked_surface.h"
#include "quality/quality_evaluator.h"
#include "support/progress_stream.h"

#include <Eigen/Core>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>

namespace kelvorig {
namespace {

void ReportUnbuiltSurface(const CommandOptions& options)
{
    std::string text = "Could not build tracked surface from \"" + options.sensorsPath + "\"";
    for (const std::string& obstaclePath : options.obstaclePaths)
        text += " and \"" + obstaclePath + "\"";
    text += "\n";
    std::fputs(text.c_str(), stderr);
}

// Input sensors off the surface are only warned of; the run goes on.
void WarnOfPointsOffSurface(const SensorLayout& layout, const TrackedSurface& surface)
{
    for (size_t i = 0; i < layout.SensorCount(); ++i)
    {
        const Eigen::Vector3f position = layout.positions[i].cast<float>();
        const Eigen::Vector3f normal = layout.normals[i].cast<float>();
        if (!surface.IsOnSensorSurface(position, normal))
        {
            std::cerr << "WARNING: Input model point " << i << " doesn't seem to be on the supplied sensor surface at "
                      << position.transpose() << "\n";
        }
    }
}

// The layout of /model. A layout larger than the run can take is refused before the work that
// grows with its size (the layout's pair distances are quadratic in it).
bool LoadLayout(const CommandOptions& options, std::unique_ptr<SensorLayout>& layout)
{
    TrackedObjectModel model;
    std::string warnings;
    const Status read = ReadModel(options.modelPath, model, &warnings);
    if (!read)
    {
        std::cerr << read.message();
        return false;
    }
    std::cerr << warnings;
    const bool listsAgree =
        model.channelMap.size() == model.modelPoints.size() && model.channelMap.size() == model.modelNormals.size();
    const size_t sensors = listsAgree
                               ? static_cast<size_t>(std::count_if(model.channelMap.begin(), model.channelMap.end(),
                                                                   [](int32_t id) { return id >= 0; }))
                               : 0;
    if (sensors > QualityEvaluator::kMaxSensors)
    {
        if (ModeOf(options) == RunMode::kGenerate && !CheckImmutableSensorCount(sensors, options.nSensors))
            return false;
        if (ModeOf(options) == RunMode::kAnalysis)
        {
            std::fprintf(stderr, "cannot analyse %zu sensors: at most %zu are supported\n", sensors,
                         QualityEvaluator::kMaxSensors);
            return false;
        }
    }
    layout = std::make_unique<SensorLayout>(model, kIdentityTransform);
    return true;
}

int LoadAndRun(const CommandOptions& options, QualityEvaluator& evaluator)
{
    CatchInterrupts();
    std::unique_ptr<SensorLayout> layout;
    if (!options.modelPath.empty() && !LoadLayout(options, layout))
        return 1;

    // note: /obstacles without /sensors is ignored without a word.
    std::unique_ptr<TrackedSurface> surface;
    std::unique_ptr<SeatRules> seatRules;
    if (!options.sensorsPath.empty())
    {
        surface =
            std::make_unique<TrackedSurface>(options.sensorsPath, options.obstaclePaths, SurfaceLoadingOf(options));
        std::cerr << surface->warnings();
        if (!surface->isBuilt())
        {
            std::cerr << surface->buildFailure().message();
            // The ray engine's own words are the whole story.
            if (!surface->rayEngineFailed())
                ReportUnbuiltSurface(options);
            return 1;
        }
        DescribeMeshes(options, *surface);
        if (!BuildSeatRules(options, *surface, seatRules))
            return 1;
        // note: draws without a rule must not ask: asking changes what they draw.
        surface->SetSeatRules(seatRules->Restricts() ? seatRules.get() : nullptr);
    }

    if (layout && options.generate && !CheckImmutableSensorCount(layout->SensorCount(), options.nSensors))
        return 1;
    if (layout && surface)
        WarnOfPointsOffSurface(*layout, *surface);

    // The checks guarantee what each run needs: a surface for coverage and generate, a
    // layout for the drawing and the analysis.
    switch (ModeOf(options))
    {
    case RunMode::kModelDrawing:
        return RunModelDrawing(options, surface.get());
    case RunMode::kCoverage:
        return RunCoverage(options, *surface);
    case RunMode::kGenerate:
        return RunGenerate(options, layout.get(), *surface, *seatRules, evaluator);
    case RunMode::kAnalysis:
        break;
    }
    return RunAnalysis(options, *layout, LayoutSource{surface.get(), seatRules.get(), std::nullopt, false}, evaluator);
}

} // namespace

int RunCommandLine(const std::vector<std::string>& arguments)
{
    try
    {
        SetProgressStream(&std::cerr);
        // note: made before any argument is looked at; the analysis run uses this one.
        QualityEvaluator evaluator;
        CommandOptions options;
        const bool argumentError = !ReadCommandLine(arguments, options);
        if (options.tool != CommandOptions::Tool::kNone)
            return RunTool(options, std::cout);
        if (!CheckOptions(options, argumentError))
            return 1;
        return LoadAndRun(options, evaluator);
    }
    catch (const std::exception& exception)
    {
        // Last safety net: one clear line rather than an abort.
        std::fprintf(stderr, "kelvorig: error: %s\n", exception.what());
        return 1;
    }
}

} // namespace kelvorig
