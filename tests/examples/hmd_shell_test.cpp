#include "geometry/tracked_surface.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <array>
#include <map>

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

// A millimetre headset 180 x 110 x 90 about the origin; a closed solid whose facet normals point out.
TEST(HmdShellExample, IsAClosedMillimetreHeadsetWithNormalsPointingOut)
{
    const TrackedSurface shell(kShellPath, {}, 1);
    ASSERT_TRUE(shell.isBuilt());
    EXPECT_EQ(shell.unitScale(), 0.001);
    const Eigen::Vector3f low = shell.vertices().colwise().minCoeff(), high = shell.vertices().colwise().maxCoeff();
    EXPECT_LT((high - low - Eigen::Vector3f(0.18f, 0.11f, 0.09f)).cwiseAbs().maxCoeff(), 1e-5f);
    EXPECT_LT((0.5f * (high + low)).norm(), 1e-5f);

    // Every edge, by its end points' coordinates, is shared by exactly two facets in
    // opposite directions.
    using Corner = std::array<float, 3>;
    std::map<std::pair<Corner, Corner>, int> directedEdges;
    auto corner = [&shell](Eigen::Index row) {
        return Corner{shell.vertices()(row, 0), shell.vertices()(row, 1), shell.vertices()(row, 2)};
    };
    for (Eigen::Index t = 0; t < shell.triangles().rows(); ++t)
        for (int k = 0; k < 3; ++k)
            ++directedEdges[{corner(shell.triangles()(t, k)), corner(shell.triangles()(t, (k + 1) % 3))}];
    for (const auto& [edge, count] : directedEdges)
        EXPECT_TRUE(count == 1 && directedEdges.count({edge.second, edge.first}) == 1);
    for (Eigen::Index t = 0; t < shell.triangles().rows(); ++t)
    {
        const Eigen::Vector3f p0 = shell.vertices().row(shell.triangles()(t, 0)).transpose();
        const Eigen::Vector3f p1 = shell.vertices().row(shell.triangles()(t, 1)).transpose();
        const Eigen::Vector3f p2 = shell.vertices().row(shell.triangles()(t, 2)).transpose();
        const Eigen::Vector3f n = shell.faceNormals().row(t).transpose();
        EXPECT_GT(n.dot((p1 - p0).cross(p2 - p0).normalized()), 0.999f) << "facet " << t;
        const Eigen::Vector3f centroid = (p0 + p1 + p2) / 3.0f;
        // Outside lies an even number of crossings away, inside an odd number.
        EXPECT_EQ(Crossings(shell.intersector(), centroid + 1e-5f * n, n) % 2, 0) << "facet " << t;
        EXPECT_EQ(Crossings(shell.intersector(), centroid - 1e-5f * n, -n) % 2, 1) << "facet " << t;
    }
}

} // namespace
} // namespace kelvorig
