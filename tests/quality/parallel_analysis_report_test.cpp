#include "quality/quality_evaluator.h"

#include "geometry/tracked_surface.h"
#include "support/mesh_surface.h"
#include "support/angles.h"
#include "support/cli_runner.h"
#include "support/occluded_cube.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvorig {
namespace {

constexpr double kFullTurn = 6.283185307179586;

struct Report
{
    std::string out;
    std::string err;
    PoseVector poseVector;
    std::vector<bool> visible;
    std::vector<bool> everSeen;
};

struct ReportSetup
{
    bool occlusion = true;
    bool sensitivity = false;
    double tilt = 0.0;
    double stepDegrees = 10.0;
};

// Nine sensors seated on the occluded cube plus one that the slab always hides, analysed
// 2.5 m away; the report is written on `workers` when given.
Report RunReport(const ReportSetup& setup, WorkerPool* workers)
{
    test::MeshSurface mesh(test::MakeOccludedCube(), 7);
    TrackedObjectModel model;
    model.valid = true;
    for (int i = 0; i < 10; ++i)
    {
        Eigen::Vector3f position = test::kUnderTheSlab;
        Eigen::Vector3f normal = test::kUnderTheSlabNormal;
        if (i != 4)
            mesh.surface().SampleSeat(position, normal);
        model.channelMap.push_back(i == 4 ? 17 : i);
        model.modelPoints.push_back(position);
        model.modelNormals.push_back(normal);
    }
    SensorLayout layout(model, kIdentityTransform);
    layout.cosMaxIncidence = 0.5;

    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(setup.occlusion ? &mesh.surface() : nullptr);
    if (setup.tilt != 0.0)
        evaluator.SetBaseStationModel(BaseStationModel{kTiltedBaseStationKind, setup.tilt});
    evaluator.SampleAnalysisPoses(kFullTurn, DegreesToRadians(setup.stepDegrees));
    evaluator.poseVector()[2] = -2.5;

    WorkerPool one(1);
    WorkerPool& pool = workers ? *workers : one;
    const test::CliResult text = test::CaptureFiles(
        [&](FILE* out, FILE* err)
        {
            if (setup.sensitivity)
                evaluator.WriteSensitivityReport(pool, out, err);
            else
                evaluator.WriteCoverageReport(pool, out, err);
        });
    return {text.out, text.err, evaluator.poseVector(), evaluator.visibility()->visible,
            evaluator.visibility()->everSeen};
}

// Every report, serial and on 1 to 3 threads, byte for byte; a 3 degree grid holds more
// rows than are computed between two writes.
TEST(ParallelAnalysisReport, TextIsTheOneThreadTextByteForByte)
{
    const struct
    {
        const char* name;
        ReportSetup setup;
    } cases[] = {
        {"coverage", {}},
        {"coverage without occlusion", {.occlusion = false}},
        {"coverage, tilted sweep", {.tilt = 0.4}},
        {"fine coverage", {.stepDegrees = 3.0}},
        {"sensitivity", {.sensitivity = true}},
        {"sensitivity, tilted sweep", {.sensitivity = true, .tilt = 0.4}},
    };
    for (const auto& c : cases)
    {
        const Report reference = RunReport(c.setup, nullptr);
        ASSERT_FALSE(reference.out.empty()) << c.name;
        for (const int32_t threads : {1, 2, 3})
        {
            WorkerPool workers(threads);
            const Report parallel = RunReport(c.setup, &workers);
            EXPECT_TRUE(parallel.out == reference.out) << c.name << ", " << threads << " threads";
            EXPECT_EQ(parallel.err, reference.err) << c.name << ", " << threads << " threads";
            EXPECT_EQ(parallel.poseVector, reference.poseVector) << c.name << ", " << threads << " threads";
            EXPECT_EQ(parallel.visible, reference.visible) << c.name << ", " << threads << " threads";
            EXPECT_EQ(parallel.everSeen, reference.everSeen) << c.name << ", " << threads << " threads";
        }
    }

    // The premise: the hidden sensor is named at the end, and rows differ in what they see.
    const Report coverage = RunReport(ReportSetup{}, nullptr);
    EXPECT_EQ(coverage.err, "did not see sensor id 17\n");
    EXPECT_NE(coverage.out.find(" 100 0 "), std::string::npos);
    EXPECT_NE(coverage.out.find(" 0 100 "), std::string::npos);
}

// Without a model every row sees nothing, on any number of threads.
TEST(ParallelAnalysisReport, EvaluatorWithoutAModelWritesTheSameEmptyRows)
{
    const auto write = [](WorkerPool* workers)
    {
        QualityEvaluator evaluator;
        evaluator.SampleAnalysisPoses(kFullTurn, DegreesToRadians(30.0));
        WorkerPool one(1);
        WorkerPool& pool = workers ? *workers : one;
        const test::CliResult text =
            test::CaptureFiles([&](FILE* out, FILE* err) { evaluator.WriteCoverageReport(pool, out, err); });
        return text.out + text.err;
    };
    const std::string reference = write(nullptr);
    ASSERT_NE(reference.find(" 0 0 0 0 0 100 1.000000 1.000000\n"), std::string::npos) << reference;
    WorkerPool workers(2);
    EXPECT_EQ(write(&workers), reference);
}

} // namespace
} // namespace kelvorig
