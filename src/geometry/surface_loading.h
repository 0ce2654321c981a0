#pragma once

#include <optional>
#include <string>

namespace kelvorig {

// How the sensor surface's file is read beyond what the file itself says. The defaults read
// it as the file states it, with the unit inferred from its size.
struct SurfaceLoading
{
    bool normalsFromWinding = false; // every facet's normal from its winding, not the file's
    std::optional<double> unitScale; // metres per file unit for all meshes; none: inferred
};

// Metres per unit for "mm", "cm", "m" and "in"; nothing for any other name.
std::optional<double> UnitScaleNamed(const std::string& name);

// The unit's name in words ("millimetres") for the scales of UnitScaleNamed, else
// "units of <scale> m".
std::string UnitName(double unitScale);
// The same as /meshunit names it ("mm"), with UnitName's words for any other scale.
std::string UnitSymbol(double unitScale);

} // namespace kelvorig
