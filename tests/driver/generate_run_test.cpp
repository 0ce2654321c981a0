#include "driver/generate_run.h"

#include "optimiser/mesh_surface.h"
#include "quality/orientation_sampling.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/cli_runner.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace kelvorig {
namespace {

constexpr int32_t kOrientations = 20;

// The arguments of a quick generate run on the test box: few orientations, a short schedule.
std::vector<std::string> QuickGenerate(const test::MeshSurface& box, std::vector<std::string> outputs)
{
    std::vector<std::string> arguments = {"/generate", "/nsensors", "5", "/sensors", box.path(),
                                          "/norientations", "20", "/niterations", "1", "/coolingrate", "0.5",
                                          "/angleresolutiondegrees", "10"};
    arguments.insert(arguments.end(), outputs.begin(), outputs.end());
    return arguments;
}

// Splits "<header line>\n<rest>" at the first line end.
std::pair<std::string, std::string> SplitFirstLine(const std::string& text)
{
    const size_t end = text.find('\n');
    return {text.substr(0, end + 1), text.substr(end + 1)};
}

// Two sensors on the faces of the test box, with ids that the result doesn't keep.
const char* const kImmutableModel = R"({"channelMap": [4, 9],
    "modelPoints": [[0, 0, 0.05], [0.05, 0.01, -0.02]],
    "modelNormals": [[0, 0, 1], [1, 0, 0]]})";

// The model of a JSON file written by /outmodel (a comment line, then the section).
TrackedObjectModel ReadWrittenModel(const std::string& path)
{
    Json::Value section;
    EXPECT_TRUE(Json::Reader().parse(test::ReadFile(path), section, true));
    Json::Value root;
    root["pharoscope_config"] = section;
    TrackedObjectModel model;
    EXPECT_TRUE(model.ParseModelSection(root));
    return model;
}

TEST(OrientationSpacing, TightensTheIncidenceLimitByRadiansTakenFromDegrees)
{
    EXPECT_NEAR(60.0 - 0.5 * OrientationSpacing(1250), 59.946, 0.0005);
    EXPECT_NEAR(70.0 - 0.5 * OrientationSpacing(1250), 69.946, 0.0005);
    EXPECT_TRUE(std::isnan(OrientationSpacing(3)));
}

TEST(GenerateRun, BothFilesCarryTheSameScoreAndJsonAndTheReportFollows)
{
    test::MeshSurface box;
    test::TempDir dir;
    const test::CliResult result = test::RunKelvorig(
        QuickGenerate(box, {"/outmodel", dir.File("out.json"), "/outscad", dir.File("out.scad")}));
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err.rfind("anneal duration: 57.4018\n", 0), 0u) << result.err;
    EXPECT_FALSE(result.out.empty());

    const auto [jsonHeader, json] = SplitFirstLine(test::ReadFile(dir.File("out.json")));
    const std::string prefix = "// Final Quality Score: ";
    const std::string suffix = " / 1000 (lower is better)\n";
    ASSERT_EQ(jsonHeader.rfind(prefix, 0), 0u) << jsonHeader;
    ASSERT_GT(jsonHeader.size(), prefix.size() + suffix.size());
    EXPECT_EQ(jsonHeader.substr(jsonHeader.size() - suffix.size()), suffix);
    const std::string score = jsonHeader.substr(prefix.size(), jsonHeader.size() - prefix.size() - suffix.size());

    const std::string scad = test::ReadFile(dir.File("out.scad"));
    const std::string scadHead =
        "/* Final Quality Score: " + score + " / 1000 (lower is better) */\n/*\n" + json.substr(0, json.size() - 1) + "*/\n\n";
    EXPECT_EQ(scad.substr(0, scadHead.size()), scadHead);
    EXPECT_GT(scad.size(), scadHead.size());

    // The score is that of the written layout, scored as the anneal scored it.
    const TrackedObjectModel model = ReadWrittenModel(dir.File("out.json"));
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4}));

    SensorLayout layout(model, kIdentityTransform);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0 - 0.5 * OrientationSpacing(kOrientations)));
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(&box.surface());
    evaluator.SampleOrientations(kOrientations);
    std::ostringstream recomputed;
    recomputed << evaluator.EvaluateQuality();
    EXPECT_EQ(score, recomputed.str());
}

// The immutable sensors must be fewer than /nsensors; they lead the result under new ids.
TEST(GenerateRun, ImmutableSensorsOfTheModel)
{
    test::MeshSurface box;
    test::TempDir dir;
    const std::string immutable = dir.File("immutable.json");
    const std::string out = dir.File("out.json");
    test::WriteFile(immutable, kImmutableModel);
    const struct
    {
        std::string nSensors;
        std::string message;
    } cases[] = {
        {"1", "Model of immutable sensors has more than /nsensors 1!\n\n"},
        {"2", "Model of immutable sensors has the same count as /nsensors 2.  Nothing would change!\n"},
    };
    for (const auto& c : cases)
    {
        const test::CliResult result = test::RunKelvorig(
            {"/generate", "/nsensors", c.nSensors, "/model", immutable, "/sensors", box.path(), "/outmodel", out});
        EXPECT_EQ(result.status, 1) << c.nSensors;
        EXPECT_EQ(result.err, c.message);
        EXPECT_EQ(result.out, "");
        EXPECT_FALSE(std::filesystem::exists(out));
    }

    const test::CliResult result = test::RunKelvorig(QuickGenerate(box, {"/model", immutable, "/outmodel", out}));
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err.rfind("anneal duration: ", 0), 0u) << "no warning expected: " << result.err;
    const TrackedObjectModel model = ReadWrittenModel(out);
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(model.modelPoints[0], Eigen::Vector3f(0.0f, 0.0f, 0.05f));
    EXPECT_EQ(model.modelPoints[1], Eigen::Vector3f(0.05f, 0.01f, -0.02f));
    EXPECT_EQ(model.modelNormals[1], Eigen::Vector3f(1.0f, 0.0f, 0.0f));
}

TEST(GenerateRun, OneOutputAloneWritesOnlyThatFile)
{
    test::MeshSurface box;
    const std::tuple<const char*, const char*, const char*> outputs[] = {
        {"/outmodel", "only.json", "// Final Quality Score: "}, {"/outscad", "only.scad", "/* Final Quality Score: "}};
    for (const auto& [output, name, header] : outputs)
    {
        test::TempDir dir;
        const test::CliResult result = test::RunKelvorig(QuickGenerate(box, {output, dir.File(name)}));
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(test::ReadFile(dir.File(name)).rfind(header, 0), 0u) << name;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << name;
        EXPECT_FALSE(result.out.empty());
    }
}

TEST(GenerateRun, RefusesAStepTheClosingReportCouldNotEndBeforeAnnealing)
{
    test::MeshSurface box;
    test::TempDir dir;
    std::vector<std::string> arguments = QuickGenerate(box, {"/outmodel", dir.File("out.json")});
    arguments.insert(arguments.end(), {"/angleresolutiondegrees", "0"});
    const test::CliResult result = test::RunKelvorig(arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "/angleresolutiondegrees must be greater than 0, not 0\n");
    EXPECT_FALSE(std::filesystem::exists(dir.File("out.json")));
}

} // namespace
} // namespace kelvorig
