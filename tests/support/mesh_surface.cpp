#include "support/mesh_surface.h"

namespace kelvorig::test {

MeshSurface::MeshSurface(const TestMesh& mesh, uint32_t seed) : path_(directory_.File("surface.stl"))
{
    WriteBinaryStl(path_, mesh);
    surface_ = std::make_unique<TrackedSurface>(path_, std::vector<std::string>{}, seed);
}

} // namespace kelvorig::test
