#pragma once

#include "support/test_meshes.h"

#include <Eigen/Core>

namespace kelvorig::test {

// A 10 cm cube centred on the origin with a wide slab standing 3 cm off its +X face and a
// post on its top: sensors are hidden behind them at some poses, and a sensor on the +X
// face looking along +X is never seen at an incidence limit of 60 degrees.
TestMesh MakeOccludedCube();

// Position and normal of that sensor that the slab always hides.
inline const Eigen::Vector3f kUnderTheSlab(0.05f, 0.01f, -0.02f);
inline const Eigen::Vector3f kUnderTheSlabNormal(1.0f, 0.0f, 0.0f);

} // namespace kelvorig::test
