#include "cad/scad_writer.h"

namespace kelvorig {

// Placeholder until the OpenSCAD writer lands.
std::string WriteScadFile(const TrackedObjectModel&, const std::string&, const std::vector<std::string>&, double,
                          bool)
{
    return std::string();
}

std::string RotationText(const Eigen::Vector3f&) { return std::string(); }

std::string ReplaceAll(std::string text, const std::string&, const std::string&) { return text; }

} // namespace kelvorig
