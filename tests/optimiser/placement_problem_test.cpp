#include "optimiser/placement_problem.h"

#include "geometry/tracked_surface.h"
#include "support/mesh_surface.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>
#include <string>

namespace kelvorig {
namespace {

constexpr int32_t kOrientations = 20;

struct SolveRun
{
    TrackedObjectModel model;
    double finalQuality = 0.0;
    std::string console;
};

// Solve on a fresh box surface with fixed seeds and few orientations, capturing the console.
SolveRun RunSolve(int32_t nSensors, int32_t nIterations, double coolingRate, const SensorLayout* immutable = nullptr,
                  double qualityLow = -1.0, double qualityHigh = -1.0)
{
    test::MeshSurface box;
    PlacementProblem problem(nSensors, box.surface());
    problem.model = immutable;
    problem.nOrientations = kOrientations;
    problem.nIterations = nIterations;
    problem.coolingRate = coolingRate;
    problem.qualityLow = qualityLow;
    problem.qualityHigh = qualityHigh;
    problem.annealerSeed = 99;

    SolveRun run;
    testing::internal::CaptureStderr();
    run.model = problem.Solve().value();
    run.console = testing::internal::GetCapturedStderr();
    run.finalQuality = problem.finalQuality;
    return run;
}

// Scores a model the way the annealer scored it: same orientations, incidence limit and range.
double ScoreAsAnnealed(const TrackedObjectModel& model, double qualityLow = -1.0, double qualityHigh = -1.0)
{
    test::MeshSurface box;
    SensorLayout layout(model, kIdentityTransform);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0));
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(&box.surface());
    evaluator.SampleOrientations(kOrientations);
    if (qualityLow > 0.0 && qualityHigh > 0.0)
        evaluator.SetQualityRange(qualityLow, qualityHigh);
    return evaluator.EvaluateQuality();
}

// The anneal scores its moves incrementally, which agrees with a fresh evaluation to
// rounding, not bit for bit.
void ExpectSameScore(double annealed, double recomputed)
{
    EXPECT_NEAR(annealed, recomputed, 1e-9 * std::abs(recomputed));
}

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n') + 1); }

// The progress line after the duration line, with the "(score)" groups of new bests removed.
std::string MovesOnly(const std::string& console)
{
    std::string progress = console.substr(console.find('\n') + 1);
    std::string dots;
    int depth = 0;
    for (char c : progress)
    {
        depth += (c == '(') - (c == ')');
        if (depth == 0 && c != ')')
            dots += c;
    }
    return dots;
}

TEST(PlacementProblem, ScheduleRunsItsTemperaturesWithOneDotPerMove)
{
    struct Case
    {
        int32_t nSensors;
        int32_t nIterations;
        double coolingRate;
        std::string durationLine;
        size_t moves;
    };
    const Case cases[] = {
        {16, 3, 0.96, "anneal duration: 9356.81\n", 195 * 48},  // the command line's defaults
        {4, 2, 0.5, "anneal duration: 91.8429\n", 12 * 8},
        {4, 1, 0.0, "anneal duration: 0\n", 4},  // one temperature, all at 100
        {4, 0, 0.96, "anneal duration: 0\n", 0},
    };
    for (const Case& c : cases)
    {
        const SolveRun run = RunSolve(c.nSensors, c.nIterations, c.coolingRate);
        EXPECT_EQ(FirstLine(run.console), c.durationLine) << c.coolingRate;
        const std::string moves = MovesOnly(run.console);
        EXPECT_EQ(moves, std::string(c.moves, '.')) << c.coolingRate;
        if (c.moves > 0)
        {
            EXPECT_NE(run.console.back(), '\n') << "the anneal's line stays open";
        }
    }
}

TEST(PlacementProblem, NoIterationsReturnsTheFirstLayoutAndItsScore)
{
    const SolveRun run = RunSolve(5, 0, 0.96);

    test::MeshSurface box;
    PlacementLayout first(5);
    PlacementProblem(5, box.surface()).PlaceInitialSensors(first);
    EXPECT_EQ(run.model.modelPoints, first.ToModel().modelPoints);
    EXPECT_EQ(run.model.modelNormals, first.ToModel().modelNormals);
    EXPECT_EQ(run.console, "anneal duration: 0\n");
    ExpectSameScore(run.finalQuality, ScoreAsAnnealed(run.model));
}

TEST(PlacementProblem, FixedSeedsRepeatBitForBitAndReportTheReturnedLayoutsScore)
{
    const SolveRun a = RunSolve(6, 1, 0.5);
    const SolveRun b = RunSolve(6, 1, 0.5);
    EXPECT_EQ(a.model.modelPoints, b.model.modelPoints);
    EXPECT_EQ(a.model.modelNormals, b.model.modelNormals);
    EXPECT_EQ(a.console, b.console);
    EXPECT_EQ(a.finalQuality, b.finalQuality);
    ExpectSameScore(a.finalQuality, ScoreAsAnnealed(a.model));
    // New bests print their scores; the last is the final quality.
    const size_t open = a.console.rfind('(');
    ASSERT_NE(open, std::string::npos) << "no move beat the first layout";
    std::ostringstream last;
    last << a.finalQuality;
    EXPECT_EQ(a.console.substr(open + 1, a.console.find(')', open) - open - 1), last.str());

    const SolveRun ranged = RunSolve(6, 1, 0.5, nullptr, 0.01, 0.2);
    ExpectSameScore(ranged.finalQuality, ScoreAsAnnealed(ranged.model, 0.01, 0.2));
    EXPECT_NE(ranged.finalQuality, a.finalQuality);

    // A range with a bound of 0 or below is dropped: the default shape of the score stands.
    const SolveRun dropped = RunSolve(6, 1, 0.5, nullptr, 0.0, 0.2);
    EXPECT_EQ(dropped.console, a.console);
    EXPECT_EQ(dropped.finalQuality, a.finalQuality);
}

TEST(PlacementProblem, ImmutableSensorsComeFirstAndEverySensorSitsOnTheSurface)
{
    TrackedObjectModel input;
    input.valid = true;
    input.channelMap = {12, 3};
    input.modelPoints = {{0.0f, 0.0f, 0.05f}, {0.05f, 0.01f, -0.02f}};
    input.modelNormals = {{0, 0, 1}, {1, 0, 0}};
    const SensorLayout immutable(input, kIdentityTransform);

    const SolveRun run = RunSolve(6, 1, 0.5, &immutable);
    EXPECT_EQ(run.model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(run.model.modelPoints[0], input.modelPoints[0]);
    EXPECT_EQ(run.model.modelPoints[1], input.modelPoints[1]);
    EXPECT_EQ(run.model.modelNormals[1], input.modelNormals[1]);

    test::MeshSurface box;
    for (size_t i = 0; i < run.model.modelPoints.size(); ++i)
        EXPECT_TRUE(box.surface().IsOnSensorSurface(run.model.modelPoints[i], run.model.modelNormals[i])) << i;
}

} // namespace
} // namespace kelvorig
