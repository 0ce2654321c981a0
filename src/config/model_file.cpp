#include "config/model_file.h"

#include "config/device_config.h"
#include "support/runtime_paths.h"
#include "support/text_file.h"

#include <json/reader.h>
#include <json/value.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace kelvorig {
namespace {

constexpr const char* kSectionKey = "pharoscope_config";
constexpr const char* kQuotedSectionKey = "\"pharoscope_config\"";

bool ReadStandaloneSection(const std::string& name, const std::string& text, TrackedObjectModel& model)
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
        failure = exception.what();  // the reader's own limits, such as nesting over 1000 deep
    }
    if (!failure.empty())
    {
        std::fprintf(stderr, "couldn't parse standalone pharoscope_config %s: %s\n", name.c_str(), failure.c_str());
        return false;
    }

    Json::Value wrapper;
    wrapper[kSectionKey] = section;
    try
    {
        // note: the result is dropped on purpose; a section without "channelMap" loads as an
        // invalid model with no sensors.
        model.ParseModelSection(wrapper);
    }
    catch (const Json::Exception& exception)
    {
        // A member of the wrong JSON type.
        std::fprintf(stderr, "kelvorig: error reading %s: %s\n", name.c_str(), exception.what());
        return false;
    }
    return true;
}

} // namespace

bool ReadModel(const std::string& path, TrackedObjectModel& model)
{
    std::string name = path;
    std::string text;
    // note: a substring search, case-sensitive: "x.json.bak" is a path, "x.JSON" a device name.
    if (path.find(".json") != std::string::npos)
    {
        text = ReadTextFile(name);
    }
    else
    {
        name = JoinPath(JoinPath("cfg", "hmd"), path) + ".json";
        text = ReadRuntimeFile(name);
    }

    std::error_code ignored;
    if (text.empty() && std::filesystem::is_directory(name, ignored))
    {
        std::fprintf(stderr, "couldn't read %s: is a directory\n", name.c_str());
        return false;
    }
    if (text.empty())
    {
        std::fprintf(stderr, "couldn't read %s: file is empty or does not exist\n", name.c_str());
        return false;
    }
    return ReadModelText(name, text, model);
}

bool ReadModelText(const std::string& name, const std::string& text, TrackedObjectModel& model)
{
    // The quoted key alone decides the shape, even when it stands in a comment.
    if (text.find(kQuotedSectionKey) == std::string::npos)
        return ReadStandaloneSection(name, text, model);

    DeviceConfig config;
    std::string error;
    if (!config.Parse(error, text))
    {
        std::fprintf(stderr, "couldn't read %s: %s\n", name.c_str(), error.c_str());
        return false;
    }
    model = config.pharoscope_config;
    return true;
}

std::unique_ptr<SensorLayout> LoadSensorLayout(const std::string& path)
{
    TrackedObjectModel model;
    if (!ReadModel(path, model))
        return nullptr;
    return std::make_unique<SensorLayout>(model, kIdentityTransform);
}

} // namespace kelvorig
