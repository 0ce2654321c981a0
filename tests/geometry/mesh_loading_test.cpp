#include "geometry/mesh_loading.h"

#include "geometry/list_to_matrix.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::TempDir;
using test::WriteFile;

TEST(ListToMatrixTest, CopiesEquallyLongListsAndRefusesRagged)
{
    Eigen::MatrixXf matrix = Eigen::MatrixXf::Ones(2, 2);
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<float>>{{1, 2, 3}, {4, 5, 6}}, matrix));
    EXPECT_EQ(matrix, (Eigen::MatrixXf(2, 3) << 1, 2, 3, 4, 5, 6).finished());
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<float>>{}, matrix));
    EXPECT_EQ(matrix.size(), 0);

    TriangleMatrix ragged;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(list_to_matrix(std::vector<std::vector<int32_t>>{{0, 1, 2, 3}, {4, 5}, {6, 7, 8}}, ragged));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: list_to_matrix() list elements are not all the same size: (min: 2, max: 4)\n");
}

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
    for (Eigen::Index t = 0; t < F.rows(); ++t)
        EXPECT_EQ(F.row(t), Eigen::RowVector3i(3 * t, 3 * t + 1, 3 * t + 2));
    EXPECT_EQ(V.row(12), box.vertices[box.triangles[0][0]].transpose());
    EXPECT_EQ(N.row(4), box.FacetNormal(0).transpose());
    EXPECT_EQ(V.row(48), tetrahedron.vertices[tetrahedron.triangles[0][0]].transpose());
}

TEST(ReadMeshListTest, AnyFailingFileFailsTheListAndKeepsNothing)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(1, 1, 1)));
    WriteFile(dir.File("mixed.stl"),
              "solid m\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
              "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\nendloop\n"
              "endfacet\nendsolid m\n");
    const struct
    {
        std::vector<std::string> paths;
        std::string err;
    } cases[] = {
        // The first failure stops the list: the file behind it is never opened.
        {{dir.File("box.stl"), dir.File("missing.stl"), dir.File("other.stl")},
         "IOError: " + dir.File("missing.stl") + " could not be opened...\n"},
        {{dir.File("mixed.stl")}, "Error: list_to_matrix() list elements are not all the same size: (min: 3, max: 4)\n"},
    };
    for (const auto& c : cases)
    {
        VertexMatrix V = VertexMatrix::Ones(3, 3);
        TriangleMatrix F = TriangleMatrix::Zero(1, 3);
        NormalMatrix N = NormalMatrix::Ones(1, 3);
        testing::internal::CaptureStderr();
        EXPECT_FALSE(ReadMeshList(c.paths, V, F, N));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.err);
        EXPECT_EQ(V, VertexMatrix::Ones(3, 3));
        EXPECT_EQ(F, TriangleMatrix::Zero(1, 3));
    }
}

} // namespace
} // namespace kelvorig
