#include "geometry/tracked_surface.h"
#include "support/cli_runner.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

namespace kelvorig {
namespace {

const std::string kShellPath = std::string(KELVORIG_SOURCE_DIR) + "/examples/hmd_shell.stl";

// Crossings of the surface along a ray, all the way out.
int Crossings(const EmbreeIntersector& intersector, const Eigen::Vector3f& origin, const Eigen::Vector3f& direction)
{
    int crossings = 0;
    float from = 0.0f;
    RayHit hit;
    while (intersector.intersectRay(origin, direction, hit, from))
    {
        ++crossings;
        from = hit.hitDistance + 1e-6f;
    }
    return crossings;
}

TEST(HmdShellExample, IsAMillimetreHeadsetFrontFacingPlusZ)
{
    const TrackedSurface shell(kShellPath, {}, 1);
    ASSERT_TRUE(shell.isBuilt());
    EXPECT_EQ(shell.unitScale(), 0.001);
    EXPECT_GT(shell.triangles().rows(), 2000);
    EXPECT_LT(shell.triangles().rows(), 10000);
    const Eigen::Vector3f low = shell.vertices().colwise().minCoeff();
    const Eigen::Vector3f high = shell.vertices().colwise().maxCoeff();
    EXPECT_LT((high - low - Eigen::Vector3f(0.18f, 0.11f, 0.09f)).cwiseAbs().maxCoeff(), 1e-5f);
    EXPECT_LT((0.5f * (high + low)).norm(), 1e-5f);
}

TEST(HmdShellExample, IsAClosedSolid)
{
    const TrackedSurface shell(kShellPath, {}, 1);
    // Every edge, by its end points' coordinates, is shared by exactly two facets in
    // opposite directions.
    using Corner = std::array<float, 3>;
    std::map<std::pair<Corner, Corner>, int> directedEdges;
    auto corner = [&shell](Eigen::Index row) {
        return Corner{shell.vertices()(row, 0), shell.vertices()(row, 1), shell.vertices()(row, 2)};
    };
    for (Eigen::Index t = 0; t < shell.triangles().rows(); ++t)
    {
        for (int k = 0; k < 3; ++k)
            ++directedEdges[{corner(shell.triangles()(t, k)), corner(shell.triangles()(t, (k + 1) % 3))}];
    }
    for (const auto& [edge, count] : directedEdges)
    {
        EXPECT_EQ(count, 1);
        EXPECT_EQ(directedEdges.count({edge.second, edge.first}), 1u);
    }
}

TEST(HmdShellExample, FacetNormalsPointOutOfTheSolid)
{
    const TrackedSurface shell(kShellPath, {}, 1);
    const EmbreeIntersector& intersector = shell.intersector();
    for (Eigen::Index t = 0; t < shell.triangles().rows(); ++t)
    {
        const Eigen::Vector3f p0 = shell.vertices().row(shell.triangles()(t, 0)).transpose();
        const Eigen::Vector3f p1 = shell.vertices().row(shell.triangles()(t, 1)).transpose();
        const Eigen::Vector3f p2 = shell.vertices().row(shell.triangles()(t, 2)).transpose();
        const Eigen::Vector3f n = shell.faceNormals().row(t).transpose();
        EXPECT_GT(n.dot((p1 - p0).cross(p2 - p0).normalized()), 0.999f) << "facet " << t;
        const Eigen::Vector3f centroid = (p0 + p1 + p2) / 3.0f;
        // Outside lies an even number of crossings away, inside an odd number.
        EXPECT_EQ(Crossings(intersector, centroid + 1e-5f * n, n) % 2, 0) << "facet " << t;
        EXPECT_EQ(Crossings(intersector, centroid - 1e-5f * n, -n) % 2, 1) << "facet " << t;
    }
}

TEST(HmdShellExample, CoverageFindsSeatsAllOverTheCurvedShell)
{
    const test::TempDir dir;
    const test::CliResult result =
        test::RunKelvorig({"/verifycoverage", "3000", "/outscad", "coverage.scad", "/sensors", kShellPath}, dir.path());
    ASSERT_EQ(result.status, 0) << result.err;

    const TrackedSurface shell(kShellPath, {}, 1);
    std::istringstream lines(test::ReadFile(dir.File("coverage.scad")));
    std::string line;
    int seats = 0;
    int curved = 0;
    int onSurface = 0;
    std::array<int, 6> facing = {0, 0, 0, 0, 0, 0};  // +x, -x, +y, -y, +z, -z
    while (std::getline(lines, line))
    {
        int index = 0;
        float p[3];
        float degrees = 0.0f;
        float axis[3];
        if (std::sscanf(line.c_str(), " [ [ %d, \"lime\" ], [ %f, %f, %f], %f, [%f, %f, %f] ]", &index, &p[0], &p[1],
                        &p[2], &degrees, &axis[0], &axis[1], &axis[2]) != 8)
            continue;
        ++seats;
        const Eigen::Vector3f normal =
            Eigen::AngleAxisf(degrees * 3.14159265f / 180.0f, Eigen::Vector3f(axis[0], axis[1], axis[2]).normalized()) *
            Eigen::Vector3f::UnitZ();
        curved += normal.cwiseAbs().maxCoeff() < 0.9f ? 1 : 0;
        for (int k = 0; k < 3; ++k)
        {
            facing[2 * k] += normal[k] > 0.7f ? 1 : 0;
            facing[2 * k + 1] += normal[k] < -0.7f ? 1 : 0;
        }
        onSurface += shell.IsOnSensorSurface(Eigen::Vector3f(p[0], p[1], p[2]), normal) ? 1 : 0;
    }
    ASSERT_EQ(seats, 3000);
    EXPECT_GT(curved, 300);
    for (int count : facing)
        EXPECT_GT(count, 30);
    EXPECT_GT(onSurface, 2900);
}

} // namespace
} // namespace kelvorig
