#include "geometry/mesh_loading.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::TempDir;
using test::WriteFile;

TEST(ReadMeshListTest, StacksFilesInOrderWithShiftedIndices)
{
    const TempDir dir;
    const test::TestMesh box = MakeBox(Eigen::Vector3f(1, 1, 1));
    const test::TestMesh tetrahedron = test::MakeTetrahedron(3.0f);
    test::WriteBinaryStl(dir.File("box.stl"), box);
    test::WriteTextStl(dir.File("tetrahedron.stl"), tetrahedron);
    WriteFile(dir.File("empty.stl"), "solid e\nendsolid e\n");
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    const std::vector<std::string> paths = {dir.File("tetrahedron.stl"), dir.File("empty.stl"), dir.File("box.stl"),
                                            dir.File("tetrahedron.stl")};
    ASSERT_TRUE(ReadMeshList(paths, V, F, N));
    ASSERT_EQ(V.rows(), 12 + 36 + 12);
    ASSERT_EQ(F.rows(), 4 + 12 + 4);
    ASSERT_EQ(N.rows(), 4 + 12 + 4);
    for (int t = 0; t < static_cast<int>(F.rows()); ++t)
        EXPECT_EQ(F.row(t), Eigen::RowVector3i(3 * t, 3 * t + 1, 3 * t + 2));
    EXPECT_EQ(V.row(12), box.vertices[box.triangles[0][0]].transpose());
    EXPECT_EQ(N.row(4), box.FacetNormal(0).transpose());
    EXPECT_EQ(V.row(48), tetrahedron.vertices[tetrahedron.triangles[0][0]].transpose());
}

TEST(ReadMeshListTest, AnyFailingFileFailsTheListAndKeepsNothing)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(1, 1, 1)));
    // The first failure stops the list: the file behind it is never opened.
    const std::vector<std::string> paths = {dir.File("box.stl"), dir.File("missing.stl"), dir.File("other.stl")};
    VertexMatrix V = VertexMatrix::Ones(3, 3);
    TriangleMatrix F = TriangleMatrix::Zero(1, 3);
    NormalMatrix N = NormalMatrix::Ones(1, 3);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ReadMeshList(paths, V, F, N));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "IOError: " + dir.File("missing.stl") + " could not be opened...\n");
    EXPECT_EQ(V, VertexMatrix::Ones(3, 3));
    EXPECT_EQ(F, TriangleMatrix::Zero(1, 3));
}

} // namespace
} // namespace kelvorig
