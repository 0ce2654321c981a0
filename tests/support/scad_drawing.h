#pragma once

#include <string>

namespace kelvorig::test {

// The cylinder line of a sensor marker drawn without normals.
inline const std::string kScadDisc = "\t\tcylinder(r = 0.0025, h = 0.001);\n";

// The fixed part of every drawing behind its sensor rows, from the list's closing "];"
// on; `marker` is the cylinder line.
std::string ScadDrawingTail(const std::string& marker);

} // namespace kelvorig::test
