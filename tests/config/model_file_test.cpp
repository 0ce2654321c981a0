#include "config/model_file.h"

#include "support/cli_runner.h"

#include <gtest/gtest.h>
#include <json/writer.h>

#include <tuple>

namespace kelvorig {
namespace {

using test::WriteFile;

struct ReadResult
{
    bool ok = false;
    std::string err;
    TrackedObjectModel model;
};

ReadResult Read(const std::string& path, const std::string& text)
{
    WriteFile(path, text);
    ReadResult result;
    const Status read = ReadModel(path, result.model);
    result.ok = read.ok();
    result.err = read.message();
    return result;
}

// A standalone section with comments (under a name that has "json" anywhere) or a device
// file's section; written out, it reads back the same.
TEST(ReadModel, ReadsTheSectionAndWritesItBack)
{
    const test::TempDir dir;
    const ReadResult standalone =
        Read(dir.File("model.json.bak"),
             "// three sensors\r\n{ \"channelMap\": [4, -1, 9], /* front */ \"modelPoints\": "
             "[[0.1, 0, 0], [1, 2, 0], [0, 0.2, 0]],\r\n \"modelNormals\": [[0, 0, 3], [0, 1, 0], "
             "[0.6, 0, 0.8]], \"modelCad\": \"shell.step\", \"modelAngles\": [0.25, 1, 2, 3] }\r\n");
    const ReadResult device = Read(dir.File("controller.json"), R"({"device_class": "controller", "revision": 3,
        "pharoscope_config": {"channelMap": [1, 0], "modelPoints": [[0, 0, 0.05], [0.02, 0, 0.04]],
        "modelNormals": [[0, 0, 1], [0, 1, 0]], "modelAngles": [7]}})");
    for (const ReadResult& result : {standalone, device})
    {
        ASSERT_TRUE(result.ok && result.err.empty()) << result.err;
        EXPECT_TRUE(result.model.valid);
    }
    EXPECT_EQ(standalone.model.modelCad, "shell.step");
    EXPECT_EQ(standalone.model.channelMap, (std::vector<int32_t>{4, -1, 9}));
    EXPECT_EQ(standalone.model.modelPoints[2], Eigen::Vector3f(0, 0.2f, 0));
    EXPECT_EQ(standalone.model.modelNormals[0], Eigen::Vector3f(0, 0, 1));
    EXPECT_EQ(device.model.channelMap, (std::vector<int32_t>{1, 0}));

    // Written out by the section's own writer, every field reads back the same.
    const ReadResult copy = Read(dir.File("copy.json"), Json::StyledWriter().write(standalone.model.ModelToJson()));
    ASSERT_TRUE(copy.ok) << copy.err;
    EXPECT_TRUE(copy.model.valid);
    const auto fields = [](const TrackedObjectModel& m)
    { return std::tie(m.modelCad, m.channelMap, m.modelPoints, m.modelNormals, m.modelAngles); };
    EXPECT_EQ(fields(copy.model), fields(standalone.model));
    EXPECT_EQ(standalone.model.modelAngles, (std::vector<double>{0.25, 1, 2, 3}));

    // A section without "channelMap", in a device file or standalone, loads as a model that is not valid.
    for (const char* text : {R"({"device_class": "controller", "pharoscope_config": {"modelCad": "c.step"}})",
                             R"({"modelCad": "c.step", "modelPoints": [[1, 2, 3]]})"})
    {
        const ReadResult invalid = Read(dir.File("invalid.json"), text);
        EXPECT_TRUE(invalid.ok && invalid.err.empty()) << invalid.err;
        EXPECT_FALSE(invalid.model.valid);
        EXPECT_EQ(invalid.model.modelCad, "c.step");
    }
}

} // namespace
} // namespace kelvorig
