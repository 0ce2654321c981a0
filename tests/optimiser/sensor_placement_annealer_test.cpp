#include "optimiser/sensor_placement_annealer.h"

#include "optimiser/placement_problem.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// Every move changes one movable sensor, never an immutable one, and its undo restores the
// layout exactly; each move prints its dot.
TEST(SensorPlacementAnnealer, UndoRestoresTheMovedSensorExactlyAndImmutablesNeverMove)
{
    test::MeshSurface box;
    PlacementLayout layout(4);
    PlacementProblem(4, box.surface()).PlaceInitialSensors(layout);
    layout.immutableCount = 1;
    const PlacementLayout before = layout;
    SensorPlacementAnnealer annealer(layout, box.surface(), 1, 20, 0.5, -1.0, -1.0, 77);
    testing::internal::CaptureStderr();
    int changed = 0;
    for (int move = 0; move < 30; ++move)
    {
        annealer.MoveOneSensor(move % 2 ? kStartTemperature : kStopTemperature);
        ASSERT_GE(annealer.movedIndex(), 1);
        changed += layout.positions[annealer.movedIndex()] != before.positions[annealer.movedIndex()];
        EXPECT_TRUE(layout.positions[0] == before.positions[0] && layout.normals[0] == before.normals[0]);
        annealer.UndoMove();
        ASSERT_TRUE(layout.positions == before.positions && layout.normals == before.normals) << move;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), std::string(30, '.'));
    EXPECT_GT(changed, 25);
}

} // namespace
} // namespace kelvorig
