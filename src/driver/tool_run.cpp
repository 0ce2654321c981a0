#include "driver/tool_run.h"

#include "config/format_conversion.h"
#include "config/trackref_tool.h"
#include "driver/output_file.h"
#include "driver/switch_table.h"

#include <cerrno>
#include <cstdio>
#include <iostream>

namespace kelvorig {
namespace {

// The exit status of a tool: 1 with its message when it failed, or when its output could not
// be written (a full disk, a closed pipe), which shows only at the flush.
int ToolStatus(const Status& status, std::ostream& out)
{
    std::fputs(status.message().c_str(), stderr);
    if (!status.ok())
        return 1;
    out.flush();
    return ReportStandardOutput(out) ? 0 : 1;
}

// /trackref_from_imu: the one argument behind it, if any, is the IMU file, whatever it
// looks like. Switches before it have no effect and those behind it are never seen.
int RunTrackrefTool(const std::vector<std::string>& arguments, std::ostream& out)
{
    if (arguments.empty())
    {
        TrackrefSample(out);
        return ToolStatus({}, out);
    }
    return ToolStatus(TrackrefFromFile(arguments[0], out, std::cerr), out);
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
    return ToolStatus(ConvertModelFormat(arguments[1], format, out), out);
}

} // namespace

int RunTool(const CommandOptions& options, std::ostream& out)
{
    errno = 0; // what a failed write of the tool leaves here names the reason

    if (options.tool == CommandOptions::Tool::kFormatConvert)
        return RunFormatConversion(options.toolArguments, out);
    return RunTrackrefTool(options.toolArguments, out);
}

} // namespace kelvorig
