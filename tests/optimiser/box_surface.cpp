#include "optimiser/box_surface.h"

#include "support/test_meshes.h"

namespace kelvorig::test {

BoxSurface::BoxSurface(uint32_t seed) : path_(directory_.File("box.stl"))
{
    WriteBinaryStl(path_, MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)));
    surface_ = std::make_unique<TrackedSurface>(path_, std::vector<std::string>{}, seed);
}

} // namespace kelvorig::test
