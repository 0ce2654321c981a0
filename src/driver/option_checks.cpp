#include "driver/option_checks.h"

#include "driver/switch_table.h"
#include "driver/usage.h"
#include "geometry/surface_loading.h"
#include "optimiser/anneal_schedule.h"
#include "support/angles.h"
#include "support/text_case.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

bool Refuse(const char* message)
{
    std::fputs(message, stderr);
    return false;
}

bool Usage()
{
    PrintUsage();
    return false;
}

// The checks whose order and words the command line has always had. note: those before the
// argument error come first on purpose, so that a value that failed under /generate can
// surface as one of their messages.
bool CheckCommandLine(const CommandOptions& options, bool argumentError)
{
    if (options.generate)
    {
        if (options.sensorsPath.empty())
            return Refuse("/generate requires /sensors <surface.stl>\n");
        if (options.outScadPath.empty() && options.outModelPath.empty())
            return Refuse("/generate output needs /outscad <foo.scad> and/or /outmodel <foo.json>\n");
        if (options.nSensors < 1)
            return Refuse("must specify /nsensors with /generate\n");
        if (options.coolingRate >= 1.0)
            return Refuse("/coolingrate >= 1.0 would never finish\n");
    }
    if (options.verifyCoverage != 0 && (options.sensorsPath.empty() || options.outScadPath.empty()))
        return Refuse("/verifycoverage requires /sensors and /outscad\n");
    if (!options.generate && options.verifyCoverage == 0 && options.modelPath.empty())
        return Usage();
    if (options.srbTiltRadians != 0.0 && options.generate)
        return Refuse("/srbtiltdegrees is not plumbed to /generate yet\n");
    if (argumentError)
        return Usage();
    return true;
}

bool Reads(SwitchUse use, RunMode mode)
{
    switch (use)
    {
    case SwitchUse::kAnyRun:
        return true;
    case SwitchUse::kReport:
        return mode == RunMode::kAnalysis || mode == RunMode::kGenerate;
    case SwitchUse::kAnneal:
        return mode == RunMode::kGenerate;
    }
    return true;
}

bool InRange(double value, const SwitchRange& range)
{
    const bool aboveLow = range.lowOpen ? value > range.low : value >= range.low;
    const bool belowHigh = range.highOpen ? value < range.high : value <= range.high;
    return aboveLow && belowHigh && !(range.zeroRefused && value == 0.0);
}

// The value as typed, whole and within the row's range and limit.
bool CheckValue(const SwitchRow& row, const std::string& text)
{
    // The pair's two values are checked one by one, then for their order.
    const size_t gap = row.kind == SwitchRow::Kind::kRealPair ? text.find(' ') : std::string::npos;
    std::vector<std::optional<double>> values;
    if (gap == std::string::npos)
        values.push_back(ReadWholeNumber(text, row.kind));
    else
        values = {ReadWholeNumber(text.substr(0, gap), row.kind), ReadWholeNumber(text.substr(gap + 1), row.kind)};
    const bool whole = std::all_of(values.begin(), values.end(),
                                   [&row](const std::optional<double>& v) { return v && InRange(*v, row.range); });
    // note: the pair was put in order as it was read, but its texts were kept as typed.
    if (!whole || (values.size() == 2 && !(std::abs(*values[1] - *values[0]) >= row.range.minGap)))
    {
        std::fprintf(stderr, "%s %s: %s\n", row.name, text.c_str(), row.range.requirement);
        return false;
    }
    if (row.range.limit > 0.0 && *values[0] > row.range.limit)
    {
        std::fprintf(stderr, "%s %s is more than the %.0f %s\n", row.name, text.c_str(), row.range.limit,
                     row.range.limitWhat);
        return false;
    }
    return true;
}

bool CheckValues(const CommandOptions& options, RunMode mode)
{
    for (const SwitchRow& row : SwitchTable())
    {
        if (!Reads(row.use, mode))
            continue;
        // The last use is the one that counts.
        const auto given = std::find_if(options.givenNumbers.rbegin(), options.givenNumbers.rend(),
                                        [&row](const auto& number) { return number.first == row.name; });
        if (given != options.givenNumbers.rend() && !CheckValue(row, given->second))
            return false;
    }
    if (!options.meshUnit.empty() && !UnitScaleNamed(options.meshUnit))
    {
        std::fprintf(stderr, "/meshunit %s: the unit must be mm, cm, m or in\n", options.meshUnit.c_str());
        return false;
    }
    return true;
}

