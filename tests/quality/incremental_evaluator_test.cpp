#include "quality/incremental_evaluator.h"

#include "geometry/tracked_surface.h"
#include "optimiser/mesh_surface.h"
#include "support/occluded_cube.h"
#include "support/worker_pool.h"

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

// Full evaluations with and without occlusion, on 1 to 3 threads, at another translation,
// and at the edges of the sensor and pose counts; where there are sensors, one move too.
TEST(IncrementalEvaluator, FullEvaluationMatchesTheReferenceBitForBit)
{
    struct Case
    {
        const char* name;
        int sensors;
        bool occlusion;
        int32_t orientations;
        int32_t threads;
        bool moved;  // translation moved off the default
    } cases[] = {
        {"occluded", 9, true, kOrientations, 1, false},
        {"occluded, 2 threads", 9, true, kOrientations, 2, false},
        {"occluded, 3 threads", 9, true, kOrientations, 3, false},
        {"open", 9, false, kOrientations, 1, false},
        {"open, 3 threads", 9, false, kOrientations, 3, false},
        {"translation moved", 6, true, kOrientations, 1, true},
        {"no sensors", 0, true, 30, 2, false},
        {"one sensor", 1, true, 30, 2, false},
        {"two sensors", 2, true, 30, 2, false},
        {"one pose, not a number", 4, true, 1, 2, false},
        {"no poses: scale infinite", 4, true, 0, 2, false},
    };
    for (const Case& c : cases)
    {
        Fixture fixture(c.sensors, c.occlusion, c.orientations);
        if (c.moved)
        {
            fixture.reference.poseVector()[0] = 0.3;
            fixture.reference.poseVector()[2] = -1.5;
        }
        WorkerPool workers(c.threads);
        IncrementalEvaluator fast(fixture.reference, workers);
        EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality())) << c.name;
        if (c.sensors > 0)
        {
            fixture.Move(0);
            EXPECT_EQ(Bits(fast.EvaluateMove(0)), Bits(fixture.reference.EvaluateQuality())) << c.name;
        }
    }

    // The premise: occlusion decides part of the score.
    Fixture hidden(9, true);
    Fixture open(9, false);
    EXPECT_NE(hidden.reference.EvaluateQuality(), open.reference.EvaluateQuality());
}

// Moves of every sensor, some kept and some undone (a few twice), each scored both ways:
// after an undo the next move starts from the kept state.
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
                if (move % 6 == 1)
                    fast.UndoMove();  // a second undo has nothing left to undo
            }
        }
        // A fresh full evaluation agrees with the state the moves built up.
        EXPECT_EQ(Bits(fast.EvaluateAll()), Bits(fixture.reference.EvaluateQuality()));
    }
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

} // namespace
} // namespace kelvorig
