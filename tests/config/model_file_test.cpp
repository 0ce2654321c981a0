#include "config/model_file.h"

#include "support/cli_runner.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::TempDir;
using test::WriteFile;

struct ReadResult
{
    bool ok = false;
    std::string err;
    TrackedObjectModel model;
};

ReadResult Read(const std::string& path)
{
    ReadResult result;
    testing::internal::CaptureStderr();
    result.ok = ReadModel(path, result.model);
    result.err = testing::internal::GetCapturedStderr();
    return result;
}

TEST(JoinPath, DropsOneTrailingSeparatorAndUsesSlashByDefault)
{
    EXPECT_EQ(JoinPath("cfg", "hmd"), "cfg/hmd");
    EXPECT_EQ(JoinPath("cfg/", "hmd"), "cfg/hmd");
    EXPECT_EQ(JoinPath("cfg\\", "hmd"), "cfg/hmd");
    EXPECT_EQ(JoinPath("cfg//", "hmd"), "cfg//hmd");
    EXPECT_EQ(JoinPath("cfg/", "hmd", '\\'), "cfg\\hmd");
    EXPECT_EQ(JoinPath("", "name"), "name");
    EXPECT_EQ(JoinPath(JoinPath("cfg", "hmd"), "x") + ".json", "cfg/hmd/x.json");
}

TEST(ReadTextFile, FoldsCarriageReturnLineFeedOnly)
{
    const TempDir dir;
    const struct
    {
        std::string bytes;
        std::string text;
    } cases[] = {
        {"\r\n", "\n"},
        {"a\rb\r\nc", "a\rb\nc"},
        {"\r\r\n", "\r\n"},
        {"x\r", "x\r"},
        {std::string("a\0b", 3), std::string("a\0b", 3)},
    };
    for (const auto& c : cases)
    {
        const std::string path = dir.File("f.txt");
        WriteFile(path, c.bytes);
        EXPECT_EQ(ReadTextFile(path), c.text);
    }
}

TEST(ReadTextFile, EmptyMissingAndDirectoryGiveEmptyText)
{
    const TempDir dir;
    WriteFile(dir.File("empty"), "");
    EXPECT_EQ(ReadTextFile(dir.File("empty")), "");
    EXPECT_EQ(ReadTextFile(dir.File("missing")), "");
    EXPECT_EQ(ReadTextFile(dir.path()), "");
}

TEST(ReadModel, ReadsStandaloneSectionWithComments)
{
    const TempDir dir;
    const std::string path = dir.File("model.json");
    WriteFile(path, "// two sensors\r\n{ \"channelMap\": [4, 9], /* front */ \"modelPoints\": [[0.1, 0, 0], [0, 0.2, 0]],"
                    "\r\n \"modelNormals\": [[0, 0, 3], [0, 1, 0]], \"modelCad\": \"shell.step\" }\r\n");
    const ReadResult result = Read(path);
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_TRUE(result.model.valid);
    EXPECT_EQ(result.model.modelCad, "shell.step");
    EXPECT_EQ(result.model.channelMap, (std::vector<int32_t>{4, 9}));
    EXPECT_EQ(result.model.modelPoints[1], Eigen::Vector3f(0, 0.2f, 0));
    EXPECT_EQ(result.model.modelNormals[0], Eigen::Vector3f(0, 0, 1));
}

TEST(ReadModel, MissingOrEmptyFileIsOneCase)
{
    const TempDir dir;
    WriteFile(dir.File("empty.json"), "");
    for (const std::string name : {"empty.json", "missing.json"})
    {
        const std::string path = dir.File(name);
        const ReadResult result = Read(path);
        EXPECT_FALSE(result.ok);
        EXPECT_EQ(result.err, "couldn't read " + path + ": file is empty or does not exist\n");
    }
}

TEST(ReadModel, JsonAnywhereInThePathMakesItAPath)
{
    const TempDir dir;
    const std::string path = dir.File("model.json.bak");
    WriteFile(path, R"({"channelMap": [1], "modelPoints": [[0, 0, 0]], "modelNormals": [[0, 0, 1]]})");
    const ReadResult result = Read(path);
    EXPECT_TRUE(result.ok) << result.err;
    EXPECT_EQ(result.model.channelMap, (std::vector<int32_t>{1}));
}

