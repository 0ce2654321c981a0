#include "quality/incremental_evaluator.h"

#include "geometry/tracked_surface.h"
#include "optimiser/mesh_surface.h"
#include "support/occluded_cube.h"
#include "quality/worker_pool.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <memory>

namespace kelvorig {
namespace {

constexpr int32_t kOrientations = 120;

// Bit patterns, so that equal NaNs compare equal and -0.0 differs from 0.0.
uint64_t Bits(double value)
{
    return std::bit_cast<uint64_t>(value);
}

// A layout of `count` sensors seated on the surface, ids in position order.
SensorLayout SeatedLayout(TrackedSurface& surface, int count)
{
    TrackedObjectModel model;
    model.valid = true;
    for (int i = 0; i < count; ++i)
    {
        Eigen::Vector3f position, normal;
        surface.SampleSeat(position, normal);
        model.channelMap.push_back(i);
        model.modelPoints.push_back(position);
        model.modelNormals.push_back(normal);
    }
    SensorLayout layout(model, kIdentityTransform);
    layout.cosMaxIncidence = 0.5;
    return layout;
}

struct Fixture
{
    test::MeshSurface mesh{test::MakeOccludedCube()};
    SensorLayout layout;
    QualityEvaluator reference;

    Fixture(int sensors, bool occlusion, int32_t orientations = kOrientations)
        : layout(SeatedLayout(mesh.surface(), sensors))
    {
        reference.SetModel(layout);
        reference.SetSurface(occlusion ? &mesh.surface() : nullptr);
        reference.SampleOrientations(orientations);
    }

    // Moves sensor `index` to a fresh seat.
    void Move(size_t index)
    {
        Eigen::Vector3f position, normal;
        mesh.surface().SampleSeat(position, normal);
        layout.positions[index] = position.cast<double>();
        layout.normals[index] = normal.cast<double>();
    }
};

TEST(IncrementalEvaluator, FullEvaluationMatchesTheReferenceBitForBit)
{
    for (const bool occlusion : {true, false})
    {
        for (const int32_t threads : {1, 2, 3})
        {
            Fixture fixture(9, occlusion);
            WorkerPool workers(threads);
            IncrementalEvaluator fast(fixture.reference, workers);
            EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()))
                << "occlusion " << occlusion << ", threads " << threads;
        }
    }
}

TEST(IncrementalEvaluator, OcclusionDecidesPartOfTheScore)
{
    Fixture hidden(9, true);
    Fixture open(9, false);
    WorkerPool workers(1);
    EXPECT_NE(IncrementalEvaluator(hidden.reference, workers).EvaluateAll(),
              IncrementalEvaluator(open.reference, workers).EvaluateAll());
}

// Moves of every sensor, some kept and some undone, each scored both ways.
TEST(IncrementalEvaluator, MovesAndUndosMatchTheReferenceBitForBit)
{
    for (const int32_t threads : {1, 2})
    {
        Fixture fixture(7, true);
        WorkerPool workers(threads);
        IncrementalEvaluator fast(fixture.reference, workers);
        ASSERT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()));

        for (int move = 0; move < 40; ++move)
        {
            const size_t index = static_cast<size_t>((move * 5) % 7);
            const Eigen::Vector3d oldPosition = fixture.layout.positions[index];
            const Eigen::Vector3d oldNormal = fixture.layout.normals[index];
            fixture.Move(index);
            ASSERT_EQ(Bits(fast.EvaluateMove(index)), Bits(fixture.reference.EvaluateQuality()))
                << "move " << move << ", threads " << threads;
            if (move % 3 == 1)
            {
                fixture.layout.positions[index] = oldPosition;
                fixture.layout.normals[index] = oldNormal;
                fast.UndoMove();
            }
        }
        // A fresh full evaluation agrees with the state the moves built up.
        EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()));
    }
}

// The score after an undo is that of the layout before the move, so a move of another
// sensor next starts from the right state.
TEST(IncrementalEvaluator, UndoThenAnotherMoveStartsFromTheKeptState)
{
    Fixture fixture(5, true);
    WorkerPool workers(2);
    IncrementalEvaluator fast(fixture.reference, workers);
    fast.EvaluateAll();

    const Eigen::Vector3d oldPosition = fixture.layout.positions[2];
    const Eigen::Vector3d oldNormal = fixture.layout.normals[2];
    fixture.Move(2);
    fast.EvaluateMove(2);
    fixture.layout.positions[2] = oldPosition;
    fixture.layout.normals[2] = oldNormal;
    fast.UndoMove();
    fast.UndoMove();  // a second undo has nothing left to undo

    fixture.Move(4);
    EXPECT_EQ(Bits(fast.EvaluateMove(4)), Bits(fixture.reference.EvaluateQuality()));
}

// A tilted sweep can't reach some sensors; such a pose has no Jacobian in the reference,
// and the incremental path must fail the same poses.
TEST(IncrementalEvaluator, TiltedSweepsThatFailMatchTheReference)
{
    Fixture fixture(6, true);
    fixture.reference.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, 1.55});
    int unreachable = 0;
    const PoseVector& translation = fixture.reference.poseVector();
    for (const BaseStationPose& pose : fixture.reference.poses())
    {
        const Triple<double>& r = pose.rotationVector;
        const double parameters[6] = {translation[0], translation[1], translation[2], r[0], r[1], r[2]};
        const DualPose dualPose = SeedDualPose(parameters);
        for (const SensorObservation& observation : fixture.reference.visibility()->observations)
        {
            DualNumber first, second;
            unreachable += !observation.ObserveAngles(dualPose.rotation, dualPose.translation, first, second);
        }
    }
    ASSERT_GT(unreachable, 0);  // the premise: some sensors lie out of the sweep's reach

    WorkerPool workers(2);
    IncrementalEvaluator fast(fixture.reference, workers);
    ASSERT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()));
    for (size_t index = 0; index < 6; ++index)
    {
        fixture.Move(index);
        ASSERT_EQ(Bits(fast.EvaluateMove(index)), Bits(fixture.reference.EvaluateQuality())) << index;
    }
}

TEST(IncrementalEvaluator, EdgeCasesScoreAsTheReference)
{
    struct Case
    {
        const char* name;
        int sensors;
        int32_t orientations;
    } cases[] = {
        {"no sensors", 0, 30},
        {"one sensor", 1, 30},
        {"two sensors", 2, 30},
        {"one pose, not a number", 4, 1},
        {"no poses: scale infinite", 4, 0},
    };
    for (const Case& c : cases)
    {
        Fixture fixture(c.sensors, true, c.orientations);
        WorkerPool workers(2);
        IncrementalEvaluator fast(fixture.reference, workers);
        EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality())) << c.name;
        if (c.sensors > 0)
        {
            fixture.Move(0);
            EXPECT_EQ(Bits(fast.EvaluateMove(0)), Bits(fixture.reference.EvaluateQuality())) << c.name;
        }
    }
}

// The translation is the reference's, whatever it was set to.
TEST(IncrementalEvaluator, UsesTheReferencesTranslation)
{
    Fixture fixture(6, true);
    fixture.reference.poseVector()[0] = 0.3;
    fixture.reference.poseVector()[2] = -1.5;
    WorkerPool workers(1);
    IncrementalEvaluator fast(fixture.reference, workers);
    EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()));
}

} // namespace
} // namespace kelvorig
