#include "geometry/mesh_loading.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// Files stack in order with shifted indices; any failing file fails the list, stops it (the
// file behind is never opened) and keeps nothing.
TEST(ReadMeshList, StacksFilesInOrderOrFailsWhole)
{
    const test::TempDir dir;
    const test::TestMesh box = test::MakeBox(Eigen::Vector3f(1, 1, 1)), tetrahedron = test::MakeTetrahedron(3.0f);
    test::WriteBinaryStl(dir.File("box.stl"), box);
    test::WriteFile(dir.File("tetrahedron.stl"), test::TextStl(tetrahedron));
    test::WriteFile(dir.File("empty.stl"), "solid e\nendsolid e\n");
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    ASSERT_TRUE(ReadMeshList(std::vector<std::string>{dir.File("tetrahedron.stl"), dir.File("empty.stl"),
                                                      dir.File("box.stl"), dir.File("tetrahedron.stl")},
                             V, F, N));
    ASSERT_EQ(std::make_tuple(V.rows(), F.rows(), N.rows()), std::make_tuple(60, 20, 20));
    for (int t = 0; t < static_cast<int>(F.rows()); ++t)
        EXPECT_EQ(F.row(t), Eigen::RowVector3i(3 * t, 3 * t + 1, 3 * t + 2));
    EXPECT_EQ(V.row(12), box.vertices[box.triangles[0][0]].transpose());
    EXPECT_EQ(N.row(4), box.FacetNormal(0).transpose());
    EXPECT_EQ(V.row(48), tetrahedron.vertices[tetrahedron.triangles[0][0]].transpose());

    const VertexMatrix before = V;
    const Status read = ReadMeshList(
        std::vector<std::string>{dir.File("box.stl"), dir.File("missing.stl"), dir.File("other.stl")}, V, F, N);
    EXPECT_EQ(read.message(), "IOError: " + dir.File("missing.stl") + " could not be opened...\n");
    EXPECT_EQ(V, before);
}

} // namespace
} // namespace kelvorig
