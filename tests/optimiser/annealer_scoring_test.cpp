#include "optimiser/sensor_placement_annealer.h"

#include "geometry/tracked_surface.h"
#include "support/mesh_surface.h"
#include "optimiser/placement_problem.h"
#include "support/test_meshes.h"
#include "support/random_draws.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace kelvorig {
namespace {

struct AnnealRecord
{
    std::vector<double> scores;  // the first layout's, then every move's
    TrackedObjectModel best;
    double bestScore = 0.0;
    std::vector<Eigen::Vector3d> finalPositions;
    std::vector<Eigen::Vector3d> finalNormals;
};

// A short anneal with fixed seeds: 8 sensors, 2 of them immutable, 60 orientations,
// 12 temperatures of 16 moves.
AnnealRecord Anneal(SensorPlacementAnnealer::Scoring scoring, int32_t threads)
{
    test::MeshSurface mesh(test::MakeOccludedCube(), 99);
    PlacementLayout layout(8);
    layout.cosMaxIncidence = 0.5;
    PlacementProblem(8, mesh.surface()).PlaceInitialSensors(layout);
    layout.immutableCount = 2;

    WorkerPool workers(threads);
    SensorPlacementAnnealer annealer(layout, mesh.surface(), 2, 60, 0.5, -1.0, -1.0, 31337);
    annealer.SetScoring(scoring);
    annealer.UseWorkers(workers);
    AnnealRecord record;
    annealer.ObserveScores([&record](double score) { record.scores.push_back(score); });

    testing::internal::CaptureStderr();
    record.best = annealer.Anneal().value();
    testing::internal::GetCapturedStderr();
    record.bestScore = annealer.snapshotScore();
    record.finalPositions = layout.positions;
    record.finalNormals = layout.normals;
    return record;
}

// Incremental scores agree with the reference's to rounding, too little to change any
// decision: the same moves stand and the same layout comes out.
TEST(AnnealerScoring, IncrementalScoresEveryMoveAsTheReference)
{
    const AnnealRecord reference = Anneal(SensorPlacementAnnealer::Scoring::Reference, 1);
    ASSERT_EQ(reference.scores.size(), 1u + 12u * 16u);

    std::vector<double> oneThread;
    for (const int32_t threads : {1, 2})
    {
        const AnnealRecord fast = Anneal(SensorPlacementAnnealer::Scoring::Incremental, threads);
        // Whatever the number of threads, the same scores exactly.
        if (oneThread.empty())
            oneThread = fast.scores;
        EXPECT_EQ(fast.scores, oneThread);
        ASSERT_EQ(fast.scores.size(), reference.scores.size()) << threads;
        for (size_t move = 0; move < reference.scores.size(); ++move)
            ASSERT_NEAR(fast.scores[move], reference.scores[move], 1e-9 * reference.scores[move])
                << "move " << move << ", " << threads << " threads";
        EXPECT_EQ(fast.finalPositions, reference.finalPositions);
        EXPECT_EQ(fast.finalNormals, reference.finalNormals);
        EXPECT_EQ(fast.best.modelPoints, reference.best.modelPoints);
        EXPECT_EQ(fast.best.modelNormals, reference.best.modelNormals);
        EXPECT_NEAR(fast.bestScore, reference.bestScore, 1e-9 * reference.bestScore);
    }

    // The run would prove little without both outcomes of a worsening move: replaying the
    // acceptance draws over its scores finds moves that were undone and worsening moves
    // that stood.
    RandomEngine acceptance(kFixedSeed);
    double temperature = kStartTemperature;
    double previous = reference.scores[0];
    int undone = 0;
    int worseKept = 0;
    for (size_t move = 1; move < reference.scores.size(); ++move)
    {
        const double q = reference.scores[move];
        if (q > previous && DrawUnit(acceptance) > std::exp((previous - q) / temperature))
        {
            ++undone;
        }
        else
        {
            worseKept += q > previous;
            previous = q;
        }
        if (move % 16 == 0)
            temperature *= 0.5;
    }
    EXPECT_GT(undone, 5);
    EXPECT_GT(worseKept, 5);
}

} // namespace
} // namespace kelvorig
