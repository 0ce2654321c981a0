#include "driver/command_line.h"

#include "driver/usage.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"

#include <cctype>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kelvorig {
namespace {

// Most sensors one pose can see in the quality score, and so the most a layout may have.
constexpr int32_t kMaxEvaluatedSensors = static_cast<int32_t>(QualityEvaluator::kMaxSensors);

bool EqualsIgnoringCase(const std::string& text, const char* name)
{
    size_t i = 0;
    for (; i < text.size() && name[i] != '\0'; ++i)
    {
        if (std::tolower(static_cast<unsigned char>(text[i])) != std::tolower(static_cast<unsigned char>(name[i])))
            return false;
    }
    return i == text.size() && name[i] == '\0';
}

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

} // namespace

bool ScanInt(const std::string& text, int32_t& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const long number = std::strtol(begin, &end, 10);
    if (end == begin)
        return false;
    // Out of range saturates rather than wrapping.
    if (number > INT32_MAX)
        value = INT32_MAX;
    else if (number < INT32_MIN)
        value = INT32_MIN;
    else
        value = static_cast<int32_t>(number);
    return true;
}

bool ScanInt64(const std::string& text, int64_t& value)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const long long number = std::strtoll(begin, &end, 10);  // saturates when out of range
    if (end == begin)
        return false;
    value = number;
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

bool ReadCommandLine(const std::vector<std::string>& arguments, CommandOptions& options)
{
    bool argumentError = false;
    for (size_t i = 0; i < arguments.size() && !argumentError; ++i)
    {
        const std::string& argument = arguments[i];
        const size_t following = arguments.size() - i - 1;
        // A switch is only itself when all its values follow; they are taken whatever they
        // look like, a leading "/" included.
        const auto is = [&](const char* name, size_t valueCount)
        {
            return following >= valueCount && EqualsIgnoringCase(argument, name);
        };

        if (argument.empty() || argument[0] != '/')
        {
            std::fprintf(stderr, "Unrecognized command line argument [ %s ].\n", argument.c_str());
            argumentError = true;
        }
        else if (is("/generate", 0))
            options.generate = true;
        else if (is("/withscadnormals", 0))
            options.withScadNormals = true;
        else if (is("/verifycoverage", 1))
            argumentError = !ScanInt(arguments[++i], options.verifyCoverage);
        else if (is("/model", 1))
            options.modelPath = arguments[++i];
        else if (is("/sensors", 1))
            options.sensorsPath = arguments[++i];
        else if (is("/obstacles", 1))
            options.obstaclePaths.push_back(arguments[++i]);
        else if (is("/outmodel", 1))
            options.outModelPath = arguments[++i];
        else if (is("/outscad", 1))
            options.outScadPath = arguments[++i];
        else if (is("/maxincidenceangle", 1))
            argumentError = !ScanDouble(arguments[++i], options.maxIncidenceAngle);
        else if (is("/maxsurfaceangle", 1))
            argumentError = !ScanDouble(arguments[++i], options.maxSurfaceAngle);
        else if (is("/coolingrate", 1))
            argumentError = !ScanDouble(arguments[++i], options.coolingRate);
        else if (is("/nsensors", 1))
            argumentError = !ScanInt(arguments[++i], options.nSensors);
        else if (is("/norientations", 1))
            argumentError = !ScanInt(arguments[++i], options.nOrientations);
        else if (is("/niterations", 1))
            argumentError = !ScanInt(arguments[++i], options.nIterations);
        else if (is("/angleresolutiondegrees", 1))
            argumentError = !ScanDouble(arguments[++i], options.angleResolutionDegrees);
        else if (is("/distancebasemeters", 1))
            argumentError = !ScanDouble(arguments[++i], options.distanceBaseMeters);
        else if (is("/qualityrange", 2))
        {
            // Both values are scanned, and put in order, before either failure counts.
            const bool lowRead = ScanDouble(arguments[++i], options.qualityLow);
            const bool highRead = ScanDouble(arguments[++i], options.qualityHigh);
            if (options.qualityLow > options.qualityHigh)
                std::swap(options.qualityLow, options.qualityHigh);
            argumentError = !(lowRead && highRead);
        }
        else if (is("/trackref_from_imu", 0) || is("/formatconvert", 1))
        {
            options.tool = is("/formatconvert", 1) ? CommandOptions::Tool::kFormatConvert
                                                   : CommandOptions::Tool::kTrackrefFromImu;
            options.toolArguments.assign(arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1, arguments.end());
            break;
        }
        else if (is("/srbtiltdegrees", 1))
        {
            double degrees = 0.0;
            argumentError = !ScanDouble(arguments[++i], degrees);
            if (!argumentError)
                options.srbTiltRadians = DegreesToRadians(degrees);
        }
        else if (is("/basestationsensitivity", 0))
            options.baseStationSensitivity = true;
        else if (is("/threads", 1))
            argumentError = !ScanInt(arguments[++i], options.threads);
        else if (is("/seed", 1))
        {
            int64_t seed = 0;
            argumentError = !ScanInt64(arguments[++i], seed);
            if (!argumentError)
                options.seed = seed;
        }
        else if (is("/restarts", 1))
            argumentError = !ScanInt(arguments[++i], options.restarts);
        else if (is("/maxseatdepth", 1) || is("/minsensorspacing", 1))
        {
            std::optional<double>& value = is("/maxseatdepth", 1) ? options.maxSeatDepth : options.minSensorSpacing;
            value = 0.0;
            argumentError = !ScanDouble(arguments[++i], *value);
        }
        else if (is("/keepout", 1))
            options.keepOutPaths.push_back(arguments[++i]);
        else if (is("/normalsfromwinding", 0))
            options.normalsFromWinding = true;
        else if (is("/meshunit", 1))
            options.meshUnit = arguments[++i];
        else if (is("/outsummary", 1))
            options.outSummaryPath = arguments[++i];
        else if (is("/outpng", 1))
            options.outPngPath = arguments[++i];
        else if (is("/outhtml", 1))
            options.outHtmlPath = arguments[++i];
        else
        {
            std::fprintf(stderr, "Unrecognized command line switch [ %s ].\n", argument.c_str());
            argumentError = true;
        }
    }
    return !argumentError;
}

bool CheckCommandLine(const CommandOptions& options, bool argumentError)
{
    // note: these come before the argument error on purpose, so that a value that failed
    // under /generate can surface as one of their messages.
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
    if (options.threads < 0)
    {
        std::fprintf(stderr, "/threads %d: the count must be 0 (one per logical processor) or more\n",
                     options.threads);
        return false;
    }
    if (options.seed && (*options.seed < 0 || *options.seed > UINT32_MAX))
    {
        std::fprintf(stderr, "/seed %lld: the seed must be a whole number from 0 to 4294967295\n",
                     static_cast<long long>(*options.seed));
        return false;
    }
    if (options.restarts < 1)
    {
        std::fprintf(stderr, "/restarts %d: the count must be 1 or more\n", options.restarts);
        return false;
    }
    if (options.generate && options.nSensors > kMaxEvaluatedSensors)
    {
        std::fprintf(stderr, "/nsensors %d is more than the %d sensors kelvorig can evaluate\n", options.nSensors,
                     kMaxEvaluatedSensors);
        return false;
    }
    return true;
}

} // namespace kelvorig
