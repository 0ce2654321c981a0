#include "driver/switch_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace kelvorig {
namespace {

using Kind = SwitchRow::Kind;
using O = CommandOptions;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargestCount = INT32_MAX;

// A switch whose value, if any, is taken as it stands.
constexpr SwitchRow Plain(const char* name, Kind kind, SwitchRow::Field field)
{
    return {name, kind, field, SwitchUse::kAnyRun, {}};
}

// note: the order of the rows is the order in which values are checked after the reading.
const std::array kRows = {
    Plain("/generate", Kind::kFlag, &O::generate),
    Plain("/withscadnormals", Kind::kFlag, &O::withScadNormals),
    SwitchRow{"/verifycoverage",
              Kind::kCount,
              &O::verifyCoverage,
              SwitchUse::kAnyRun,
              {.low = 0,
               .high = kInfinity,
               .requirement = "the count must be a whole number, 0 or more",
               .limit = 10'000'000,
               .limitWhat = "seats one drawing can show"}},
    Plain("/model", Kind::kText, &O::modelPath),
    Plain("/sensors", Kind::kText, &O::sensorsPath),
    Plain("/obstacles", Kind::kTextList, &O::obstaclePaths),
    Plain("/outmodel", Kind::kText, &O::outModelPath),
    Plain("/outscad", Kind::kText, &O::outScadPath),
    SwitchRow{"/threads",
              Kind::kCount,
              &O::threads,
              SwitchUse::kReport,
              {.low = 0,
               .high = kInfinity,
               .requirement = "the count must be 0 (one per logical processor) or more",
               .limit = 1024,
               .limitWhat = "threads kelvorig can start"}},
    SwitchRow{"/seed",
              Kind::kSeed,
              &O::seed,
              SwitchUse::kAnyRun,
              {.low = 0, .high = 4294967295.0, .requirement = "the seed must be a whole number from 0 to 4294967295"}},
    SwitchRow{
        "/restarts",
        Kind::kCount,
        &O::restarts,
        SwitchUse::kAnneal,
        {.low = 1, .high = kLargestCount, .requirement = "the count must be a whole number from 1 to 2147483647"}},
    SwitchRow{"/nsensors",
              Kind::kCount,
              &O::nSensors,
              SwitchUse::kAnneal,
              {.low = 1,
               .high = kInfinity,
               .requirement = "the count must be a whole number, 1 or more",
               .limit = 32,
               .limitWhat = "sensors kelvorig can evaluate"}},
    SwitchRow{"/maxsurfaceangle",
              Kind::kReal,
              &O::maxSurfaceAngle,
              SwitchUse::kAnneal,
              {.low = -180, .high = 180, .requirement = "the angle must be from -180 to 180 degrees"}},
    // Below 4 orientations their spacing, and so the tightened incidence limit, is not a number.
    SwitchRow{"/norientations",
              Kind::kCount,
              &O::nOrientations,
              SwitchUse::kReport,
              {.low = 4,
               .high = kInfinity,
               .requirement = "the count must be a whole number, 4 or more",
               .limit = 1'000'000,
               .limitWhat = "orientations an anneal can sample"}},
    // 0 keeps the random first layout: a baseline to compare anneals with.
    SwitchRow{
        "/niterations",
        Kind::kCount,
        &O::nIterations,
        SwitchUse::kAnneal,
        {.low = 0, .high = kLargestCount, .requirement = "the count must be a whole number from 0 to 2147483647"}},
    // note: 1 and above keep their own message, which the reading's checks give first.
    SwitchRow{"/coolingrate",
              Kind::kReal,
              &O::coolingRate,
              SwitchUse::kAnneal,
              {.low = 0,
               .high = 1,
               .lowOpen = true,
               .highOpen = true,
               .requirement = "the rate must be greater than 0 and less than 1"}},
    // The score's slope is 3.6369 / (upper - lower) and its midpoint (lower + upper) / 2: bounds
    // closer together, or larger, make them infinite and the score not a number. Any sign is
    // accepted; the range is used, as always, only when both bounds are above 0.
    SwitchRow{"/qualityrange",
              Kind::kRealPair,
              std::array{&O::qualityLow, &O::qualityHigh},
              SwitchUse::kReport,
              {.low = -1e300,
               .high = 1e300,
               .minGap = 1e-300,
               .requirement = "the bounds must be from -1e300 to 1e300, the lower at least 1e-300 below the upper"}},
    SwitchRow{"/maxincidenceangle",
              Kind::kReal,
              &O::maxIncidenceAngle,
              SwitchUse::kReport,
              {.low = 0,
               .high = 180,
               .lowOpen = true,
               .requirement = "the angle must be greater than 0 and at most 180 degrees"}},
    SwitchRow{"/angleresolutiondegrees",
              Kind::kReal,
              &O::angleResolutionDegrees,
              SwitchUse::kReport,
              {.low = 0,
               .high = 180,
               .lowOpen = true,
               .requirement = "the step must be greater than 0 and at most 180 degrees"}},
    // Its sign plays no part: the base station stands at its size in front of the device.
    SwitchRow{"/distancebasemeters",
              Kind::kReal,
              &O::distanceBaseMeters,
              SwitchUse::kReport,
              {.low = -1000,
               .high = 1000,
               .zeroRefused = true,
               .requirement = "the distance must be from -1000 to 1000 metres, not 0"}},
    SwitchRow{"/srbtiltdegrees",
              Kind::kDegreesRadians,
              &O::srbTiltRadians,
              SwitchUse::kReport,
              {.low = -90, .high = 90, .requirement = "the angle must be from -90 to 90 degrees"}},
    Plain("/basestationsensitivity", Kind::kFlag, &O::baseStationSensitivity),
    SwitchRow{"/maxseatdepth",
              Kind::kOptionalReal,
              &O::maxSeatDepth,
              SwitchUse::kAnyRun,
              {.low = 0, .high = kInfinity, .requirement = "the depth must be a finite number of mm, 0 or more"}},
    Plain("/keepout", Kind::kTextList, &O::keepOutPaths),
    SwitchRow{"/minsensorspacing",
              Kind::kOptionalReal,
              &O::minSensorSpacing,
              SwitchUse::kAnyRun,
              {.low = 0, .high = kInfinity, .requirement = "the spacing must be a finite number of mm, 0 or more"}},
    Plain("/normalsfromwinding", Kind::kFlag, &O::normalsFromWinding),
    Plain("/meshunit", Kind::kText, &O::meshUnit),
    Plain("/outsummary", Kind::kText, &O::outSummaryPath),
    Plain("/outpng", Kind::kText, &O::outPngPath),
    Plain("/outhtml", Kind::kText, &O::outHtmlPath),
    Plain("/trackref_from_imu", Kind::kTool, O::Tool::kTrackrefFromImu),
    Plain("/formatconvert", Kind::kTool, O::Tool::kFormatConvert),
};

} // namespace

