#include "driver/analysis_run.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>

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

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

struct Sensor
{
    int id;
    Eigen::Vector3f position;
    Eigen::Vector3f normal;
};

std::string ModelJson(const std::vector<Sensor>& sensors)
{
    std::ostringstream json;
    json << "{\"channelMap\": [";
    for (size_t i = 0; i < sensors.size(); ++i)
        json << (i ? ", " : "") << sensors[i].id;
    json << "], \"modelPoints\": [";
    for (size_t i = 0; i < sensors.size(); ++i)
    {
        const Eigen::Vector3f& p = sensors[i].position;
        json << (i ? ", " : "") << "[" << p.x() << ", " << p.y() << ", " << p.z() << "]";
    }
    json << "], \"modelNormals\": [";
    for (size_t i = 0; i < sensors.size(); ++i)
    {
        const Eigen::Vector3f& n = sensors[i].normal;
        json << (i ? ", " : "") << "[" << n.x() << ", " << n.y() << ", " << n.z() << "]";
    }
    json << "]}\n";
    return json.str();
}

// Sensors on the faces of a 200 by 100 by 100 mm box, normals out of the box; sensor 4
// alone on the top face.
std::vector<Sensor> BoxSensors()
{
    return {
        {0, {0.1f, 0.02f, 0.01f}, Eigen::Vector3f::UnitX()},   {1, {0.1f, -0.03f, -0.02f}, Eigen::Vector3f::UnitX()},
        {2, {-0.1f, 0.01f, 0.03f}, -Eigen::Vector3f::UnitX()}, {3, {-0.1f, -0.02f, -0.01f}, -Eigen::Vector3f::UnitX()},
        {4, {0.03f, 0.01f, 0.05f}, Eigen::Vector3f::UnitZ()},  {5, {0.06f, 0.05f, 0.02f}, Eigen::Vector3f::UnitY()},
        {6, {-0.05f, 0.05f, -0.02f}, Eigen::Vector3f::UnitY()}, {7, {0.02f, -0.05f, 0.01f}, -Eigen::Vector3f::UnitY()},
        {8, {-0.07f, -0.05f, 0.02f}, -Eigen::Vector3f::UnitY()}, {9, {0.05f, 0.02f, -0.05f}, -Eigen::Vector3f::UnitZ()},
        {10, {-0.04f, -0.03f, -0.05f}, -Eigen::Vector3f::UnitZ()},
    };
}

// The ids listed at the end of each coverage row.
std::set<int> SensorsInRows(const std::string& report)
{
    std::set<int> ids;
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);)
    {
        std::istringstream row(line);
        std::string column;
        for (int i = 0; i < 12; ++i)
            row >> column;
        for (int id; row >> id;)
            ids.insert(id);
    }
    return ids;
}

class AnalysisRunCommandLine : public ::testing::Test
{
protected:
    void SetUp() override
    {
        test::WriteBinaryStl(dir.File("box.stl"), test::MakeBox(Eigen::Vector3f(0.2f, 0.1f, 0.1f)));
        WriteFile(dir.File("model.json"), ModelJson(BoxSensors()));
    }

