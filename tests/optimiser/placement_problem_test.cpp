#include "optimiser/placement_problem.h"

#include "geometry/angles.h"
#include "geometry/tracked_surface.h"
#include "optimiser/mesh_surface.h"
#include "optimiser/sensor_placement_annealer.h"
#include "quality/quality_evaluator.h"

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
    run.model = problem.Solve();
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

TEST(PlacementProblem, DefaultsAreTheOptimisersOwn)
{
    test::MeshSurface box;
    const PlacementProblem problem(7, box.surface());
    EXPECT_EQ(problem.model, nullptr);
    EXPECT_EQ(problem.nSensors, 7);
    EXPECT_EQ(problem.nOrientations, 1250);
    EXPECT_EQ(problem.nIterations, 50);
    EXPECT_EQ(problem.coolingRate, 0.958);
    EXPECT_EQ(problem.incidenceLimitDegrees, 60.0);
    EXPECT_EQ(problem.qualityLow, -1.0);
    EXPECT_EQ(problem.qualityHigh, -1.0);
    EXPECT_EQ(problem.finalQuality, 0.0);
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
    EXPECT_EQ(run.finalQuality, ScoreAsAnnealed(run.model));
}

TEST(PlacementProblem, FixedSeedsRepeatBitForBitAndReportTheReturnedLayoutsScore)
{
    const SolveRun a = RunSolve(6, 1, 0.5);
    const SolveRun b = RunSolve(6, 1, 0.5);
    EXPECT_EQ(a.model.modelPoints, b.model.modelPoints);
    EXPECT_EQ(a.model.modelNormals, b.model.modelNormals);
    EXPECT_EQ(a.console, b.console);
    EXPECT_EQ(a.finalQuality, b.finalQuality);
    EXPECT_EQ(a.finalQuality, ScoreAsAnnealed(a.model));
    EXPECT_NE(a.console.find('('), std::string::npos) << "no move beat the first layout";

    const SolveRun ranged = RunSolve(6, 1, 0.5, nullptr, 0.01, 0.2);
    EXPECT_EQ(ranged.finalQuality, ScoreAsAnnealed(ranged.model, 0.01, 0.2));
    EXPECT_NE(ranged.finalQuality, a.finalQuality);

    // A range with a bound of 0 or below is dropped: the default shape of the score stands.
    const SolveRun dropped = RunSolve(6, 1, 0.5, nullptr, 0.0, 0.2);
    EXPECT_EQ(dropped.console, a.console);
    EXPECT_EQ(dropped.finalQuality, a.finalQuality);
}

TEST(PlacementProblem, NewBestsPrintTheirScoresAndTheLastIsTheFinalQuality)
{
    const SolveRun run = RunSolve(6, 1, 0.5);
    const size_t open = run.console.rfind('(');
    ASSERT_NE(open, std::string::npos);
    const std::string last = run.console.substr(open + 1, run.console.find(')', open) - open - 1);
    std::ostringstream expected;
    expected << run.finalQuality;
    EXPECT_EQ(last, expected.str());
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

TEST(PlacementProblem, InitialSensorsSpreadOverTheSurface)
{
    // Best-candidate seeding: no two sensors of the first layout on the box come closer
    // than a small fraction of its size, and the first takes the first candidate.
    test::MeshSurface box;
    PlacementLayout layout(8);
    PlacementProblem(8, box.surface()).PlaceInitialSensors(layout);

    test::MeshSurface reference;
    Eigen::Vector3f position, normal;
    reference.surface().SampleSeat(position, normal);
    EXPECT_EQ(layout.positions[0], position.cast<double>());
    EXPECT_EQ(layout.normals[0], normal.cast<double>());

    for (size_t i = 0; i < 8; ++i)
    {
        EXPECT_TRUE(box.surface().IsOnSensorSurface(layout.positions[i].cast<float>(), layout.normals[i].cast<float>()));
        for (size_t j = 0; j < i; ++j)
            EXPECT_GT((layout.positions[i] - layout.positions[j]).norm(), 0.02) << i << " " << j;
    }
}

} // namespace
} // namespace kelvorig
