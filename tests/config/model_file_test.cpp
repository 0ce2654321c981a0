#include "config/model_file.h"

#include "support/cli_runner.h"

#include <gtest/gtest.h>
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

TEST(ReadModel, ReadsStandaloneSectionWithComments)
{
    const TempDir dir;
    // "json" anywhere in the name makes it a path.
    const std::string path = dir.File("model.json.bak");
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

    // A section without "channelMap", in a device file or standalone, loads as a model that is not valid.
    for (const char* text : {R"({"device_class": "controller", "pharoscope_config": {"modelCad": "c.step"}})",
                             R"({"modelCad": "c.step", "modelPoints": [[1, 2, 3]]})"})
    {
        WriteFile(path, text);
        const ReadResult invalid = Read(path);
        EXPECT_TRUE(invalid.ok);
        EXPECT_EQ(invalid.err, "");
        EXPECT_FALSE(invalid.model.valid);
        EXPECT_EQ(invalid.model.modelCad, "c.step");
    }
}

// Missing, empty and broken files are reported at the command line; these are the cases
// that depend on how the name or the text is read.
TEST(ReadModel, FailuresNameTheFile)
{
    const TempDir dir;
    // A quoted section key, even in a comment, sends the text to the device file reader,
    // where a headset (the default class) needs its "device" section.
    WriteFile(dir.File("commented.json"), "// \"pharoscope_config\"\n{\"channelMap\": [0]}");
    const ReadResult commented = Read(dir.File("commented.json"));
    EXPECT_FALSE(commented.ok);
    EXPECT_EQ(commented.err,
              "couldn't read " + dir.File("commented.json") + ": missing values from \"device\" section\n");
    // Only a lower-case "json" makes a name a path.
    EXPECT_EQ(Read("NO_SUCH_DEVICE.JSON").err,
              "couldn't read cfg/hmd/NO_SUCH_DEVICE.JSON.json: file is empty or does not exist\n");
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

    // Unequal lists give a layout without sensors.
    WriteFile(path, R"({"channelMap": [0, 1], "modelPoints": [[1, 0, 0]], "modelNormals": [[1, 0, 0]]})");
    ASSERT_TRUE(LoadSensorLayout(path));
    EXPECT_EQ(LoadSensorLayout(path)->SensorCount(), 0u);
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

} // namespace
} // namespace kelvorig
