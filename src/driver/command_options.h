#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvorig {

// Everything the command line sets. These defaults are the real ones; the usage text
// names others for /maxincidenceangle and /coolingrate.
struct CommandOptions
{
    std::string modelPath;
    std::string sensorsPath;
    std::vector<std::string> obstaclePaths;
    std::string outModelPath;
    std::string outScadPath;
    double angleResolutionDegrees = 0.5;
    double maxIncidenceAngle = 60.0; // degrees
    double distanceBaseMeters = 2.0;
    double maxSurfaceAngle = 0.0; // degrees
    bool generate = false;
    bool baseStationSensitivity = false;
    bool withScadNormals = false;
    int32_t verifyCoverage = 0;
    int32_t nSensors = -1;
    int32_t nOrientations = 1250;
    int32_t nIterations = 3;
    double coolingRate = 0.96;
    double qualityLow = -1.0;
    double qualityHigh = -1.0;
    double srbTiltRadians = 0.0;
    int32_t threads = 0; // workers of the anneal and the analysis; 0: one per logical processor
    // A tool switch ends the reading: the tool runs on the arguments behind it instead of a job.
    enum class Tool
    {
        kNone,
        kTrackrefFromImu,
        kFormatConvert
    };
    Tool tool = Tool::kNone;
    std::vector<std::string> toolArguments;
    std::optional<int64_t> seed; // run seed of the varying engines, 0 to 4294967295; none: time and process id
    int32_t restarts = 1;        // independent anneals, the best kept
    // Where seats may be, and how meshes are read; none of these changes anything unless given.
    std::optional<double> maxSeatDepth;     // millimetres from a seat along its normal to the hull's outside
    std::vector<std::string> keepOutPaths;  // closed meshes, the sensor surface's unit
    std::optional<double> minSensorSpacing; // millimetres, centre to centre
    bool normalsFromWinding = false;
    std::string meshUnit;       // "mm", "cm", "m" or "in"; empty: inferred from size
    std::string outSummaryPath; // JSON summary of the analysis
    std::string outPngPath;     // map of the analysis grid, PNG or SVG by the name's ending
    std::string outHtmlPath;    // self-contained interactive report
    // Each numeric switch read, with its value as typed ("5 2" for /qualityrange), in order: the
    // checks refuse what the leading-number reading let through.
    std::vector<std::pair<std::string, std::string>> givenNumbers;
    std::vector<std::string> arguments; // the whole command line as given, for the run's record

    // True when /outsummary, /outpng or /outhtml asks for a file.
    bool WantsVisualOutputs() const { return !outSummaryPath.empty() || !outPngPath.empty() || !outHtmlPath.empty(); }
};

} // namespace kelvorig
