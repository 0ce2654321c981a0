#include "optimiser/placement_problem.h"

#include "optimiser/anneal_restarts.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/mesh_surface.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace kelvorig {
namespace {

struct SolveRun
{
    TrackedObjectModel model;
    double finalQuality = 0.0;
    std::string console;
};

// One anneal on a fresh box with fixed seeds and 20 orientations, as the generate run starts
// it, capturing its progress.
SolveRun RunSolve(int32_t nSensors, int32_t nIterations, double coolingRate, double low = -1.0, double high = -1.0)
{
    test::MeshSurface box;
    PlacementProblem problem(nSensors, box.surface());
    problem.nOrientations = 20;
    problem.nIterations = nIterations;
    problem.coolingRate = coolingRate;
    problem.qualityLow = low;
    problem.qualityHigh = high;
    problem.annealerSeed = 99;
    std::ostringstream console;
    problem.progress = &console;
    WorkerPool callingThread(1);
    AnnealOutcome outcome;
    EXPECT_TRUE(AnnealBestOf(problem, 1, std::nullopt, callingThread, outcome));
    return {outcome.model, outcome.score, console.str()};
}

// The reported score is that of the returned layout scored afresh by the reference evaluator
// (the anneal scores incrementally, which agrees to rounding), and every sensor sits on the surface.
void ExpectScoreOfTheLayout(const SolveRun& run, double low = -1.0, double high = -1.0)
{
    test::MeshSurface box;
    SensorLayout layout(run.model, kIdentityTransform);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0));
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(&box.surface());
    evaluator.SampleOrientations(20);
    if (low > 0.0 && high > 0.0)
        evaluator.SetQualityRange(low, high);
    const double expected = evaluator.EvaluateQuality();
    EXPECT_NEAR(run.finalQuality, expected, 1e-9 * std::abs(expected));
    for (size_t i = 0; i < run.model.modelPoints.size(); ++i)
        EXPECT_TRUE(box.surface().IsOnSensorSurface(run.model.modelPoints[i], run.model.modelNormals[i])) << i;
}

// The schedule: a duration line, then one dot per move with each new best's "(score)", the
// line left open. (No iterations print the line alone: the command-line table shows it.)
TEST(PlacementProblem, ScheduleRunsItsTemperaturesWithOneDotPerMove)
{
    const struct
    {
        int32_t nSensors, nIterations;
        double coolingRate;
        std::string durationLine;
        size_t moves;
    } cases[] = {
        {16, 3, 0.96, "anneal duration: 9356.81\n", 195 * 48}, // the command line's defaults
        {4, 2, 0.5, "anneal duration: 91.8429\n", 12 * 8},
        {4, 1, 0.0, "anneal duration: 0\n", 4}, // one temperature, all at 100
    };
    for (const auto& c : cases)
    {
        const SolveRun run = RunSolve(c.nSensors, c.nIterations, c.coolingRate);
        EXPECT_TRUE(run.console.starts_with(c.durationLine)) << c.coolingRate;
        std::string dots;
        int depth = 0;
        for (char ch : run.console.substr(c.durationLine.size()))
        {
            depth += (ch == '(') - (ch == ')');
            if (depth == 0 && ch != ')')
                dots += ch;
        }
        EXPECT_EQ(dots, std::string(c.moves, '.')) << c.coolingRate;
    }
}

// No iterations return the first layout and its score. Otherwise the last new best printed is
// the final quality; a quality range changes the score, unless a bound is 0 or below and the
// range is dropped. (That fixed seeds repeat bit for bit is checked on the binary's outputs.)
TEST(PlacementProblem, ReportsTheReturnedLayoutsScore)
{
    const SolveRun none = RunSolve(5, 0, 0.96);
    test::MeshSurface box;
    PlacementLayout first(5);
    ASSERT_TRUE(PlacementProblem(5, box.surface()).PlaceInitialSensors(first));
    EXPECT_EQ(none.model.modelPoints, first.ToModel().modelPoints);
    EXPECT_EQ(none.model.modelNormals, first.ToModel().modelNormals);
    ExpectScoreOfTheLayout(none);

    const SolveRun a = RunSolve(6, 1, 0.5);
    ExpectScoreOfTheLayout(a);
    const size_t open = a.console.rfind('(');
    ASSERT_NE(open, std::string::npos) << "no move beat the first layout";
    std::ostringstream last;
    last << a.finalQuality;
    EXPECT_EQ(a.console.substr(open + 1, a.console.find(')', open) - open - 1), last.str());

    const SolveRun ranged = RunSolve(6, 1, 0.5, 0.01, 0.2);
    ExpectScoreOfTheLayout(ranged, 0.01, 0.2);
    EXPECT_NE(ranged.finalQuality, a.finalQuality);
    const SolveRun dropped = RunSolve(6, 1, 0.5, 0.0, 0.2);
    EXPECT_EQ(std::tie(dropped.console, dropped.finalQuality), std::tie(a.console, a.finalQuality));
}

} // namespace
} // namespace kelvorig
