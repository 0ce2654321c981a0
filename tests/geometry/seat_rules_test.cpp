#include "driver/placement_switches.h"
#include "optimiser/placement_problem.h"
#include "optimiser/sensor_placement_annealer.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// /maxseatdepth is checked through the binary on the hollow example shell (placement switches
// test); the spacing rule only shows across a whole anneal, so it is checked here.
TEST(SeatRules, MinSensorSpacingHoldsInEveryLayoutOfAnAnneal)
{
    CommandOptions options;
    options.minSensorSpacing = 25.0;
    test::MeshSurface box(test::MakeBox(Eigen::Vector3f(60, 60, 20)), 5u);
    std::unique_ptr<SeatRules> rules;
    ASSERT_TRUE(BuildSeatRules(options, box.surface(), rules));
    box.surface().SetSeatRules(rules.get());
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
