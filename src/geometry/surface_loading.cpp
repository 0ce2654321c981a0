#include "geometry/surface_loading.h"

#include <array>
#include <sstream>

namespace kelvorig {
namespace {

struct NamedUnit
{
    const char* name;
    const char* words;
    double metres;
};

constexpr std::array<NamedUnit, 4> kNamedUnits = {{
    {"mm", "millimetres", 0.001},
    {"cm", "centimetres", 0.01},
    {"m", "metres", 1.0},
    {"in", "inches", 0.0254},
}};

} // namespace

std::optional<double> UnitScaleNamed(const std::string& name)
{
    for (const NamedUnit& unit : kNamedUnits)
    {
        if (name == unit.name)
            return unit.metres;
    }
    return std::nullopt;
}

std::string UnitSymbol(double unitScale)
{
    for (const NamedUnit& unit : kNamedUnits)
    {
        if (unitScale == unit.metres)
            return unit.name;
    }
    return UnitName(unitScale);
}

std::string UnitName(double unitScale)
{
    for (const NamedUnit& unit : kNamedUnits)
    {
        if (unitScale == unit.metres)
            return unit.words;
    }
    std::ostringstream text;
    text << "units of " << unitScale << " m";
    return text.str();
}

} // namespace kelvorig
