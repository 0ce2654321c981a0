#include "support/occluded_cube.h"

namespace kelvorig::test {

TestMesh MakeOccludedCube()
{
    const TestMesh cube = MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f));
    const TestMesh slab = MakeBox(Eigen::Vector3f(0.02f, 0.3f, 0.3f), Eigen::Vector3f(0.09f, 0.0f, 0.0f));
    const TestMesh post = MakeBox(Eigen::Vector3f(0.03f, 0.03f, 0.12f), Eigen::Vector3f(0.0f, 0.0f, 0.11f));
    return Combine(Combine(cube, slab), post);
}

} // namespace kelvorig::test
