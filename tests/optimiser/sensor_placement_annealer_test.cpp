#include "optimiser/sensor_placement_annealer.h"

#include "optimiser/placement_problem.h"
#include "support/mesh_surface.h"
#include "support/random_draws.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <sstream>

#include <cmath>

namespace kelvorig {
namespace {

struct AnnealRecord
{
    std::vector<double> scores; // the first layout's, then every move's
    TrackedObjectModel best;
    double bestScore = 0.0;
    double finalScore = 0.0; // of the layout the anneal leaves, scored afresh
    PlacementLayout layout{0};
};

// A short anneal with fixed seeds on the occluded cube on 2 threads: 8 sensors, 2 of them
// immutable, 60 orientations, 12 temperatures of 16 moves.
AnnealRecord Anneal(SensorPlacementAnnealer::Scoring scoring)
{
    test::MeshSurface mesh(test::MakeOccludedCube(), 99);
    PlacementLayout layout(8);
    layout.cosMaxIncidence = 0.5;
    EXPECT_TRUE(PlacementProblem(8, mesh.surface()).PlaceInitialSensors(layout));
    layout.immutableCount = 2;
    WorkerPool workers(2);
    SensorPlacementAnnealer annealer(layout, mesh.surface(), 2, 60, 0.5, -1.0, -1.0, 31337);
    annealer.SetScoring(scoring);
    annealer.UseWorkers(workers);
    AnnealRecord record;
    annealer.ObserveScores([&record](double score) { record.scores.push_back(score); });
    EXPECT_TRUE(annealer.Anneal(record.best));
    record.bestScore = annealer.snapshotScore();
    record.layout = layout;
    record.finalScore = annealer.evaluator().EvaluateQuality();
    return record;
}

// Incremental scores agree with the reference's to rounding, too little to change any
// decision: the same moves stand and the same layout comes out. (That the thread count
// changes nothing is checked on the binary's outputs, by the repeatable-run test.)
TEST(AnnealerScoring, IncrementalScoresEveryMoveAsTheReference)
{
    const AnnealRecord reference = Anneal(SensorPlacementAnnealer::Scoring::Reference);
    ASSERT_EQ(reference.scores.size(), 1u + 12u * 16u);
    // The acceptance rule over the scores seen: a worsening move stands when a draw of the
    // acceptance stream is at most exp(-rise / temperature). The layout left at the end is the
    // last that stood, and the run met both outcomes.
    RandomEngine acceptance(kFixedSeed);
    double temperature = kStartTemperature, previous = reference.scores[0];
    int undone = 0, worseKept = 0;
    for (size_t move = 1; move < reference.scores.size(); ++move)
    {
        const double q = reference.scores[move];
        if (q > previous && DrawUnit(acceptance) > std::exp((previous - q) / temperature))
            ++undone;
        else
            worseKept += q > previous, previous = q;
        if (move % 16 == 0)
            temperature *= 0.5;
    }
    EXPECT_NEAR(reference.finalScore, previous, 1e-9 * previous);
    EXPECT_TRUE(undone > 5 && worseKept > 5);

    const AnnealRecord fast = Anneal(SensorPlacementAnnealer::Scoring::Incremental);
    ASSERT_EQ(fast.scores.size(), reference.scores.size());
    for (size_t move = 0; move < reference.scores.size(); ++move)
        ASSERT_NEAR(fast.scores[move], reference.scores[move], 1e-9 * reference.scores[move]) << "move " << move;
    EXPECT_TRUE(fast.layout.positions == reference.layout.positions && fast.layout.normals == reference.layout.normals);
    EXPECT_EQ(fast.best.modelPoints, reference.best.modelPoints);
    EXPECT_EQ(fast.best.modelNormals, reference.best.modelNormals);
    EXPECT_NEAR(fast.bestScore, reference.bestScore, 1e-9 * reference.bestScore);
}

// Every move changes one movable sensor, never an immutable one, and its undo restores the
// layout exactly; each move prints its dot.
TEST(SensorPlacementAnnealer, UndoRestoresTheMovedSensorExactlyAndImmutablesNeverMove)
{
    test::MeshSurface box;
    PlacementLayout layout(4);
    ASSERT_TRUE(PlacementProblem(4, box.surface()).PlaceInitialSensors(layout));
    layout.immutableCount = 1;
    const PlacementLayout before = layout;
    SensorPlacementAnnealer annealer(layout, box.surface(), 1, 20, 0.5, -1.0, -1.0, 77);
    std::ostringstream progress;
    annealer.ShowProgress(&progress);
    int changed = 0;
    for (int move = 0; move < 30; ++move)
    {
        ASSERT_TRUE(annealer.MoveOneSensor(move % 2 ? kStartTemperature : kStopTemperature));
        ASSERT_GE(annealer.movedIndex(), 1);
        changed += layout.positions[annealer.movedIndex()] != before.positions[annealer.movedIndex()];
        EXPECT_TRUE(layout.positions[0] == before.positions[0] && layout.normals[0] == before.normals[0]);
        annealer.UndoMove();
        ASSERT_TRUE(layout.positions == before.positions && layout.normals == before.normals) << move;
    }
    EXPECT_EQ(progress.str(), std::string(30, '.'));
    EXPECT_GT(changed, 25);
}

// Absurd counts multiply without overflow.
TEST(SensorPlacementAnnealer, MovesPerTemperatureAreCountedIn64Bits)
{
    test::MeshSurface box;
    PlacementLayout layout(8);
    const SensorPlacementAnnealer annealer(layout, box.surface(), 2'000'000'000, 20, 0.5, -1.0, -1.0, 1u);
    EXPECT_EQ(annealer.movesPerTemperature(), 16'000'000'000);
}

} // namespace
} // namespace kelvorig