// Temperatures the schedule makes at this rate. note: counted step by step like the anneal
// itself where that is quick; a schedule beyond that many temperatures is far past any limit,
// and its closed-form count is close enough there.
double TemperatureCount(double coolingRate)
{
    constexpr double kCountedTemperatures = 1e7;
    const double estimate = std::floor(ExpectedMoveCount(1, coolingRate)) + 1.0;
    if (estimate < kCountedTemperatures)
        return static_cast<double>(PlannedMoveCount(1, coolingRate));
    return estimate;
}

// The anneal's moves, all restarts together; a temperature without moves, and so every
// restart, counts as one at least, since running through it takes time all the same.
bool CheckAnnealSize(const CommandOptions& options)
{
    const double movesPerTemperature =
        std::max(1.0, static_cast<double>(int64_t{options.nSensors} * options.nIterations));
    const double moves = TemperatureCount(options.coolingRate) * movesPerTemperature * options.restarts;
    if (moves > kMaxAnnealMoves)
    {
        std::fprintf(stderr,
                     "the anneal would make about %.0f moves (/nsensors %d, /niterations %d, /coolingrate %.12g, "
                     "/restarts %d): more than the %.0f a run can finish\n",
                     moves, options.nSensors, options.nIterations, options.coolingRate, options.restarts,
                     kMaxAnnealMoves);
        return false;
    }
    return true;
}

// The report's grid: its angles advance by repeated addition from -pi/2 and -pi, so a step too
// small to change them would never end; a fine one may outgrow the memory.
bool CheckAnalysisGrid(const CommandOptions& options)
{
    const double step = DegreesToRadians(options.angleResolutionDegrees);
    if (-0.5 * kPi + step == -0.5 * kPi || -kPi + step == -kPi)
    {
        std::fprintf(stderr, "/angleresolutiondegrees %g is too small to step through the grid\n",
                     options.angleResolutionDegrees);
        return false;
    }
    // Ring entries from -pi/2 to pi/2 times turn steps from -pi to pi, in 64-bit floating point,
    // which no step can overflow.
    const double rows = (std::floor(kPi / step) + 1.0) * (std::floor(kFullTurn / step) + 1.0);
    if (rows > kMaxAnalysisRows)
    {
        std::fprintf(
            stderr, "/angleresolutiondegrees %g would make a grid of %.3g rows: more than the %.0f a report can take\n",
            options.angleResolutionDegrees, rows, kMaxAnalysisRows);
        return false;
    }
    return true;
}

bool CheckVisualOutputs(const CommandOptions& options)
{
    if (options.WantsVisualOutputs() && options.baseStationSensitivity)
        return Refuse("/outsummary, /outpng and /outhtml read the coverage report, not /basestationsensitivity\n");
    if (!options.outPngPath.empty() && !EndsWithIgnoringCase(options.outPngPath, ".png") &&
        !EndsWithIgnoringCase(options.outPngPath, ".svg"))
    {
        std::fprintf(stderr, "/outpng %s: the name must end in .png or .svg\n", options.outPngPath.c_str());
        return false;
    }
    return true;
}

} // namespace

RunMode ModeOf(const CommandOptions& options)
{
    if (!options.modelPath.empty() && !options.generate && !options.outScadPath.empty())
        return RunMode::kModelDrawing;
    if (options.verifyCoverage != 0)
        return RunMode::kCoverage;
    return options.generate ? RunMode::kGenerate : RunMode::kAnalysis;
}

bool CheckOptions(const CommandOptions& options, bool argumentError)
{
    if (!CheckCommandLine(options, argumentError))
        return false;
    const RunMode mode = ModeOf(options);
    if (!CheckValues(options, mode))
        return false;
    if (mode == RunMode::kGenerate && !CheckAnnealSize(options))
        return false;
    if (mode == RunMode::kGenerate || mode == RunMode::kAnalysis)
        return CheckAnalysisGrid(options) && CheckVisualOutputs(options);
    return true;
}

} // namespace kelvorig
