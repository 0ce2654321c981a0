#include "config/layout_checks.h"

#include <cmath>
#include <map>

namespace kelvorig {
namespace {

// True when `entry` is an array of three numbers, all finite, and, for a normal, not all zero.
bool IsSoundTriple(const Json::Value& entry, bool normal)
{
    if (!entry.isArray() || entry.size() != 3)
        return false;
    double squared = 0.0;
    for (Json::ArrayIndex k = 0; k < 3; ++k)
    {
        if (!entry[k].isNumeric() || !std::isfinite(entry[k].asDouble()))
            return false;
        squared += entry[k].asDouble() * entry[k].asDouble();
    }
    return !normal || squared > 0.0;
}

void Warn(std::string& warnings, const std::string& name, const std::string& fault)
{
    warnings += "WARNING: \"" + name + "\": " + fault + "\n";
}

} // namespace

Status CheckLayoutSection(const std::string& name, const Json::Value& section, std::string& warnings)
{
    if (!section.isObject())
        return {};
    const Json::Value& ids = section["channelMap"];
    if (!ids.isArray())
    {
        Warn(warnings, name, "no channelMap array, so the layout has no sensor");
        return {};
    }
    for (const char* key : {"modelPoints", "modelNormals"})
    {
        const Json::Value& list = section[key];
        if (!list.isArray())
            continue;
        for (Json::ArrayIndex i = 0; i < list.size(); ++i)
        {
            if (!IsSoundTriple(list[i], key[5] == 'N'))
                return Status::Failure("couldn't read " + name + ": " + key + " entry " + std::to_string(i) +
                                       " is not " +
                                       (key[5] == 'N' ? "a direction (three finite numbers, not all 0)"
                                                      : "a point (three finite numbers)") +
                                       "\n");
        }
    }
    const Json::ArrayIndex points = section["modelPoints"].size();
    const Json::ArrayIndex normals = section["modelNormals"].size();
    if (ids.size() != points || ids.size() != normals)
        Warn(warnings, name,
             "channelMap has " + std::to_string(ids.size()) + " entries, modelPoints " + std::to_string(points) +
                 " and modelNormals " + std::to_string(normals) + ": lists of different lengths give no sensor");
    std::map<int, int> uses;
    for (const Json::Value& id : ids)
    {
        if (id.isInt() && id.asInt() >= 0 && ++uses[id.asInt()] == 2)
            Warn(warnings, name,
                 "sensor id " + std::to_string(id.asInt()) + " is given more than once; each entry counts");
    }
    return {};
}

} // namespace kelvorig
