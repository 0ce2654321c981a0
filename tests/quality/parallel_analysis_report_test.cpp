#include "quality/quality_evaluator.h"

#include "support/angles.h"
#include "support/cli_runner.h"
#include "support/mesh_surface.h"
#include "support/worker_pool.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

struct ReportSetup
{
    bool occlusion = true;
    bool sensitivity = false;
    double tilt = 0.0;
    double stepDegrees = 10.0;
};

// Nine sensors seated on the occluded cube and one that the slab always hides (id 17),
// analysed 2.5 m away on `threads` workers; the text of both streams, then what the
// evaluator is left with.
std::vector<std::string> RunReport(const ReportSetup& setup, int32_t threads)
{
    test::MeshSurface mesh(test::MakeOccludedCube(), 7);
    TrackedObjectModel model;
    model.valid = true;
    for (int i = 0; i < 10; ++i)
    {
        Eigen::Vector3f position = test::kUnderTheSlab, normal = test::kUnderTheSlabNormal;
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
    evaluator.SampleAnalysisPoses(6.283185307179586, DegreesToRadians(setup.stepDegrees));
    evaluator.poseVector()[2] = -2.5;
    WorkerPool workers(threads);
    const test::CliResult text = test::CaptureFiles([&](FILE* out, FILE* err) {
        setup.sensitivity ? evaluator.WriteSensitivityReport(workers, out, err)
                          : evaluator.WriteCoverageReport(workers, out, err);
    });
    std::string state;
    for (double v : evaluator.poseVector())
        state += std::to_string(v) + ' ';
    for (size_t i = 0; i < 10; ++i)
        state += std::to_string(evaluator.visibility()->visible[i]) + std::to_string(evaluator.visibility()->everSeen[i]);
    return {text.out, text.err, state};
}

// Every report on 2 and 3 threads is the one-thread text byte for byte; a 3 degree grid holds
// more rows than are computed between two writes.
TEST(ParallelAnalysisReport, TextIsTheOneThreadTextByteForByte)
{
    const ReportSetup setups[] = {{}, {.occlusion = false}, {.tilt = 0.4}, {.stepDegrees = 3.0},
                                  {.sensitivity = true}, {.sensitivity = true, .tilt = 0.4}};
    for (const ReportSetup& setup : setups)
    {
        const std::vector<std::string> one = RunReport(setup, 1);
        ASSERT_FALSE(one[0].empty());
        for (const int32_t threads : {2, 3})
            EXPECT_TRUE(RunReport(setup, threads) == one) << threads << " threads, step " << setup.stepDegrees;
    }
    // The premise: the hidden sensor is named, and rows differ in what they see.
    const std::vector<std::string> coverage = RunReport({}, 1);
    EXPECT_EQ(coverage[1], "did not see sensor id 17\n");
    EXPECT_NE(coverage[0].find(" 100 0 "), std::string::npos);
    EXPECT_NE(coverage[0].find(" 0 100 "), std::string::npos);
}

} // namespace
} // namespace kelvorig