TEST(ReadModel, OtherNamesAreDeviceNamesUnderTheRuntimeDirectory)
{
    EXPECT_EQ(Read("no_such_device_kelvorig").err,
              "couldn't read cfg/hmd/no_such_device_kelvorig.json: file is empty or does not exist\n");
    EXPECT_EQ(Read("NO_SUCH_DEVICE.JSON").err,
              "couldn't read cfg/hmd/NO_SUCH_DEVICE.JSON.json: file is empty or does not exist\n");
}

TEST(ReadModel, BrokenStandaloneJsonReportsTheParserMessages)
{
    const TempDir dir;
    const std::string path = dir.File("broken.json");
    const std::string text = R"({"channelMap": [1, 2)";
    WriteFile(path, text);

    Json::Value ignored;
    Json::Reader reader;
    ASSERT_FALSE(reader.parse(text, ignored, true));
    const ReadResult result = Read(path);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.err, "couldn't parse standalone pharoscope_config " + path + ": " +
                              reader.getFormattedErrorMessages() + "\n");
}

TEST(ReadModel, StandaloneWithoutChannelMapLoadsAsInvalid)
{
    const TempDir dir;
    const std::string path = dir.File("nochannels.json");
    WriteFile(path, R"({"modelCad": "x", "modelPoints": [[1, 2, 3]]})");
    const ReadResult result = Read(path);
    EXPECT_TRUE(result.ok);
    EXPECT_EQ(result.err, "");
    EXPECT_FALSE(result.model.valid);
    EXPECT_EQ(result.model.modelCad, "x");
}

TEST(ReadModel, WrongTypedMemberIsAnErrorNamingTheFile)
{
    const TempDir dir;
    const std::string path = dir.File("wrongtype.json");
    WriteFile(path, R"({"channelMap": [1], "modelCad": [1, 2]})");
    const ReadResult result = Read(path);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.err.rfind("kelvorig: error reading " + path + ": ", 0), 0u) << result.err;
    EXPECT_EQ(result.err.back(), '\n');
}

TEST(ReadModel, WholeDeviceFileGivesItsSection)
{
    const TempDir dir;
    const std::string path = dir.File("controller.json");
    WriteFile(path, R"({"device_class": "controller", "revision": 3, "pharoscope_config": {
        "channelMap": [1, 0], "modelPoints": [[0, 0, 0.05], [0.02, 0, 0.04]],
        "modelNormals": [[0, 0, 1], [0, 1, 0]], "modelAngles": [7]}})");
    const ReadResult result = Read(path);
    ASSERT_TRUE(result.ok) << result.err;
    EXPECT_TRUE(result.model.valid);
    EXPECT_EQ(result.model.channelMap, (std::vector<int32_t>{1, 0}));
    EXPECT_EQ(result.model.modelPoints[1], Eigen::Vector3f(0.02f, 0, 0.04f));
    EXPECT_EQ(result.model.modelAngles, (std::vector<double>{7}));

    // A section without "channelMap" still loads, as a model that is not valid.
    WriteFile(path, R"({"device_class": "controller", "pharoscope_config": {"modelCad": "c.step"}})");
    const ReadResult invalid = Read(path);
    EXPECT_TRUE(invalid.ok);
    EXPECT_FALSE(invalid.model.valid);
}

TEST(ReadModel, QuotedSectionKeyMakesAWholeDeviceFile)
{
    // Even in a comment: the text goes to the device file reader, and a headset (the
    // default class) without its "device" section fails there.
    const TempDir dir;
    const std::string path = dir.File("commented.json");
    WriteFile(path, "// \"pharoscope_config\"\n{\"channelMap\": [0]}");
    const ReadResult result = Read(path);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.err, "couldn't read " + path + ": missing values from \"device\" section\n");
}

