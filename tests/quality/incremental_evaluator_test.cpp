#include "quality/incremental_evaluator.h"

#include "geometry/tracked_surface.h"
#include "support/mesh_surface.h"
#include "support/occluded_cube.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace kelvorig {
namespace {

constexpr double kTolerance = 1e-9;  // relative, per score

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

enum PoseClass
{
    kFailed,     // no estimate: the penalty
    kSaturated,  // the term's ceiling
    kFinite,
    kClasses
};

PoseClass Classify(double term, double scoreOffset)
{
    if (term == QualityEvaluator::kFailedPoseCost)
        return kFailed;
    return term == 1.0 + scoreOffset ? kSaturated : kFinite;
}

struct Case
{
    const char* name;
    int sensors;
    bool occlusion;
    int32_t orientations;
    int32_t threads;
    bool tilted;       // a tilted sweep that can't reach some sensors
    bool translation;  // translation moved off the default
};

// The same moves, some undone and some checkpointed, fed to the reference and to the
// incremental path: every score within kTolerance, every pose classified alike. Counts the
// classes met in `met`.
void CompareMoves(const Case& c, std::array<int, kClasses>& met)
{
    test::MeshSurface mesh(test::MakeOccludedCube());
    SensorLayout layout = SeatedLayout(mesh.surface(), c.sensors);
    QualityEvaluator reference;
    reference.SetModel(layout);
    reference.SetSurface(c.occlusion ? &mesh.surface() : nullptr);
    if (c.tilted)
        reference.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, 1.55});
    reference.SampleOrientations(c.orientations);
    if (c.translation)
    {
        reference.poseVector()[0] = 0.3;
        reference.poseVector()[2] = -1.5;
    }
    WorkerPool workers(c.threads);
    IncrementalEvaluator fast(reference, workers);

    auto compare = [&](double score, int move)
    {
        double sum = 0.0;
        for (size_t pose = 0; pose < reference.poses().size(); ++pose)
        {
            const double term = reference.PoseTerm(reference.poses()[pose]);
            sum += term;
            const PoseClass expected = Classify(term, reference.scoreOffset());
            ASSERT_EQ(Classify(fast.PoseTerm(pose), reference.scoreOffset()), expected)
                << c.name << ", move " << move << ", pose " << pose;
            ++met[expected];
        }
        const double expected = reference.scoreScale() * sum;
        if (std::isfinite(expected))
            ASSERT_NEAR(score, expected, kTolerance * std::abs(expected)) << c.name << ", move " << move;
        else
            ASSERT_TRUE(std::isnan(score) && std::isnan(expected)) << c.name;
    };

    compare(fast.EvaluateAll(), -1);
    for (int move = 0; c.sensors > 0 && move < 40; ++move)
    {
        const size_t index = static_cast<size_t>((move * 5) % c.sensors);
        const Eigen::Vector3d oldPosition = layout.positions[index];
        const Eigen::Vector3d oldNormal = layout.normals[index];
        Eigen::Vector3f position, normal;
        mesh.surface().SampleSeat(position, normal);
        layout.positions[index] = position.cast<double>();
        layout.normals[index] = normal.cast<double>();
        compare(fast.EvaluateMove(index), move);
        if (move % 3 == 1)
        {
            layout.positions[index] = oldPosition;
            layout.normals[index] = oldNormal;
            fast.UndoMove();
            if (move % 6 == 1)
                fast.UndoMove();  // a second undo has nothing left to undo
            compare(fast.Checkpoint(), move);
        }
    }
}

TEST(IncrementalEvaluator, MovesScoreAsTheReferenceAndClassifyEveryPoseAlike)
{
    const Case cases[] = {
        {"occluded", 9, true, 120, 1, false, false},
        {"occluded, 2 threads", 9, true, 120, 2, false, false},
        {"open, 3 threads", 9, false, 120, 3, false, false},
        {"translation moved", 6, true, 120, 2, false, true},
        {"tilted sweep", 6, true, 120, 2, true, false},
        {"three sensors", 3, true, 60, 1, false, false},
        {"one sensor", 1, true, 30, 2, false, false},
        {"no sensors", 0, true, 30, 2, false, false},
        {"one pose, not a number", 4, true, 1, 2, false, false},
        {"no poses: scale infinite", 4, true, 0, 2, false, false},
    };
    std::array<int, kClasses> met = {};
    for (const Case& c : cases)
        CompareMoves(c, met);
    // The premise: every class of pose occurs.
    EXPECT_GT(met[kFailed], 0);
    EXPECT_GT(met[kSaturated], 0);
    EXPECT_GT(met[kFinite], 0);
}

} // namespace
} // namespace kelvorig
