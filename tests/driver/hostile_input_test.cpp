#include "geometry/stl_reader.h"
#include "support/mesh_surface.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace kelvorig {
namespace {

TEST(HostileInput, MovesPerTemperatureAreCountedIn64Bits)
{
    test::MeshSurface box;
    PlacementLayout layout(8);
    const SensorPlacementAnnealer annealer(layout, box.surface(), 2'000'000'000, 20, 0.5, -1.0, -1.0, 1u);
    EXPECT_EQ(annealer.movesPerTemperature(), 16'000'000'000);
}

TEST(HostileInput, StlBytesInMemoryReadAsTheFileDoes)
{
    test::TempDir dir;
    for (const std::string& bytes : {test::BinaryStl(test::MakeTetrahedron(0.1f)), test::TextStl(test::MakeBox({1, 2, 3}))})
    {
        test::WriteFile(dir.File("mesh.stl"), bytes);
        FloatLists vertices[2], normals[2];
        IndexLists facets[2];
        ASSERT_TRUE(ReadStlFile(dir.File("mesh.stl"), vertices[0], facets[0], normals[0]));
        ASSERT_TRUE(ReadStlBytes("mesh", bytes, vertices[1], facets[1], normals[1]));
        EXPECT_TRUE(vertices[0] == vertices[1] && facets[0] == facets[1] && normals[0] == normals[1]);
    }
}

} // namespace
} // namespace kelvorig
