#include "driver/generate_run.h"

#include "config/model_file.h"
#include "quality/orientation_sampling.h"
#include "quality/quality_evaluator.h"
#include "support/angles.h"
#include "support/cli_runner.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

namespace kelvorig {
namespace {

// A quick generate run of five sensors on the test box, writing `outputs`.
test::CliResult QuickGenerate(const test::MeshSurface& box, std::vector<std::string> outputs)
{
    std::vector<std::string> arguments = {"/generate", "/nsensors", "5", "/sensors", box.path(), "/norientations",
                                          "20", "/niterations", "1", "/coolingrate", "0.5",
                                          "/angleresolutiondegrees", "10"};
    arguments.insert(arguments.end(), outputs.begin(), outputs.end());
    return test::RunKelvorig(arguments);
}

TEST(OrientationSpacing, TightensTheIncidenceLimitByRadiansTakenFromDegrees)
{
    EXPECT_NEAR(60.0 - 0.5 * OrientationSpacing(1250), 59.946, 0.0005);
    EXPECT_TRUE(std::isnan(OrientationSpacing(3)));
}

// Both files carry one score, that of the written layout scored as the anneal scored it, and
// the drawing holds the JSON in a comment.
TEST(GenerateRun, FilesCarryTheScoreOfTheWrittenLayout)
{
    test::MeshSurface box;
    test::TempDir dir;
    const test::CliResult result = QuickGenerate(box, {"/outmodel", dir.File("o.json"), "/outscad", dir.File("o.scad")});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.err.starts_with("anneal duration: 57.4018\n")) << result.err;
    EXPECT_FALSE(result.out.empty());

    const std::string file = test::ReadFile(dir.File("o.json"));
    const std::string prefix = "// Final Quality Score: ";
    ASSERT_TRUE(file.starts_with(prefix));
    const size_t end = file.find(" / 1000 (lower is better)\n");
    const std::string score = file.substr(prefix.size(), end - prefix.size());
    const std::string json = file.substr(file.find('\n') + 1);
    EXPECT_TRUE(test::ReadFile(dir.File("o.scad"))
                    .starts_with("/* Final Quality Score: " + score + " / 1000 (lower is better) */\n/*\n" +
                                 json.substr(0, json.size() - 1) + "*/\n\n"));

    TrackedObjectModel model;
    ASSERT_TRUE(ReadModel(dir.File("o.json"), model));
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4}));
    SensorLayout layout(model, kIdentityTransform);
    layout.cosMaxIncidence = std::cos(DegreesToRadians(60.0 - 0.5 * OrientationSpacing(20)));
    QualityEvaluator evaluator;
    evaluator.SetModel(layout);
    evaluator.SetSurface(&box.surface());
    evaluator.SampleOrientations(20);
    std::ostringstream recomputed;
    recomputed << evaluator.EvaluateQuality();
    EXPECT_EQ(score, recomputed.str());
}

// The immutable sensors of the model lead the result under new ids; one output alone is the
// only file written.
TEST(GenerateRun, ImmutableSensorsLeadAndOneOutputIsWrittenAlone)
{
    test::MeshSurface box;
    test::TempDir dir;
    test::WriteFile(dir.File("immutable.json"), R"({"channelMap": [4, 9], "modelPoints": [[0, 0, 0.05],
        [0.05, 0.01, -0.02]], "modelNormals": [[0, 0, 1], [1, 0, 0]]})");
    const test::CliResult result = QuickGenerate(box, {"/model", dir.File("immutable.json"), "/outmodel", dir.File("o.json")});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.err.starts_with("anneal duration: ")) << "no warning expected: " << result.err;
    TrackedObjectModel model;
    ASSERT_TRUE(ReadModel(dir.File("o.json"), model));
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(std::tie(model.modelPoints[0], model.modelPoints[1], model.modelNormals[1]),
              std::make_tuple(Eigen::Vector3f(0.0f, 0.0f, 0.05f), Eigen::Vector3f(0.05f, 0.01f, -0.02f),
                              Eigen::Vector3f(1.0f, 0.0f, 0.0f)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);

    ASSERT_EQ(QuickGenerate(box, {"/outscad", dir.File("only.scad")}).status, 0);
    EXPECT_TRUE(test::ReadFile(dir.File("only.scad")).starts_with("/* Final Quality Score: "));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 3);
}

} // namespace
} // namespace kelvorig
