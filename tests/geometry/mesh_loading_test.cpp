#include "geometry/mesh_loading.h"

#include "geometry/list_to_matrix.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <array>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::MakeTetrahedron;
using test::TempDir;
using test::WriteBinaryStl;
using test::WriteFile;
using test::WriteTextStl;

TEST(ListToMatrixTest, CopiesEquallyLongListsRowByRow)
{
    Eigen::MatrixXf matrix;
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<float>>{{1, 2, 3}, {4, 5, 6}}, matrix));
    EXPECT_EQ(matrix, (Eigen::MatrixXf(2, 3) << 1, 2, 3, 4, 5, 6).finished());

    ASSERT_TRUE(list_to_matrix(std::vector<std::array<float, 3>>{{7, 8, 9}}, matrix));
    EXPECT_EQ(matrix, Eigen::RowVector3f(7, 8, 9));

    TriangleMatrix wide;
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<int32_t>>{{0, 1, 2, 3}}, wide));
    EXPECT_EQ(wide.rows(), 1);
    EXPECT_EQ(wide.cols(), 4);

    TriangleMatrix narrow;
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<int32_t>>{{}, {}}, narrow));
    EXPECT_EQ(narrow.rows(), 2);
    EXPECT_EQ(narrow.cols(), 0);
}

TEST(ListToMatrixTest, EmptyListGivesAnEmptyMatrix)
{
    Eigen::MatrixXf matrix = Eigen::MatrixXf::Ones(2, 2);
    ASSERT_TRUE(list_to_matrix(std::vector<std::vector<float>>{}, matrix));
    EXPECT_EQ(matrix.rows(), 0);
    EXPECT_EQ(matrix.cols(), 0);
}

TEST(ListToMatrixTest, ListsOfDifferentLengthsAreRefused)
{
    TriangleMatrix matrix;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(list_to_matrix(std::vector<std::vector<int32_t>>{{0, 1, 2, 3}, {4, 5}, {6, 7, 8}}, matrix));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: list_to_matrix() list elements are not all the same size: (min: 2, max: 4)\n");
}

TEST(ReadMeshMatricesTest, FillsVerticesTrianglesAndNormals)
{
    const TempDir dir;
    const test::TestMesh box = MakeBox(Eigen::Vector3f(2, 4, 6));
    WriteBinaryStl(dir.File("box.stl"), box);
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    ASSERT_TRUE(ReadMeshMatrices(dir.File("box.stl"), V, F, N));
    ASSERT_EQ(V.rows(), 36);
    ASSERT_EQ(V.cols(), 3);
    ASSERT_EQ(F.rows(), 12);
    ASSERT_EQ(F.cols(), 3);
    ASSERT_EQ(N.rows(), 12);
    for (Eigen::Index t = 0; t < 12; ++t)
    {
        EXPECT_EQ(F.row(t), Eigen::RowVector3i(3 * t, 3 * t + 1, 3 * t + 2));
        EXPECT_EQ(N.row(t), box.FacetNormal(t).transpose());
        EXPECT_EQ(V.row(3 * t + 2), box.vertices[box.triangles[t][2]].transpose());
    }
}

TEST(ReadMeshMatricesTest, MixedVertexCountsFailInTheTriangleMatrix)
{
    const TempDir dir;
    WriteFile(dir.File("mixed.stl"),
              "solid m\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
              "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\nendloop\n"
              "endfacet\nendsolid m\n");
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ReadMeshMatrices(dir.File("mixed.stl"), V, F, N));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: list_to_matrix() list elements are not all the same size: (min: 3, max: 4)\n");
}

TEST(ReadMeshListTest, StacksFilesInOrderWithShiftedIndices)
{
    const TempDir dir;
    const test::TestMesh box = MakeBox(Eigen::Vector3f(1, 1, 1));
    const test::TestMesh tetrahedron = MakeTetrahedron(3.0f);
    WriteBinaryStl(dir.File("box.stl"), box);
    WriteTextStl(dir.File("tetrahedron.stl"), tetrahedron);
    const std::vector<std::string> paths = {dir.File("tetrahedron.stl"), dir.File("box.stl"),
                                            dir.File("tetrahedron.stl")};
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
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

TEST(ReadMeshListTest, EmptyListLeavesTheMatricesAlone)
{
    VertexMatrix V = VertexMatrix::Ones(3, 3);
    TriangleMatrix F = TriangleMatrix::Zero(1, 3);
    NormalMatrix N = NormalMatrix::Ones(1, 3);
    ASSERT_TRUE(ReadMeshList({}, V, F, N));
    EXPECT_EQ(V, VertexMatrix::Ones(3, 3));
    EXPECT_EQ(F, TriangleMatrix::Zero(1, 3));
}

TEST(ReadMeshListTest, AnyFailingFileFailsTheListAndKeepsNothing)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(1, 1, 1)));
    VertexMatrix V = VertexMatrix::Ones(3, 3);
    TriangleMatrix F = TriangleMatrix::Zero(1, 3);
    NormalMatrix N = NormalMatrix::Ones(1, 3);
    const std::vector<std::string> paths = {dir.File("box.stl"), dir.File("missing.stl"), dir.File("other.stl")};
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ReadMeshList(paths, V, F, N));
    // The first failure stops the list: the file behind it is never opened.
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "IOError: " + dir.File("missing.stl") + " could not be opened...\n");
    EXPECT_EQ(V, VertexMatrix::Ones(3, 3));
    EXPECT_EQ(F, TriangleMatrix::Zero(1, 3));
}

TEST(ReadMeshListTest, EmptyFilesAddNoRows)
{
    const TempDir dir;
    WriteFile(dir.File("empty.stl"), "solid e\nendsolid e\n");
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(1, 1, 1)));
    const std::vector<std::string> paths = {dir.File("empty.stl"), dir.File("box.stl"), dir.File("empty.stl")};
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    ASSERT_TRUE(ReadMeshList(paths, V, F, N));
    EXPECT_EQ(V.rows(), 36);
    EXPECT_EQ(F.rows(), 12);
    EXPECT_EQ(F(11, 2), 35);
}

} // namespace
} // namespace kelvorig
