#include "quality/incremental_evaluator.h"

#include "quality/reference_pose_error.h"
#include "support/mesh_surface.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

struct Case
{
    int sensors;
    bool occlusion;
    int32_t orientations;
    int32_t threads;
    bool tilted;      // a tilted sweep that can't reach some sensors
    bool translation; // translation moved off the default
};

// The same moves, some undone and checkpointed, fed to the reference and to the incremental
// evaluator: every score within 1e-9 relative, every pose alike as failed (the penalty),
// saturated (the ceiling) or finite. Counts those classes in `met`.
void CompareMoves(const Case& c, int (&met)[3])
{
    test::MeshSurface mesh(test::MakeOccludedCube());
    std::vector<Eigen::Vector3f> points(static_cast<size_t>(c.sensors)), normals(points.size());
    for (size_t i = 0; i < points.size(); ++i)
        EXPECT_TRUE(mesh.surface().SampleSeat(points[i], normals[i]));
    SensorLayout layout = test::MakeLayout(points, normals);
    layout.cosMaxIncidence = 0.5;
    QualityEvaluator reference;
    reference.SetModel(layout);
    reference.SetSurface(c.occlusion ? &mesh.surface() : nullptr);
    if (c.tilted)
        reference.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, 1.55});
    reference.SampleOrientations(c.orientations);
    if (c.translation)
        reference.poseVector()[0] = 0.3, reference.poseVector()[2] = -1.5;
    WorkerPool workers(c.threads);
    IncrementalEvaluator fast(reference, workers);
    const auto classOf = [&](double term) {
        return term == QualityEvaluator::kFailedPoseCost ? 0 : term == 1.0 + reference.scoreOffset() ? 1 : 2;
    };
    const auto compare = [&](double score, int move)
    {
        double sum = 0.0;
        for (size_t pose = 0; pose < reference.poses().size(); ++pose)
        {
            const double term = reference.PoseTerm(reference.poses()[pose]);
            sum += term;
            ASSERT_EQ(classOf(fast.PoseTerm(pose)), classOf(term)) << "move " << move << ", pose " << pose;
            ++met[classOf(term)];
        }
        const double expected = reference.scoreScale() * sum;
        if (std::isfinite(expected))
            ASSERT_NEAR(score, expected, 1e-9 * std::abs(expected)) << "move " << move;
        else
            ASSERT_TRUE(std::isnan(score) && std::isnan(expected));
    };

    compare(fast.EvaluateAll(), -1);
    for (int move = 0; c.sensors > 0 && move < 40; ++move)
    {
        const size_t index = static_cast<size_t>((move * 5) % c.sensors);
        const Eigen::Vector3d oldPosition = layout.positions[index], oldNormal = layout.normals[index];
        Eigen::Vector3f position, normal;
        EXPECT_TRUE(mesh.surface().SampleSeat(position, normal));
        layout.positions[index] = position.cast<double>();
        layout.normals[index] = normal.cast<double>();
        compare(fast.EvaluateMove(index), move);
        if (move % 3 == 1)
        {
            layout.positions[index] = oldPosition;
            layout.normals[index] = oldNormal;
            fast.UndoMove();
            if (move % 6 == 1)
                fast.UndoMove(); // a second undo has nothing left to undo
            compare(fast.Checkpoint(), move);
        }
    }
}

TEST(IncrementalEvaluator, MovesScoreAsTheReferenceAndClassifyEveryPoseAlike)
{
    const Case cases[] = {
        {9, true, 120, 1, false, false}, {9, true, 120, 2, false, false}, {9, false, 120, 3, false, false},
        {6, true, 120, 2, false, true},  {6, true, 120, 2, true, false},  {3, true, 60, 1, false, false},
        {1, true, 30, 2, false, false},  {0, true, 30, 2, false, false},  {4, true, 1, 2, false, false},
        {4, true, 0, 2, false, false}, // no poses: the scale is infinite
    };
    int met[3] = {};
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.sensors << " sensors, " << c.orientations << " orientations");
        CompareMoves(c, met);
    }
    EXPECT_TRUE(met[0] > 0 && met[1] > 0 && met[2] > 0); // the premise: every class occurs
}

} // namespace
} // namespace kelvorig
