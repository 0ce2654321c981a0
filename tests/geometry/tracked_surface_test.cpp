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

// Builds a surface with stderr captured, so that reader messages can be checked.
struct Built
{
    std::unique_ptr<TrackedSurface> surface;
    std::string err;
};

Built Build(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths = {})
{
    Built built;
    testing::internal::CaptureStderr();
    built.surface = std::make_unique<TrackedSurface>(surfacePath, obstaclePaths, kSeed);
    built.err = testing::internal::GetCapturedStderr();
    return built;
}

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

TEST(TrackedSurfaceTest, FinalSeedDrivesTheDraws)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("sphere.stl"), test::MakeSphere(1.0f, 10, 20));
    TrackedSurface first(dir.File("sphere.stl"), {}, kSeed);
    TrackedSurface second(dir.File("sphere.stl"), {}, kSeed);
    RandomEngine engine(kSeed);
    const std::vector<double>& table = first.cumulativeArea();
    for (int i = 0; i < 100; ++i)
    {
        const double place = DrawRange(engine, 0.0, first.totalArea());
        const int32_t expected =
            static_cast<int32_t>(std::upper_bound(table.begin(), table.end(), place) - table.begin());
        EXPECT_EQ(first.PickTriangle(), expected);
        EXPECT_EQ(second.PickTriangle(), expected);
    }
}

TEST(TrackedSurfaceTest, UnreadableOrEmptySurfacesAreNotBuilt)
{
    const TempDir dir;
    WriteFile(dir.File("empty.stl"), "solid e\nendsolid e\n");
    WriteFile(dir.File("broken.stl"), "solid b\nfacet normal 0 0 1\n");
    WriteFile(dir.File("novertices.stl"), "solid v\nfacet normal 0 0 1\nouter loop\nendloop\nendfacet\nendsolid v\n");
    WriteFile(dir.File("twovertices.stl"),
              "solid v\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\nendfacet\nendsolid v\n");
    const struct
    {
        std::string name;
        std::string err;
    } cases[] = {
        {"missing.stl", "IOError: " + dir.File("missing.stl") + " could not be opened...\n"},
        {"empty.stl", ""},
        {"broken.stl", "IOError: " + dir.File("broken.stl") + " bad format (2).\n"},
        {"novertices.stl", ""},
        {"twovertices.stl", ""},
    };
    for (const auto& c : cases)
    {
        const Built built = Build(dir.File(c.name));
        EXPECT_FALSE(built.surface->isBuilt()) << c.name;
        EXPECT_EQ(built.err, c.err) << c.name;
        EXPECT_EQ(built.surface->triangles().rows(), 0) << c.name;
    }
}

TEST(TrackedSurfaceTest, AnyObstacleFailureUnbuildsTheSurface)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(1, 1, 1)));
    WriteBinaryStl(dir.File("obstacle.stl"), MakeBox(Eigen::Vector3f(1, 1, 1), Eigen::Vector3f(2, 0, 0)));
    WriteFile(dir.File("novertices.stl"), "solid v\nfacet normal 0 0 1\nouter loop\nendloop\nendfacet\nendsolid v\n");
    WriteFile(dir.File("empty.stl"), "solid e\nendsolid e\n");

    const Built missing = Build(dir.File("box.stl"), {dir.File("obstacle.stl"), dir.File("missing.stl")});
    EXPECT_FALSE(missing.surface->isBuilt());
    EXPECT_EQ(missing.err, "IOError: " + dir.File("missing.stl") + " could not be opened...\n");

    const Built noVertices = Build(dir.File("box.stl"), {dir.File("novertices.stl")});
    EXPECT_FALSE(noVertices.surface->isBuilt());

    // An obstacle file without facets blocks nothing, and fails nothing.
    const Built empty = Build(dir.File("box.stl"), {dir.File("empty.stl")});
    EXPECT_TRUE(empty.surface->isBuilt());
    EXPECT_EQ(empty.err, "");
}

} // namespace
} // namespace kelvorig