    CliResult Analyse(std::vector<std::string> extra)
    {
        std::vector<std::string> arguments = {"/model", dir.File("model.json"), "/angleresolutiondegrees", "10"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return RunKelvorig(arguments);
    }

    TempDir dir;
};

// On a convex shape nothing the incidence test lets through is ever occluded.
TEST_F(AnalysisRunCommandLine, ConvexMeshChangesNothing)
{
    const CliResult bare = Analyse({});
    const CliResult onMesh = Analyse({"/sensors", dir.File("box.stl")});
    ASSERT_EQ(bare.status, 0) << bare.err;
    ASSERT_EQ(onMesh.status, 0) << onMesh.err;
    EXPECT_EQ(onMesh.out, bare.out);
    EXPECT_EQ(onMesh.err, bare.err);
    EXPECT_EQ(SensorsInRows(bare.out).size(), BoxSensors().size());

    const CliResult sensitivity = Analyse({"/sensors", dir.File("box.stl"), "/basestationsensitivity"});
    EXPECT_EQ(sensitivity.out, Analyse({"/basestationsensitivity"}).out);
}

TEST_F(AnalysisRunCommandLine, ObstacleHidesASensor)
{
    // A wide slab 9 mm above the top face covers sensor 4 at every incidence it accepts.
    test::WriteBinaryStl(dir.File("slab.stl"),
                         test::MakeBox(Eigen::Vector3f(1.0f, 1.0f, 0.002f), Eigen::Vector3f(0.0f, 0.0f, 0.06f)));
    const CliResult open = Analyse({"/sensors", dir.File("box.stl")});
    const CliResult covered = Analyse({"/sensors", dir.File("box.stl"), "/obstacles", dir.File("slab.stl")});
    ASSERT_EQ(covered.status, 0) << covered.err;
    EXPECT_EQ(SensorsInRows(open.out).count(4), 1u);
    EXPECT_EQ(SensorsInRows(covered.out).count(4), 0u);
    EXPECT_NE(covered.err.find("did not see sensor id 4\n"), std::string::npos) << covered.err;
    EXPECT_EQ(open.err.find("did not see sensor id 4\n"), std::string::npos) << open.err;
    // Every row is still written.
    EXPECT_EQ(std::count(covered.out.begin(), covered.out.end(), '\n'), std::count(open.out.begin(), open.out.end(), '\n'));
}

TEST_F(AnalysisRunCommandLine, RefusesWhatItCannotAnalyse)
{
    struct Case
    {
        const char* name;
        std::vector<Sensor> sensors;
        std::string resolution;
        std::string message;
    };
    std::vector<Sensor> many;
    for (int i = 0; i < 33; ++i)
        many.push_back({i, {0.001f * static_cast<float>(i), 0.0f, 0.05f}, Eigen::Vector3f::UnitZ()});
    std::vector<Sensor> highId = BoxSensors();
    highId[3].id = 40;
    std::vector<Sensor> negativeAhead = BoxSensors();
    negativeAhead[0].id = -1;
    const Case cases[] = {
        {"zero step", BoxSensors(), "0", "/angleresolutiondegrees must be greater than 0, not 0\n"},
        {"negative step", BoxSensors(), "-2", "/angleresolutiondegrees must be greater than 0, not -2\n"},
        {"33 sensors", many, "10", "cannot analyse 33 sensors: at most 32 are supported\n"},
        {"id 40", highId, "10", "cannot analyse sensor id 40: ids must be 0 to 31\n"},
        // Sensor 10's lookup gives its index in the file, past the ten kept entries.
        {"negative id ahead", negativeAhead, "10",
         "cannot analyse sensor id 10: a negative id ahead of it in channelMap leaves it without a position\n"},
    };
    for (const Case& c : cases)
    {
        WriteFile(dir.File("refused.json"), ModelJson(c.sensors));
        const CliResult result =
            RunKelvorig({"/model", dir.File("refused.json"), "/angleresolutiondegrees", c.resolution});
        EXPECT_EQ(result.status, 1) << c.name;
        EXPECT_EQ(result.out, "") << c.name;
        EXPECT_EQ(result.err, c.message) << c.name;
    }
}

// Negative ids after the last sensor leave the others' lookups inside the lists.
TEST_F(AnalysisRunCommandLine, TrailingNegativeIdsAreAccepted)
{
    std::vector<Sensor> sensors = BoxSensors();
    sensors.push_back({-1, {0.0f, 0.0f, -0.05f}, -Eigen::Vector3f::UnitZ()});
    WriteFile(dir.File("trailing.json"), ModelJson(sensors));
    const CliResult trailing = RunKelvorig({"/model", dir.File("trailing.json"), "/angleresolutiondegrees", "10"});
    EXPECT_EQ(trailing.status, 0) << trailing.err;
    EXPECT_EQ(trailing.out, Analyse({}).out);
}

} // namespace
} // namespace kelvorig
