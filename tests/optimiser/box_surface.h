#pragma once

#include "geometry/tracked_surface.h"
#include "support/cli_runner.h"

#include <cstdint>
#include <memory>
#include <string>

namespace kelvorig::test {

// A closed cube of side 0.1 m centred on the origin, outward normals, written as binary STL
// into a temporary directory and loaded as a TrackedSurface whose engine has a fixed seed.
// Two objects with the same seed draw the same seats.
class BoxSurface
{
public:
    explicit BoxSurface(uint32_t seed = 4242);

    TrackedSurface& surface() { return *surface_; }
    const std::string& path() const { return path_; }

private:
    TempDir directory_;
    std::string path_;
    std::unique_ptr<TrackedSurface> surface_;
};

} // namespace kelvorig::test