size_t SwitchRow::ValueCount() const
{
    switch (kind)
    {
    case Kind::kFlag:
        return 0;
    case Kind::kRealPair:
        return 2;
    case Kind::kTool:
        // The IMU tool's file is optional and taken by the tool itself; the conversion's number is not.
        return std::get<CommandOptions::Tool>(field) == CommandOptions::Tool::kFormatConvert ? 1 : 0;
    default:
        return 1;
    }
}

std::span<const SwitchRow> SwitchTable()
{
    return kRows;
}

std::optional<double> ReadWholeNumber(const std::string& text, SwitchRow::Kind kind)
{
    // A leading "+" is what "%d" and "%lf" accept and from_chars does not.
    const char* begin = text.data() + (text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0);
    const char* end = text.data() + text.size();
    if (kind == Kind::kCount || kind == Kind::kSeed)
    {
        long long number = 0;
        const auto [stop, error] = std::from_chars(begin, end, number);
        if (error != std::errc() || stop != end)
            return std::nullopt;
        return static_cast<double>(number);
    }
    double number = 0.0;
    const auto [stop, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        return std::nullopt;
    return number;
}

bool ScanInt(const std::string& text, int32_t& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const long number = std::strtol(begin, &end, 10);
    if (end == begin)
        return false;
    // Out of range saturates rather than wrapping.
    value = static_cast<int32_t>(std::clamp<long>(number, INT32_MIN, INT32_MAX));
    return true;
}

bool ScanDouble(const std::string& text, double& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const double number = std::strtod(begin, &end);
    if (end == begin)
        return false;
    value = number;
    return true;
}

} // namespace kelvorig
