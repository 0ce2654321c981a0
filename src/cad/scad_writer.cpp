#include "cad/scad_writer.h"

#include "support/angles.h"

#include <Eigen/Geometry>

#include <cmath>
#include <sstream>

namespace kelvorig {
namespace {

// One import line of a mesh, its backslashes doubled for OpenSCAD's string syntax. `color` is
// the whole argument text of color(): a quoted name, perhaps with an opacity.
std::string ImportLine(const char* color, const std::string& path)
{
    const std::string line = std::string("\tcolor(") + color + ") import(\"" + path + "\", convexity = 4);\n";
    return ReplaceAll(line, "\\", "\\\\");
}

} // namespace

std::string WriteScadFile(const TrackedObjectModel& model, const std::string& surfacePath,
                          const std::vector<std::string>& obstaclePaths, double scale, bool withScadNormals,
                          const std::vector<std::string>& keepOutPaths)
{
    std::ostringstream text;
    // Meshes stay in their own unit; this brings them to millimetres.
    const double meshScale = scale * kMillimetresPerMetre;
    text << "\n$fn = 40;\n\n";
    text << "scale([" << meshScale << ", " << meshScale << ", " << meshScale << "]) {\n";
    if (!surfacePath.empty())
        text << ImportLine("\"orange\"", surfacePath);
    for (const std::string& obstaclePath : obstaclePaths)
        text << ImportLine("\"white\"", obstaclePath);
    for (const std::string& keepOutPath : keepOutPaths)
        text << ImportLine("\"red\", 0.3", keepOutPath);
    text << "}\n\n";

    text << "sensors = [\n";
    for (size_t i = 0; i < model.modelPoints.size(); ++i)
    {
        // note: a model of bare seats (no channelMap) gets its row index as id, and a missing
        // normal draws the marker unturned, along +Z.
        const Eigen::Vector3f& p = model.modelPoints[i];
        const Eigen::Vector3f normal = i < model.modelNormals.size() ? model.modelNormals[i] : Eigen::Vector3f::UnitZ();
        text << "\t[ [ ";
        if (i < model.channelMap.size())
            text << model.channelMap[i];
        else
            text << i;
        text << ", \"lime\" ], [ " << p.x() << ", " << p.y() << ", " << p.z() << "], " << RotationText(normal)
             << " ],\n";
    }
    text << "];\n\n";

    text << "scale([1000, 1000, 1000])\n";
    text << "\tconstellation();\n\n";
    text << "module constellation() {\n";
    text << "\tfor(s = sensors)\n";
    text << "\t\ttranslate(s[1])\n";
    text << "\t\t\trotate(s[2], s[3])\n";
    text << "\t\t\t\tsensor(s[0]);\n";
    text << "}\n\n";
    text << "module sensor(spec) {\n";
    text << "\tcolor(spec[1])\n";
    if (withScadNormals)
        text << "\t\tcylinder(r1 = 0.0025, r2 = 0, h = 0.005);\n"; // a cone pointing along the normal
    else
        text << "\t\tcylinder(r = 0.0025, h = 0.001);\n";
    text << "}\n";
    return text.str();
}

std::string RotationText(const Eigen::Vector3f& normal)
{
    const Eigen::Vector3f zAxis = Eigen::Vector3f::UnitZ();
    // note: close to +-Z the axis is always X; the marker keeps the tilt's size, not its direction.
    const Eigen::Vector3f axis = std::fabs(static_cast<double>(normal.z())) > 0.9999
                                     ? Eigen::Vector3f::UnitX()
                                     : Eigen::Vector3f(normal.cross(zAxis).normalized());

    const float cosine = 0.0f * normal.x() + 0.0f * normal.y() + 1.0f * normal.z();
    const float halfTurns = std::acos(cosine) * 180.0f;
    const float degrees = static_cast<float>(static_cast<double>(halfTurns) * 0.3183098861837907);

    // note: the negative angle about n x Z, the same turn as the positive one about Z x n.
    std::ostringstream text;
    text << -degrees << ", [" << axis.x() << ", " << axis.y() << ", " << axis.z() << "]";
    return text.str();
}

std::string ReplaceAll(std::string text, const std::string& find, const std::string& replacement)
{
    if (find.empty())
        return text;
    for (size_t at = text.find(find); at != std::string::npos; at = text.find(find, at + replacement.size()))
        text.replace(at, find.size(), replacement);
    return text;
}

} // namespace kelvorig
