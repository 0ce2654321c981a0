#include "driver/placement_switches.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Applies the rules that `options` ask for to `mesh`'s surface.
void ApplyRules(test::MeshSurface& mesh, const CommandOptions& options, std::unique_ptr<SeatRules>& rules)
{
    ASSERT_TRUE(BuildSeatRules(options, mesh.surface(), rules));
    mesh.surface().SetSeatRules(rules.get());
}

// A closed solid of revolution about +Z: the profile (r, z), millimetres and clockwise so that
// the winding faces outwards, swept round in 48 steps; facets on the axis are left out.
test::TestMesh Revolve(const std::vector<Eigen::Vector2f>& profile)
{
    test::TestMesh mesh;
    const auto at = [&](size_t k, int step)
    {
        const float angle = 6.2831853f * static_cast<float>(step % 48) / 48.0f;
        const Eigen::Vector2f& p = profile[k % profile.size()];
        return Eigen::Vector3f(p.x() * std::cos(angle), p.x() * std::sin(angle), p.y());
    };
    for (size_t k = 0; k < profile.size(); ++k)
        for (int s = 0; s < 48; ++s)
            for (const std::array<Eigen::Vector3f, 3>& t : {std::array{at(k, s), at(k + 1, s), at(k + 1, s + 1)},
                                                           std::array{at(k, s), at(k + 1, s + 1), at(k, s + 1)}})
                if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0])
                {
                    const int first = static_cast<int>(mesh.vertices.size());
                    mesh.vertices.insert(mesh.vertices.end(), t.begin(), t.end());
                    mesh.triangles.push_back({first, first + 1, first + 2});
                }
    return mesh;
}

TEST(SeatRules, TubeAndCapGetNoSeatOnTheirInnerFacesUnderMaxSeatDepth)
{
    const std::vector<std::vector<Eigen::Vector2f>> shapes = {
        {{27, 40}, {30, 40}, {30, 0}, {27, 0}},                     // tube, open at both ends
        {{0, 40}, {30, 40}, {30, 0}, {27, 0}, {27, 37}, {0, 37}}};  // cap, open at the bottom
    for (const auto& profile : shapes)
        for (const bool ruled : {false, true})
        {
            CommandOptions options;
            options.maxSeatDepth = ruled ? std::optional(5.0) : std::nullopt;
            test::MeshSurface mesh(Revolve(profile), 5u);
            std::unique_ptr<SeatRules> rules;
            ApplyRules(mesh, options, rules);
            int inner = 0, outer = 0;
            for (int i = 0; i < 600; ++i)
            {
                Eigen::Vector3f p, n;
                ASSERT_TRUE(mesh.surface().SampleSeat(p, n, mesh.surface().engine()));
                // Inner faces look at the axis, or down from under the cap's top.
                const bool looksInside = p.head<2>().dot(n.head<2>()) < 0.0f || (n.z() < -0.5f && p.z() > 0.001f);
                (looksInside ? inner : outer) += 1;
            }
            EXPECT_GT(outer, 100);
            EXPECT_TRUE(ruled ? inner == 0 : inner > 100) << inner;
        }
}

// The spacing rule only shows across a whole anneal.
TEST(SeatRules, MinSensorSpacingHoldsInEveryLayoutOfAnAnneal)
{
    CommandOptions options;
    options.minSensorSpacing = 25.0;
    test::MeshSurface box(test::MakeBox(Eigen::Vector3f(60, 60, 20)), 5u);
    std::unique_ptr<SeatRules> rules;
    ApplyRules(box, options, rules);
    PlacementLayout layout(6);
    ASSERT_TRUE(PlacementProblem(6, box.surface()).PlaceInitialSensors(layout));
    SensorPlacementAnnealer annealer(layout, box.surface(), 2, 60, 0.6, -1.0, -1.0, 7u);
    annealer.ShowProgress(false);
    int layouts = 0;
    double closest = 1.0;
    annealer.ObserveScores(
        [&](double)
        {
            ++layouts;
            for (size_t i = 0; i < layout.SensorCount(); ++i)
                for (size_t j = 0; j < i; ++j)
                    closest = std::min(closest, (layout.positions[i] - layout.positions[j]).norm());
        });
    ASSERT_TRUE(annealer.Anneal());
    EXPECT_GT(layouts, 100);
    EXPECT_GE(closest, 0.025);
}

} // namespace
} // namespace kelvorig