TEST(LoadSensorLayout, BuildsLayoutWithIdentityOrFailsWithNone)
{
    const TempDir dir;
    const std::string path = dir.File("layout.json");
    WriteFile(path, R"({"channelMap": [-1, 3], "modelPoints": [[1, 0, 0], [0, 0.5, 0]],
                        "modelNormals": [[1, 0, 0], [0, 1, 0]]})");
    const std::unique_ptr<SensorLayout> layout = LoadSensorLayout(path);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->sensorIds, (std::vector<int32_t>{3}));
    EXPECT_EQ(layout->idToIndex.at(3), 1);
    EXPECT_EQ(layout->positions[0], Eigen::Vector3d(0, 0.5, 0));
    EXPECT_DOUBLE_EQ(layout->maxRadius, 0.5);

    testing::internal::CaptureStderr();
    EXPECT_FALSE(LoadSensorLayout(dir.File("missing.json")));
    testing::internal::GetCapturedStderr();
}

TEST(LoadSensorLayout, UnequalListsGiveALayoutWithoutSensors)
{
    const TempDir dir;
    const std::string path = dir.File("unequal.json");
    WriteFile(path, R"({"channelMap": [0, 1], "modelPoints": [[1, 0, 0]], "modelNormals": [[1, 0, 0]]})");
    const std::unique_ptr<SensorLayout> layout = LoadSensorLayout(path);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->SensorCount(), 0u);
}

TEST(ModelRoundTrip, WrittenSectionReadsBackTheSame)
{
    const TempDir dir;
    const std::string source = dir.File("source.json");
    WriteFile(source, R"({"modelCad": "hmd.step", "channelMap": [2, -1, 0],
        "modelPoints": [[0.1, 0.2, 0.3], [1, 2], [-0.05, 0, 0.045]],
        "modelNormals": [[0, 0, 2], [0, 1, 0], [0.6, 0, 0.8]], "modelAngles": [0.25, 1, 2, 3]})");
    const ReadResult first = Read(source);
    ASSERT_TRUE(first.ok) << first.err;

    const std::string copy = dir.File("copy.json");
    WriteFile(copy, Json::StyledWriter().write(first.model.ModelToJson()));
    const ReadResult second = Read(copy);
    ASSERT_TRUE(second.ok) << second.err;
    EXPECT_TRUE(second.model.valid);
    EXPECT_EQ(second.model.modelCad, first.model.modelCad);
    EXPECT_EQ(second.model.channelMap, first.model.channelMap);
    EXPECT_EQ(second.model.modelPoints, first.model.modelPoints);
    EXPECT_EQ(second.model.modelNormals, first.model.modelNormals);
    EXPECT_EQ(second.model.modelAngles, (std::vector<double>{0.25, 1, 2, 3}));
}

TEST(ModelRoundTrip, EmptyChannelMapWritesNullAndReadsBackInvalid)
{
    const TempDir dir;
    const std::string source = dir.File("empty_channels.json");
    WriteFile(source, R"({"channelMap": []})");
    const ReadResult first = Read(source);
    ASSERT_TRUE(first.ok);
    EXPECT_TRUE(first.model.valid);
    const Json::Value written = first.model.ModelToJson();
    EXPECT_TRUE(written.isNull());

    Json::Value wrapper;
    wrapper["pharoscope_config"] = written;
    TrackedObjectModel back;
    EXPECT_FALSE(back.ParseModelSection(wrapper));
}

TEST(ExampleModel, BundledExampleLoads)
{
    const std::unique_ptr<SensorLayout> layout =
        LoadSensorLayout(std::string(KELVORIG_SOURCE_DIR) + "/examples/example_sensors.json");
    ASSERT_TRUE(layout);
    EXPECT_GE(layout->SensorCount(), 8u);
    EXPECT_LE(layout->SensorCount(), 16u);
    for (const Eigen::Vector3d& normal : layout->normals)
        EXPECT_NEAR(normal.norm(), 1.0, 1e-6);
    // Fits a 180 x 110 x 90 mm shell.
    for (const Eigen::Vector3d& position : layout->positions)
    {
        EXPECT_LE(std::fabs(position.x()), 0.0901);
        EXPECT_LE(std::fabs(position.y()), 0.0551);
        EXPECT_LE(std::fabs(position.z()), 0.0451);
    }
}

} // namespace
} // namespace kelvorig
