#include "optimiser/sensor_placement_annealer.h"

#include "geometry/tracked_surface.h"
#include "optimiser/placement_problem.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace kelvorig {
namespace {

constexpr uint32_t kAnnealerSeed = 77;

// A layout of `count` sensors on the test box whose first `immutable` sensors are fixed.
PlacementLayout SeatedLayout(TrackedSurface& surface, int32_t count, uint32_t immutable)
{
    PlacementLayout layout(count);
    PlacementProblem(count, surface).PlaceInitialSensors(layout);
    layout.immutableCount = immutable;
    return layout;
}

SensorPlacementAnnealer MakeAnnealer(PlacementLayout& layout, TrackedSurface& surface)
{
    return SensorPlacementAnnealer(layout, surface, 1, 20, 0.5, -1.0, -1.0, kAnnealerSeed);
}

// The index is drawn uniformly over the movable sensors only; with one movable sensor
// only the kind of each move is drawn from the engine.
TEST(SensorPlacementAnnealer, IndexIsDrawnOverMovableSensorsOnly)
{
    test::MeshSurface box;
    PlacementLayout one = SeatedLayout(box.surface(), 3, 2);
    SensorPlacementAnnealer single = MakeAnnealer(one, box.surface());
    testing::internal::CaptureStderr();
    single.MoveOneSensor(kStartTemperature);
    single.MoveOneSensor(kStartTemperature);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "..");
    RandomEngine reference(kAnnealerSeed);
    reference.discard(2);
    EXPECT_EQ(single.engine(), reference);
    EXPECT_EQ(single.movedIndex(), 2);

    PlacementLayout three = SeatedLayout(box.surface(), 5, 2);
    SensorPlacementAnnealer annealer = MakeAnnealer(three, box.surface());
    reference.seed(kAnnealerSeed);
    testing::internal::CaptureStderr();
    for (int move = 0; move < 50; ++move)
    {
        annealer.MoveOneSensor(1.0);
        const uint32_t word = static_cast<uint32_t>(reference());
        EXPECT_NE(word, 4294967295u);  // the one word that three movable sensors refuse
        EXPECT_EQ(annealer.movedIndex(), 2 + static_cast<int32_t>(word % 3)) << move;
        reference.discard(1);  // the kind of move
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(annealer.engine(), reference);
}

TEST(SensorPlacementAnnealer, UndoRestoresTheMovedSensorExactlyAndImmutablesNeverMove)
{
    test::MeshSurface box;
    PlacementLayout layout = SeatedLayout(box.surface(), 4, 1);
    const PlacementLayout before = layout;
    SensorPlacementAnnealer annealer = MakeAnnealer(layout, box.surface());

    testing::internal::CaptureStderr();
    int changed = 0;
    for (int move = 0; move < 30; ++move)
    {
        annealer.MoveOneSensor(kStartTemperature);
        changed += layout.positions[annealer.movedIndex()] != before.positions[annealer.movedIndex()];
        EXPECT_EQ(layout.positions[0], before.positions[0]);
        EXPECT_EQ(layout.normals[0], before.normals[0]);
        annealer.UndoMove();
        ASSERT_EQ(layout.positions, before.positions) << move;
        ASSERT_EQ(layout.normals, before.normals) << move;
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(changed, 25);
}

TEST(SensorPlacementAnnealer, LocalMovesFollowTheNormalMoreTightlyAsTemperatureFalls)
{
    // A plate whose top and bottom hold nearly all the area: from the top, a local move near
    // the stop temperature (limit about 0.96) finds another seat on the top within its 20
    // tries, while at the start temperature (limit below -1) the first seat of any face
    // will do. A global move goes anywhere. Which kind a move is follows from the engine.
    test::MeshSurface plate(test::MakePlate(0.2f, 0.01f));
    PlacementLayout layout = SeatedLayout(plate.surface(), 2, 1);
    SensorPlacementAnnealer annealer = MakeAnnealer(layout, plate.surface());
    const Eigen::Vector3d up(0.0, 0.0, 1.0);

    struct Counts
    {
        int localOffTop = 0;
        int local = 0;
        int global = 0;
    };
    RandomEngine reference(kAnnealerSeed);
    const auto run = [&](double temperature)
    {
        Counts counts;
        for (int move = 0; move < 80; ++move)
        {
            layout.positions[1] = Eigen::Vector3d::Zero();
            layout.normals[1] = up;
            annealer.MoveOneSensor(temperature);
            const bool local = DrawUnit(reference) > 0.1;
            counts.local += local;
            counts.global += !local;
            counts.localOffTop += local && layout.normals[1] != up;
        }
        return counts;
    };

    testing::internal::CaptureStderr();
    const Counts cold = run(kStopTemperature);
    const Counts hot = run(kStartTemperature);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(annealer.engine(), reference);
    EXPECT_GT(cold.local, 60);
    EXPECT_GT(cold.global, 0);
    EXPECT_EQ(cold.localOffTop, 0);
    EXPECT_GT(hot.localOffTop, 20);
}

TEST(SensorPlacementAnnealer, AnnealMatchesTheScheduleWrittenOut)
{
    // Two identical set-ups: one runs Anneal, the other the schedule spelled out here with
    // the same moves, so every acceptance, undo and new best must agree. Anneal scores
    // incrementally, which agrees with EvaluateQuality to rounding, not bit for bit.
    test::MeshSurface boxA;
    test::MeshSurface boxB;
    PlacementLayout a = SeatedLayout(boxA.surface(), 5, 1);
    PlacementLayout b = SeatedLayout(boxB.surface(), 5, 1);
    SensorPlacementAnnealer annealerA = MakeAnnealer(a, boxA.surface());
    SensorPlacementAnnealer annealerB = MakeAnnealer(b, boxB.surface());

    testing::internal::CaptureStderr();
    const TrackedObjectModel result = annealerA.Anneal().value();

    RandomEngine acceptance(5489);
    double best = annealerB.evaluator().EvaluateQuality();
    const double first = best;
    double previous = best;
    TrackedObjectModel bestModel = b.ToModel();
    int refused = 0;
    int moves = 0;
    for (double temperature = 100.0; temperature >= 0.035; temperature *= 0.5)
    {
        for (int32_t move = 0; move < annealerB.movesPerTemperature(); ++move, ++moves)
        {
            annealerB.MoveOneSensor(temperature);
            const double q = annealerB.evaluator().EvaluateQuality();
            if (q < best)
            {
                best = q;
                bestModel = b.ToModel();
            }
            if (q > previous && DrawUnit(acceptance) > std::exp((previous - q) / temperature))
            {
                annealerB.UndoMove();
                ++refused;
            }
            else
            {
                previous = q;
            }
        }
    }
    testing::internal::GetCapturedStderr();

    EXPECT_EQ(moves, 12 * 5);
    EXPECT_GT(refused, 0);
    EXPECT_LT(best, first);
    EXPECT_TRUE(result.valid);
    EXPECT_EQ(result.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(result.modelPoints, bestModel.modelPoints);
    EXPECT_EQ(result.modelNormals, bestModel.modelNormals);
    EXPECT_NEAR(annealerA.snapshotScore(), best, 1e-9 * best);
    EXPECT_EQ(a.positions, b.positions);
    EXPECT_EQ(a.normals, b.normals);
}

} // namespace
} // namespace kelvorig
