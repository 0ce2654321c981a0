#include "driver/tool_run.h"

#include "config/format_conversion.h"
#include "config/trackref_tool.h"
#include "driver/switch_table.h"

#include <cstdio>

namespace kelvorig {
namespace {

// /trackref_from_imu: the one argument behind it, if any, is the IMU file, whatever it
// looks like. Switches before it have no effect and those behind it are never seen.
int RunTrackrefTool(const std::vector<std::string>& arguments, std::ostream& out)
{
    if (arguments.empty())
    {
        TrackrefSample(out);
        return 0;
    }
    return TrackrefFromFile(arguments[0], out) ? 0 : 1;
}

// /formatconvert <format> <device file>: a format other than 0 or 1 is only a warning.
int RunFormatConversion(const std::vector<std::string>& arguments, std::ostream& out)
{
    const std::string& formatText = arguments[0];
    int32_t format = 0;
    // note: a value that is no number at all is format 0, without a word.
    static_cast<void>(ScanInt(formatText, format));
    if (format != 0 && format != 1)
    {
        std::fprintf(stderr, "Unrecognized json format [ %s ]. Allowed values {0,1}\n", formatText.c_str());
        format = 0;
    }
    if (arguments.size() < 2)
    {
        std::fputs("/formatconvert needs a device file after the format number\n", stderr);
        return 1;
    }
    return ConvertModelFormat(arguments[1], format, out) ? 0 : 1;
}

} // namespace

int RunTool(const CommandOptions& options, std::ostream& out)
{
    if (options.tool == CommandOptions::Tool::kFormatConvert)
        return RunFormatConversion(options.toolArguments, out);
    return RunTrackrefTool(options.toolArguments, out);
}

} // namespace kelvorig
