#include "geometry/tracked_surface.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <array>
#include <map>

namespace kelvorig {
namespace {

const std::string kShellPath = std::string(KELVORIG_SOURCE_DIR) + "/examples/hmd_shell.stl";

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
    // opposite directions: the surface is closed and consistently wound.
    using Corner = std::array<float, 3>;
    std::map<std::pair<Corner, Corner>, int> directedEdges;
    auto corner = [&shell](Eigen::Index row) {
        return Corner{shell.vertices()(row, 0), shell.vertices()(row, 1), shell.vertices()(row, 2)};
    };
    for (Eigen::Index t = 0; t < shell.triangles().rows(); ++t)
    {
        for (int k = 0; k < 3; ++k)
            ++directedEdges[{corner(shell.triangles()(t, k)), corner(shell.triangles()(t, (k + 1) % 3))}];
        const auto p = [&](int k) -> Eigen::Vector3f { return shell.vertices().row(shell.triangles()(t, k)); };
        const Eigen::Vector3f n = shell.faceNormals().row(t).transpose();
        EXPECT_GT(n.dot((p(1) - p(0)).cross(p(2) - p(0)).normalized()), 0.999f) << "facet " << t;
        // Just outside a closed surface lies an even number of crossings away, all the way out.
        const Eigen::Vector3f outside = (p(0) + p(1) + p(2)) / 3.0f + 1e-5f * n;
        int crossings = 0;
        RayHit hit;
        for (float from = 0.0f; shell.intersector().intersectRay(outside, n, hit, from); from = hit.hitDistance + 1e-6f)
            ++crossings;
        EXPECT_EQ(crossings % 2, 0) << "facet " << t;
    }
    for (const auto& [edge, count] : directedEdges)
        EXPECT_TRUE(count == 1 && directedEdges.count({edge.second, edge.first}) == 1);
}

} // namespace
} // namespace kelvorig
