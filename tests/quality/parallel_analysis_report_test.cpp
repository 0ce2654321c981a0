#include "quality/quality_evaluator.h"

#include "geometry/angles.h"
#include "geometry/tracked_surface.h"
#include "optimiser/mesh_surface.h"
#include "quality/worker_pool.h"
#include "support/occluded_cube.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>

namespace kelvorig {
namespace {

constexpr double kFullTurn = 6.283185307179586;

std::string ReadBack(FILE* file)
{
    std::rewind(file);
    std::string text;
    char buffer[4096];
    size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        text.append(buffer, count);
    std::fclose(file);
    return text;
}

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
// 2.5 m away; `write` runs one report on the prepared evaluator.
Report RunReport(const ReportSetup& setup, const std::function<void(QualityEvaluator&, FILE*, FILE*)>& write)
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

    FILE* out = std::tmpfile();
    FILE* err = std::tmpfile();
    write(evaluator, out, err);
    Report report{ReadBack(out), ReadBack(err), evaluator.poseVector(), evaluator.visibility()->visible,
                  evaluator.visibility()->everSeen};
    return report;
}

void ExpectSameReport(const ReportSetup& setup, const char* name)
{
    const Report reference = RunReport(setup,
                                       [&](QualityEvaluator& evaluator, FILE* out, FILE* err)
                                       {
                                           if (setup.sensitivity)
                                               evaluator.WriteSensitivityReport(out, err);
                                           else
                                               evaluator.WriteCoverageReport(out, err);
                                       });
    ASSERT_FALSE(reference.out.empty()) << name;
    for (const int32_t threads : {1, 2, 3})
    {
        WorkerPool workers(threads);
        const Report parallel = RunReport(setup,
                                          [&](QualityEvaluator& evaluator, FILE* out, FILE* err)
                                          {
                                              if (setup.sensitivity)
                                                  evaluator.WriteSensitivityReport(workers, out, err);
                                              else
                                                  evaluator.WriteCoverageReport(workers, out, err);
                                          });
        EXPECT_TRUE(parallel.out == reference.out) << name << ", " << threads << " threads";
        EXPECT_EQ(parallel.err, reference.err) << name << ", " << threads << " threads";
        EXPECT_EQ(parallel.poseVector, reference.poseVector) << name << ", " << threads << " threads";
        EXPECT_EQ(parallel.visible, reference.visible) << name << ", " << threads << " threads";
        EXPECT_EQ(parallel.everSeen, reference.everSeen) << name << ", " << threads << " threads";
    }
}

TEST(ParallelAnalysisReport, CoverageTextIsTheOneThreadTextByteForByte)
{
    ExpectSameReport(ReportSetup{}, "coverage");
    ExpectSameReport(ReportSetup{.occlusion = false}, "coverage without occlusion");
    ExpectSameReport(ReportSetup{.tilt = 0.4}, "coverage, tilted sweep");
}

// A 3 degree grid holds more rows than are computed between two writes.
TEST(ParallelAnalysisReport, RowsStayInOrderAcrossBatches)
{
    ExpectSameReport(ReportSetup{.stepDegrees = 3.0}, "fine coverage");
}

TEST(ParallelAnalysisReport, SensitivityTextIsTheOneThreadTextByteForByte)
{
    ExpectSameReport(ReportSetup{.sensitivity = true}, "sensitivity");
    ExpectSameReport(ReportSetup{.sensitivity = true, .tilt = 0.4}, "sensitivity, tilted sweep");
}

// Without a model every row sees nothing, on any number of threads.
TEST(ParallelAnalysisReport, EvaluatorWithoutAModelWritesTheSameEmptyRows)
{
    const auto write = [](WorkerPool* workers)
    {
        QualityEvaluator evaluator;
        evaluator.SampleAnalysisPoses(kFullTurn, DegreesToRadians(30.0));
        FILE* out = std::tmpfile();
        FILE* err = std::tmpfile();
        if (workers)
            evaluator.WriteCoverageReport(*workers, out, err);
        else
            evaluator.WriteCoverageReport(out, err);
        return ReadBack(out) + ReadBack(err);
    };
    const std::string reference = write(nullptr);
    ASSERT_NE(reference.find(" 0 0 0 0 0 100 1.000000 1.000000\n"), std::string::npos) << reference;
    WorkerPool workers(2);
    EXPECT_EQ(write(&workers), reference);
}

// The premise of the tests above: the hidden sensor is named at the end, and rows differ
// in what they see.
TEST(ParallelAnalysisReport, TheTestLayoutHasAHiddenSensor)
{
    WorkerPool workers(2);
    const Report report = RunReport(ReportSetup{}, [&](QualityEvaluator& evaluator, FILE* out, FILE* err)
                                    { evaluator.WriteCoverageReport(workers, out, err); });
    EXPECT_EQ(report.err, "did not see sensor id 17\n");
    EXPECT_NE(report.out.find(" 100 0 "), std::string::npos);
    EXPECT_NE(report.out.find(" 0 100 "), std::string::npos);
}

} // namespace
} // namespace kelvorig
