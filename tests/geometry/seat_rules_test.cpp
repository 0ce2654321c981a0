#include "driver/placement_switches.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::TempDir;
using test::TestMesh;

// A closed solid of revolution about +Z: the profile (r, z), millimetres and clockwise so that
// the winding faces outwards, swept round in 48 steps; facets on the axis are left out.
TestMesh Revolve(const std::vector<Eigen::Vector2f>& profile)
{
    constexpr int kSteps = 48;
    TestMesh mesh;
    const auto at = [&](size_t k, int step)
    {
        const float angle = 6.2831853f * static_cast<float>(step % kSteps) / kSteps;
        const Eigen::Vector2f& p = profile[k % profile.size()];
        return Eigen::Vector3f(p.x() * std::cos(angle), p.x() * std::sin(angle), p.y());
    };
    for (size_t k = 0; k < profile.size(); ++k)
        for (int s = 0; s < kSteps; ++s)
        {
            const Eigen::Vector3f a = at(k, s), b = at(k + 1, s), c = at(k + 1, s + 1), d = at(k, s + 1);
            for (const std::array<Eigen::Vector3f, 3>& t : {std::array{a, b, c}, std::array{a, c, d}})
                if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0])
                {
                    const int first = static_cast<int>(mesh.vertices.size());
                    mesh.vertices.insert(mesh.vertices.end(), t.begin(), t.end());
                    mesh.triangles.push_back({first, first + 1, first + 2});
                }
        }
    return mesh;
}

// The surface of `mesh` in a fresh folder, with the rules that `options` ask for.
struct RuledSurface
{
    RuledSurface(const TestMesh& mesh, CommandOptions options)
    {
        test::WriteBinaryStl(dir.File("s.stl"), mesh);
        surface = std::make_unique<TrackedSurface>(dir.File("s.stl"), std::vector<std::string>{}, 5u);
        EXPECT_TRUE(BuildSeatRules(options, *surface, rules));
        surface->SetSeatRules(rules.get());
    }
    TempDir dir;
    std::unique_ptr<TrackedSurface> surface;
    std::unique_ptr<SeatRules> rules;
};

TEST(SeatRules, TubeAndCapGetNoSeatOnTheirInnerFacesUnderMaxSeatDepth)
{
    const std::vector<std::vector<Eigen::Vector2f>> shapes = {
        {{27, 40}, {30, 40}, {30, 0}, {27, 0}},                    // tube, open at both ends
        {{0, 40}, {30, 40}, {30, 0}, {27, 0}, {27, 37}, {0, 37}}}; // cap, open at the bottom
    for (const auto& profile : shapes)
        for (const bool ruled : {false, true})
        {
            CommandOptions options;
            options.maxSeatDepth = ruled ? std::optional(5.0) : std::nullopt;
            RuledSurface ruledSurface(Revolve(profile), options);
            int inner = 0, outer = 0;
            for (int i = 0; i < 600; ++i)
            {
                Eigen::Vector3f p, n;
                ASSERT_TRUE(ruledSurface.surface->SampleSeat(p, n, ruledSurface.surface->engine()));
                // Inner faces look at the axis, or down from under the cap's top.
                const bool looksInside = p.head<2>().dot(n.head<2>()) < 0.0f || (n.z() < -0.5f && p.z() > 0.001f);
                (looksInside ? inner : outer) += 1;
            }
            EXPECT_GT(outer, 100);
            EXPECT_TRUE(ruled ? inner == 0 : inner > 100) << inner;
        }
}

TEST(SeatRules, MinSensorSpacingHoldsInEveryLayoutOfAnAnneal)
{
    CommandOptions options;
    options.minSensorSpacing = 25.0;
    RuledSurface ruled(test::MakeBox(Eigen::Vector3f(60, 60, 20)), options);
    PlacementLayout layout(6);
    PlacementProblem problem(6, *ruled.surface);
    ASSERT_TRUE(problem.PlaceInitialSensors(layout));
    SensorPlacementAnnealer annealer(layout, *ruled.surface, 2, 60, 0.6, -1.0, -1.0, 7u);
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
