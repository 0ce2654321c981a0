#include "geometry/tracked_surface.h"
#include "report/coverage_map.h"
#include "support/cli_runner.h"

#include <Eigen/Geometry>
#include <cairo.h>
#include <gtest/gtest.h>
#include <json/reader.h>

#include <array>
#include <cmath>
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

// The map colours every point of its position-error panel at any grid step (cells wrap round at
// yaw 180 and reach the pole), and the summary's worst regions lie at least 15 degrees apart.
TEST(HmdShellExample, MapsAreWholeAtAnyGridStepAndTheWorstRegionsLieApart)
{
    const test::TempDir dir;
    const std::string examples = std::string(KELVORIG_SOURCE_DIR) + "/examples/";
    for (const char* step : {"15", "2"})
    {
        ASSERT_EQ(test::RunKelvorig({"/model", examples + "example_sensors.json", "/sensors", kShellPath,
                                     "/angleresolutiondegrees", step, "/outpng", dir.File("m.png"), "/outsummary",
                                     dir.File("s.json")})
                      .status,
                  0);
        cairo_surface_t* map = cairo_image_surface_create_from_png(dir.File("m.png").c_str());
        ASSERT_EQ(cairo_surface_status(map), CAIRO_STATUS_SUCCESS);
        const unsigned char* pixels = cairo_image_surface_get_data(map);
        const size_t stride = static_cast<size_t>(cairo_image_surface_get_stride(map));
        int white = 0;
        const auto [left, top, width, height] = kErrorPanel;
        for (int y = static_cast<int>(top) + 1; y + 1 < static_cast<int>(top + height); ++y)
            for (int x = static_cast<int>(left) + 1; x + 1 < static_cast<int>(left + width); ++x)
                white += (reinterpret_cast<const uint32_t*>(pixels + static_cast<size_t>(y) * stride)[x] & 0xffffffu) ==
                         0xffffffu;
        cairo_surface_destroy(map);
        EXPECT_EQ(white, 0) << "step " << step;

        Json::Value worst;
        ASSERT_TRUE(Json::Reader().parse(test::ReadFile(dir.File("s.json")), worst));
        worst = worst["worst_directions"];
        EXPECT_EQ(worst.size(), 10u);
        const auto unit = [&worst](Json::ArrayIndex i)
        {
            const double yaw = worst[i]["yaw_degrees"].asDouble() / 57.29577951308232;
            const double pitch = worst[i]["pitch_degrees"].asDouble() / 57.29577951308232;
            return Eigen::Vector3d(std::sin(yaw) * std::cos(pitch), std::sin(pitch), std::cos(yaw) * std::cos(pitch));
        };
        for (Json::ArrayIndex i = 0; i < worst.size(); ++i)
        {
            EXPECT_GT(worst[i]["region_share_percent"].asDouble(), 0.0);
            for (Json::ArrayIndex j = 0; j < i; ++j)
                EXPECT_LE(unit(i).dot(unit(j)), std::cos(15.0 / 57.29577951308232) + 1e-12) << i << " " << j;
        }
    }
}

} // namespace
} // namespace kelvorig
