#include "geometry/tracked_surface.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::TempDir;
using test::WriteBinaryStl;
using test::WriteFile;
using test::WriteTextStl;

constexpr uint32_t kSeed = 1234;

TEST(TrackedSurfaceTest, UnitFollowsTheSensorSurfaceDiagonal)
{
    const TempDir dir;
    // Diagonals 1.2 and 1200: metres and millimetres.
    const test::TestMesh metres = MakeBox(Eigen::Vector3f(0.8f, 0.8f, 0.4f));
    const test::TestMesh millimetres = test::Scaled(metres, 1000.0f);
    WriteBinaryStl(dir.File("metres.stl"), metres);
    WriteBinaryStl(dir.File("millimetres.stl"), millimetres);

    const TrackedSurface inMetres(dir.File("metres.stl"), {}, kSeed);
    EXPECT_EQ(inMetres.unitScale(), 1.0);
    EXPECT_EQ(inMetres.vertices().row(0), metres.vertices[metres.triangles[0][0]].transpose());

    const TrackedSurface inMillimetres(dir.File("millimetres.stl"), {}, kSeed);
    EXPECT_EQ(inMillimetres.unitScale(), 0.001);
    for (Eigen::Index row = 0; row < inMillimetres.vertices().rows(); ++row)
    {
        const size_t t = static_cast<size_t>(row / 3);
        const Eigen::Vector3f file = millimetres.vertices[millimetres.triangles[t][row % 3]];
        EXPECT_EQ(inMillimetres.vertices().row(row), (file * 0.001f).transpose());
    }
    const Eigen::Vector3f extent =
        inMillimetres.vertices().colwise().maxCoeff() - inMillimetres.vertices().colwise().minCoeff();
    EXPECT_NEAR(extent.norm(), 1.2f, 1e-6f);
}

TEST(TrackedSurfaceTest, ObstaclesTakeTheSurfaceScale)
{
    const TempDir dir;
    // A 50 mm sensor box, and an obstacle twenty times larger standing 2000 mm above it.
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(50, 50, 50)));
    WriteBinaryStl(dir.File("big.stl"), MakeBox(Eigen::Vector3f(1000, 1000, 1000), Eigen::Vector3f(0, 0, 2000)));
    const TrackedSurface surface(dir.File("box.stl"), {dir.File("big.stl")}, kSeed);
    ASSERT_TRUE(surface.isBuilt());
    EXPECT_EQ(surface.unitScale(), 0.001);
    EXPECT_EQ(surface.triangles().rows(), 12);
    EXPECT_EQ(surface.vertices().rows(), 36);

    RayHit hit;
    ASSERT_TRUE(surface.intersector().intersectRay(Eigen::Vector3f(0, 0, 0.1f), Eigen::Vector3f::UnitZ(), hit));
    EXPECT_NEAR(hit.hitDistance, 1.4f, 1e-5f);
    EXPECT_GE(hit.primitiveId, 12) << "obstacle facets come after the sensor surface's";
    ASSERT_TRUE(surface.intersector().intersectRay(Eigen::Vector3f(0, 0, 0.1f), -Eigen::Vector3f::UnitZ(), hit));
    EXPECT_NEAR(hit.hitDistance, 0.075f, 1e-6f);
    EXPECT_LT(hit.primitiveId, 12);
}

std::string Facet(const char* normal, const char* vertices)
{
    return std::string("facet normal ") + normal + "\nouter loop\n" + vertices + "endloop\nendfacet\n";
}

TEST(TrackedSurfaceTest, NormalsAreMadeUnitLengthAndAreasRunOverTheFacets)
{
    const TempDir dir;
    const char* const triangle = "vertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";
    // Areas 0.5, 0 (degenerate), 2 and 0.5; normals as written, only scaled.
    WriteFile(dir.File("facets.stl"), "solid n\n" + Facet("0 0 5", triangle) +
                                          Facet("0 0 -1", "vertex 0 0 0\nvertex 1 0 0\nvertex 2 0 0\n") +
                                          Facet("0 0 0", "vertex 0 0 0\nvertex 2 0 0\nvertex 0 2 1e-9\n") +
                                          Facet("3 4 0", triangle) + "endsolid n\n");
    const TrackedSurface surface(dir.File("facets.stl"), {}, kSeed);
    ASSERT_TRUE(surface.isBuilt());
    EXPECT_EQ(surface.faceNormals().row(0), Eigen::RowVector3f(0, 0, 1));
    EXPECT_EQ(surface.faceNormals().row(1), Eigen::RowVector3f(0, 0, -1));
    EXPECT_TRUE(surface.faceNormals().row(2).array().isNaN().all());
    EXPECT_EQ(surface.faceNormals().row(3), Eigen::RowVector3f(0.6f, 0.8f, 0));
    EXPECT_EQ(surface.cumulativeArea(), (std::vector<double>{0.5, 0.5, 2.5, 3.0}));
    EXPECT_EQ(surface.totalArea(), 3.0);
}

} // namespace
} // namespace kelvorig
