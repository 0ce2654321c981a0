#include "driver/analysis_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kelvorig {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

SensorLayout LayoutWithIds(const std::vector<int32_t>& ids)
{
    TrackedObjectModel model;
    model.valid = true;
    model.channelMap = ids;
    for (size_t i = 0; i < ids.size(); ++i)
    {
        const float f = static_cast<float>(i);
        model.modelPoints.emplace_back(0.01f * f, 0.02f * std::sin(f), 0.015f * std::cos(2.0f * f));
        model.modelNormals.emplace_back(std::sin(f), std::cos(3.0f * f), 0.5f);
    }
    return SensorLayout(model, kIdentityTransform);
}

struct RunOutput
{
    int status;
    std::string out;
    std::string err;
};

RunOutput RunCaptured(const CommandOptions& options, SensorLayout& layout, QualityEvaluator& evaluator)
{
    CaptureStdout();
    CaptureStderr();
    const int status = RunAnalysis(options, layout, nullptr, evaluator);
    std::fflush(stdout);
    std::fflush(stderr);
    RunOutput output{status, GetCapturedStdout(), ""};
    output.err = GetCapturedStderr();
    return output;
}

CommandOptions Coarse()
{
    CommandOptions options;
    options.angleResolutionDegrees = 30.0;
    return options;
}

TEST(AnalysisRun, RefusesBeforeAnyWork)
{
    struct Case
    {
        const char* name;
        std::vector<int32_t> ids;
        double resolution;
        const char* message;
    } cases[] = {
        {"zero step", {0, 1}, 0.0, "/angleresolutiondegrees must be greater than 0, not 0\n"},
        {"negative step", {0, 1}, -0.5, "/angleresolutiondegrees must be greater than 0, not -0.5\n"},
        {"33 sensors", std::vector<int32_t>(33, 0), 30.0, "cannot analyse 33 sensors: at most 32 are supported\n"},
        {"id 32", {0, 32, 1}, 30.0, "cannot analyse sensor id 32: ids must be 0 to 31\n"},
        {"negative id ahead", {0, -1, 1}, 30.0,
         "cannot analyse sensor id 1: a negative id ahead of it in channelMap leaves it without a position\n"},
    };
    for (const Case& c : cases)
    {
        SensorLayout layout = LayoutWithIds(c.ids);
        QualityEvaluator evaluator;
        CommandOptions options = Coarse();
        options.angleResolutionDegrees = c.resolution;
        const RunOutput output = RunCaptured(options, layout, evaluator);
        EXPECT_EQ(output.status, 1) << c.name;
        EXPECT_EQ(output.out, "") << c.name;
        EXPECT_EQ(output.err, c.message) << c.name;
        EXPECT_EQ(evaluator.visibility(), nullptr) << c.name;
        EXPECT_TRUE(evaluator.poses().empty()) << c.name;
    }
}

TEST(AnalysisRun, NegativeIdsAfterTheLastSensorAreHarmless)
{
    SensorLayout layout = LayoutWithIds({0, 1, 2, -1, -7});
    QualityEvaluator evaluator;
    const RunOutput output = RunCaptured(Coarse(), layout, evaluator);
    EXPECT_EQ(output.status, 0);
    EXPECT_FALSE(output.out.empty());
}

TEST(AnalysisRun, SetsUpTheEvaluator)
{
    SensorLayout layout = LayoutWithIds({3, 1, 4});
    QualityEvaluator evaluator;
    CommandOptions options = Coarse();
    options.maxIncidenceAngle = 75.0;
    options.distanceBaseMeters = 3.0;
    const RunOutput output = RunCaptured(options, layout, evaluator);
    EXPECT_EQ(output.status, 0);
    EXPECT_EQ(layout.cosMaxIncidence, std::cos(75.0 * 0.005555555555555556 * 3.141592653589793));
    EXPECT_EQ(evaluator.poseVector()[2], -3.0);
    EXPECT_EQ(evaluator.baseStationModel().kind, 0);  // no tilt given
    ASSERT_NE(evaluator.visibility(), nullptr);
    EXPECT_EQ(evaluator.visibility()->SensorCount(), 3u);
    // 30 degree steps: 7 pitches by 13 yaws, give or take the accumulated last step.
    const size_t rows = evaluator.poses().size();
    EXPECT_EQ(std::count(output.out.begin(), output.out.end(), '\n'), static_cast<long>(rows));
    EXPECT_GE(rows, 6u * 12u);
    EXPECT_LE(rows, 7u * 13u);
}

TEST(AnalysisRun, DistanceSignPlaysNoPart)
{
    SensorLayout first = LayoutWithIds({0, 1, 2, 3, 4});
    SensorLayout second = LayoutWithIds({0, 1, 2, 3, 4});
    QualityEvaluator near, far;
    CommandOptions options = Coarse();
    options.distanceBaseMeters = -3.0;
    const RunOutput negative = RunCaptured(options, first, near);
    options.distanceBaseMeters = 3.0;
    const RunOutput positive = RunCaptured(options, second, far);
    EXPECT_EQ(negative.out, positive.out);
    EXPECT_NE(negative.out.find(" 3.0 0.0 "), std::string::npos);
    EXPECT_EQ(near.poseVector()[2], -3.0);
}

TEST(AnalysisRun, TiltSelectsTheTiltedModel)
{
    SensorLayout layout = LayoutWithIds({0, 1, 2, 3});
    QualityEvaluator evaluator;
    CommandOptions options = Coarse();
    options.srbTiltRadians = 0.3;
    EXPECT_EQ(RunCaptured(options, layout, evaluator).status, 0);
    EXPECT_EQ(evaluator.baseStationModel().kind, 7);
    EXPECT_EQ(evaluator.baseStationModel().tiltRadians, 0.3);
    EXPECT_EQ(evaluator.visibility()->observations[0].sweepModel, 2);
}

TEST(AnalysisRun, SensitivitySwitchSelectsTheSensitivityTable)
{
    SensorLayout layout = LayoutWithIds({0, 1, 2, 3});
    QualityEvaluator evaluator;
    CommandOptions options = Coarse();
    options.baseStationSensitivity = true;
    const RunOutput output = RunCaptured(options, layout, evaluator);
    EXPECT_EQ(output.status, 0);
    const std::string firstLine = output.out.substr(0, output.out.find('\n'));
    EXPECT_EQ(std::count(firstLine.begin(), firstLine.end(), ' '), 4) << firstLine;
    EXPECT_EQ(evaluator.poseVector()[2], -2.0);  // translation restored
}

} // namespace
} // namespace kelvorig
