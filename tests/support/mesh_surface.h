#pragma once

#include "geometry/tracked_surface.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <cstdint>
#include <memory>
#include <string>

namespace kelvorig::test {

// A test mesh written as binary STL into a temporary directory and loaded as a
// TrackedSurface whose engine has a fixed seed, so that two objects with the same mesh and
// seed draw the same seats. The default is a closed cube of side 0.1 m centred on the origin.
class MeshSurface
{
public:
    explicit MeshSurface(const TestMesh& mesh = MakeBox(Eigen::Vector3f(0.1f, 0.1f, 0.1f)), uint32_t seed = 4242);

    TrackedSurface& surface() { return *surface_; }
    const std::string& path() const { return path_; }

private:
    TempDir directory_;
    std::string path_;
    std::unique_ptr<TrackedSurface> surface_;
};

} // namespace kelvorig::test
