#include "driver/placement_switches.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// Applies the rules that `options` ask for to `mesh`'s surface.
void ApplyRules(test::MeshSurface& mesh, const CommandOptions& options, std::unique_ptr<SeatRules>& rules)
{
    ASSERT_TRUE(BuildSeatRules(options, mesh.surface(), rules));
    mesh.surface().SetSeatRules(rules.get());
}

TEST(SeatRules, TubeAndCapGetNoSeatOnTheirInnerFacesUnderMaxSeatDepth)
{
    const std::vector<std::vector<Eigen::Vector2f>> shapes = {
        {{27, 40}, {30, 40}, {30, 0}, {27, 0}},                    // tube, open at both ends
        {{0, 40}, {30, 40}, {30, 0}, {27, 0}, {27, 37}, {0, 37}}}; // cap, open at the bottom
    for (const auto& profile : shapes)
        for (const bool ruled : {false, true})
        {
            CommandOptions options; // profiles in millimetres
            options.maxSeatDepth = ruled ? std::optional(5.0) : std::nullopt;
            test::MeshSurface mesh(test::Revolve(profile), 5u);
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
    TrackedObjectModel best;
    ASSERT_TRUE(annealer.Anneal(best));
    EXPECT_GT(layouts, 100);
    EXPECT_GE(closest, 0.025);
}

} // namespace
} // namespace kelvorig
