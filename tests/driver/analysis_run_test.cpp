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

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

// Four sensors at made-up places, analysed on a coarse 30 degree grid in this process;
// returns the report.
std::string Analyse(const CommandOptions& overrides, QualityEvaluator& evaluator)
{
    TrackedObjectModel model;
    model.valid = true;
    for (int i = 0; i < 4; ++i)
    {
        const float f = static_cast<float>(i);
        model.channelMap.push_back(3 - i);
        model.modelPoints.emplace_back(0.01f * f, 0.02f * std::sin(f), 0.015f * std::cos(2.0f * f));
        model.modelNormals.emplace_back(std::sin(f), std::cos(3.0f * f), 0.5f);
    }
    SensorLayout layout(model, kIdentityTransform);
    CommandOptions options = overrides;
    options.angleResolutionDegrees = 30.0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunAnalysis(options, layout, nullptr, evaluator), 0);
    std::fflush(stdout);
    EXPECT_EQ(layout.cosMaxIncidence, std::cos(options.maxIncidenceAngle * 0.005555555555555556 * 3.141592653589793));
    return testing::internal::GetCapturedStdout();
}

TEST(AnalysisRun, SetsUpTheEvaluatorFromTheOptions)
{
    CommandOptions options;
    options.maxIncidenceAngle = 75.0;
    options.distanceBaseMeters = 3.0;
    QualityEvaluator plain;
    const std::string report = Analyse(options, plain);
    EXPECT_EQ(plain.poseVector()[2], -3.0);
    EXPECT_EQ(plain.baseStationModel().kind, 0);  // no tilt given
    ASSERT_NE(plain.visibility(), nullptr);
    EXPECT_EQ(plain.visibility()->SensorCount(), 4u);
    // 30 degree steps: 7 pitches by 13 yaws, give or take the accumulated last step.
    const size_t rows = plain.poses().size();
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), static_cast<long>(rows));
    EXPECT_GE(rows, 6u * 12u);
    EXPECT_LE(rows, 7u * 13u);

    // The distance's sign plays no part.
    options.distanceBaseMeters = -3.0;
    QualityEvaluator negative;
    EXPECT_EQ(Analyse(options, negative), report);
    EXPECT_NE(report.find(" 3.0 0.0 "), std::string::npos);
    EXPECT_EQ(negative.poseVector()[2], -3.0);

    CommandOptions tilted;
    tilted.srbTiltRadians = 0.3;
    QualityEvaluator tilt;
    Analyse(tilted, tilt);
    EXPECT_EQ(tilt.baseStationModel().kind, 7);
    EXPECT_EQ(tilt.baseStationModel().tiltRadians, 0.3);
    EXPECT_EQ(tilt.visibility()->observations[0].sweepModel, 2);

    CommandOptions sensitivity;
    sensitivity.baseStationSensitivity = true;
    QualityEvaluator table;
    const std::string sensitivityReport = Analyse(sensitivity, table);
    const std::string firstLine = sensitivityReport.substr(0, sensitivityReport.find('\n'));
    EXPECT_EQ(std::count(firstLine.begin(), firstLine.end(), ' '), 4) << firstLine;
    EXPECT_EQ(table.poseVector()[2], -2.0);  // translation restored
}

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
    for (const char* key : {"modelPoints", "modelNormals"})
    {
        json << "], \"" << key << "\": [";
        for (size_t i = 0; i < sensors.size(); ++i)
        {
            const Eigen::Vector3f& v = std::string(key) == "modelPoints" ? sensors[i].position : sensors[i].normal;
            json << (i ? ", " : "") << "[" << v.x() << ", " << v.y() << ", " << v.z() << "]";
        }
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

    CliResult Analyse(std::vector<std::string> extra, const std::string& model = "model.json")
    {
        std::vector<std::string> arguments = {"/model", dir.File(model), "/angleresolutiondegrees", "10"};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        return RunKelvorig(arguments);
    }

    TempDir dir;
};

// On a convex shape nothing the incidence test lets through is ever occluded, and negative
// ids after the last sensor leave the others' lookups inside the lists.
TEST_F(AnalysisRunCommandLine, ConvexMeshAndTrailingNegativeIdsChangeNothing)
{
    std::vector<Sensor> trailing = BoxSensors();
    trailing.push_back({-1, {0.0f, 0.0f, -0.05f}, -Eigen::Vector3f::UnitZ()});
    WriteFile(dir.File("trailing.json"), ModelJson(trailing));

    const CliResult bare = Analyse({});
    ASSERT_EQ(bare.status, 0) << bare.err;
    EXPECT_EQ(SensorsInRows(bare.out).size(), BoxSensors().size());
    for (const CliResult& same : {Analyse({"/sensors", dir.File("box.stl")}), Analyse({}, "trailing.json")})
    {
        EXPECT_EQ(same.status, 0) << same.err;
        EXPECT_EQ(same.out, bare.out);
        EXPECT_EQ(same.err, bare.err);
    }
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
        {"vanishing step", BoxSensors(), "1e-300",
         "/angleresolutiondegrees 1e-300 is too small to step through the grid\n"},
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

} // namespace
} // namespace kelvorig
