#include "config/model_file.h"

#include "config/json_nesting.h"
#include "config/layout_checks.h"

#include "config/device_config.h"
#include "support/runtime_paths.h"
#include "support/text_file.h"

#include <json/reader.h>
#include <json/value.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace kelvorig {
namespace {

constexpr const char* kSectionKey = "pharoscope_config";
constexpr const char* kQuotedSectionKey = "\"pharoscope_config\"";

Status ReadStandaloneSection(const std::string& name, const std::string& text, TrackedObjectModel& model,
                             std::string& warnings)
{
    Json::Value section;
    Json::Reader reader;
    std::string failure;
    try
    {
        if (!reader.parse(text, section, true))
            failure = reader.getFormattedErrorMessages();
    }
    catch (const Json::Exception& exception)
    {
        failure = exception.what(); // the reader's own limits, such as nesting over 1000 deep
    }
    if (!failure.empty())
        return Status::Failure("couldn't parse standalone pharoscope_config " + name + ": " + failure + "\n");

    if (Status checked = CheckLayoutSection(name, section, warnings); !checked)
        return checked;
    Json::Value wrapper;
    wrapper[kSectionKey] = std::move(section);
    try
    {
        // note: the result is dropped on purpose; a section without "channelMap" loads as an
        // invalid model with no sensors.
        model.ParseModelSection(wrapper);
    }
    catch (const Json::Exception& exception)
    {
        // A member of the wrong JSON type.
        return Status::Failure("kelvorig: error reading " + name + ": " + exception.what() + "\n");
    }
    return {};
}

} // namespace

Status ReadModel(const std::string& path, TrackedObjectModel& model, std::string* warnings)
{
    std::string name = path;
    std::string text;
    std::error_code notADirectory;
    // note: a substring search, case-sensitive: "x.json.bak" is a path, "x.JSON" a device name.
    if (path.find(".json") != std::string::npos)
    {
        text = ReadTextFile(name);
    }
    else if (std::filesystem::is_directory(path, notADirectory))
    {
        // A folder named on the command line is one, whatever a device name could make of it.
        return Status::Failure("couldn't read " + path + ": is a directory\n");
    }
    else
    {
        name = JoinPath(JoinPath("cfg", "hmd"), path) + ".json";
        text = ReadRuntimeFile(name);
    }

    if (text.empty())
        return Status::Failure("couldn't read " + name + ": " + UnreadableReason(name) + "\n");
    return ReadModelText(name, text, model, warnings);
}

Status ReadModelText(const std::string& name, const std::string& text, TrackedObjectModel& model, std::string* warnings)
{
    std::string ignored;
    std::string& said = warnings != nullptr ? *warnings : ignored;
    if (NestedTooDeep(text))
        return Status::Failure("couldn't read " + name + ": nested more than " + std::to_string(kMaxJsonNesting) +
                               " levels deep\n");
    // The quoted key alone decides the shape, even when it stands in a comment.
    if (text.find(kQuotedSectionKey) == std::string::npos)
        return ReadStandaloneSection(name, text, model, said);

    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, text))
        return Status::Failure("couldn't read " + name + ": " + error + "\n");
    // The device file parsed, so its section parses again, as it stands in the file, for the checks.
    Json::Value root;
    if (Json::Reader().parse(text, root, false) && root.isObject())
    {
        if (Status checked = CheckLayoutSection(name, root[kSectionKey], said); !checked)
            return checked;
    }
    model = config.pharoscope_config;
    return {};
}

} // namespace kelvorig
