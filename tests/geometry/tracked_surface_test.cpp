#include "geometry/tracked_surface.h"

#include "geometry/unit_scale.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvorig {
namespace {

using test::MakeBox;

// Bounding-box diagonals under five are metres; the diagonal and not the longest side decides.
TEST(UnitScale, BoundingBoxDiagonalsUnderFiveAreMetres)
{
    VertexMatrix V(3, 3);
    V << -1, -2, 0, 2, 2, 12, 0, 0, 0;
    EXPECT_EQ(MeshExtentDiagonal(V), 13.0f);
    V << 0, 0, 0, 4, 4, 4, 2, 2, 2;
    EXPECT_EQ(InferUnitScale(MeshExtentDiagonal(V)), 0.001);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<float, double> cases[] = {{0.0f, 1.0},         {1.2f, 1.0},      {4.9999995f, 1.0}, {5.0f, 0.001},
                                              {5.0000005f, 0.001}, {1200.0f, 0.001}, {nan, 0.001}};
    for (const auto& [diagonal, scale] : cases)
        EXPECT_EQ(InferUnitScale(diagonal), scale) << diagonal;
}

// Millimetres (a 0.8 x 0.8 x 0.4 m box drawn a thousand times too large) are read in metres;
// obstacles take the surface's scale and their facets come after the surface's. (A surface
// already in metres stays as it is: every test on the 10 cm box would lose its seats otherwise.)
TEST(TrackedSurface, UnitFollowsTheSensorSurfaceAndObstaclesFollow)
{
    const test::TempDir dir;
    test::WriteBinaryStl(dir.File("mm.stl"), MakeBox(Eigen::Vector3f(800, 800, 400)));
    test::WriteBinaryStl(dir.File("big.stl"), MakeBox(Eigen::Vector3f(1000, 1000, 1000), Eigen::Vector3f(0, 0, 2000)));
    const TrackedSurface inMillimetres(dir.File("mm.stl"), {dir.File("big.stl")}, 1);
    ASSERT_TRUE(inMillimetres.isBuilt());
    EXPECT_EQ(inMillimetres.unitScale(), 0.001);
    EXPECT_EQ(std::make_tuple(inMillimetres.triangles().rows(), inMillimetres.vertices().rows()),
              std::make_tuple(12, 36));
    RayHit hit;
    // Up from above the surface the obstacle's bottom is 1.2 m off; down from inside, the surface's 0.3 m.
    ASSERT_TRUE(inMillimetres.intersector().intersectRay(Eigen::Vector3f(0, 0, 0.3f), Eigen::Vector3f::UnitZ(), hit));
    EXPECT_NEAR(hit.hitDistance, 1.2f, 1e-5f);
    EXPECT_GE(hit.primitiveId, 12);
    ASSERT_TRUE(inMillimetres.intersector().intersectRay(Eigen::Vector3f(0, 0, 0.1f), -Eigen::Vector3f::UnitZ(), hit));
    EXPECT_NEAR(hit.hitDistance, 0.3f, 1e-6f);
    EXPECT_LT(hit.primitiveId, 12);
}

// Normals as written, only made unit length, but a zero one is the winding's; areas run over the facets.
TEST(TrackedSurface, NormalsAreMadeUnitLengthAndAreasRunOverTheFacets)
{
    const test::TempDir dir;
    const auto facet = [](const char* normal, const char* vertices)
    { return std::string("facet normal ") + normal + "\nouter loop\n" + vertices + "endloop\nendfacet\n"; };
    const char* const triangle = "vertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n";
    test::WriteFile(dir.File("f.stl"), "solid n\n" + facet("0 0 5", triangle) +
                                           facet("0 0 -1", "vertex 0 0 0\nvertex 1 0 0\nvertex 2 0 0\n") +
                                           facet("0 0 0", "vertex 0 0 0\nvertex 2 0 0\nvertex 0 2 1e-9\n") +
                                           facet("3 4 0", triangle) + "endsolid n\n");
    const TrackedSurface surface(dir.File("f.stl"), {}, 1);
    ASSERT_TRUE(surface.isBuilt());
    EXPECT_EQ(surface.faceNormals().row(0), Eigen::RowVector3f(0, 0, 1));
    EXPECT_EQ(surface.faceNormals().row(1), Eigen::RowVector3f(0, 0, -1));
    EXPECT_TRUE(surface.faceNormals().row(2).isApprox(Eigen::RowVector3f(0, 0, 1)));
    EXPECT_EQ(surface.faceNormals().row(3), Eigen::RowVector3f(0.6f, 0.8f, 0));
    EXPECT_EQ(surface.cumulativeArea(), (std::vector<double>{0.5, 0.5, 2.5, 3.0}));
    EXPECT_EQ(surface.totalArea(), 3.0);
}

} // namespace
} // namespace kelvorig
