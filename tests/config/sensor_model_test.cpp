#include "config/sensor_model.h"

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include <cmath>

namespace kelvorig {
namespace {

Json::Value ParseJson(const std::string& text)
{
    Json::Value root;
    Json::Reader reader;
    EXPECT_TRUE(reader.parse(text, root, true)) << reader.getFormattedErrorMessages();
    return root;
}

TEST(SensorModel, ParsesSectionAndWritesWidenedFloats)
{
    TrackedObjectModel model;
    ASSERT_TRUE(model.ParseModelSection(ParseJson(R"({"pharoscope_config": {
        "modelCad": "shell.step", "channelMap": [3, -1, 7],
        "modelPoints": [[0.1, 0.2, 0.3], [1, 2], []],
        "modelNormals": [[0, 0, 2], [0, 0, 0], [3, 0, 4]],
        "modelAngles": [1.5]}})")));
    EXPECT_TRUE(model.valid);
    EXPECT_EQ(model.modelCad, "shell.step");
    EXPECT_EQ(model.channelMap, (std::vector<int32_t>{3, -1, 7}));
    EXPECT_EQ(model.modelPoints[1], Eigen::Vector3f(1, 2, 0));
    EXPECT_EQ(model.modelPoints[2], Eigen::Vector3f(0, 0, 0));
    EXPECT_EQ(model.modelNormals[0], Eigen::Vector3f(0, 0, 1));
    EXPECT_TRUE(std::isnan(model.modelNormals[1].x()));
    EXPECT_FLOAT_EQ(model.modelNormals[2].x(), 0.6f);

    const std::string text = Json::StyledWriter().write(model.ModelToJson());
    EXPECT_NE(text.find("0.10000000149011612"), std::string::npos) << text;
    EXPECT_LT(text.find("\"channelMap\""), text.find("\"modelAngles\""));
    EXPECT_LT(text.find("\"modelCad\""), text.find("\"modelNormals\""));
}

TEST(SensorModel, MissingChannelMapKeepsCadNameAndIsInvalid)
{
    TrackedObjectModel model;
    EXPECT_FALSE(model.ParseModelSection(ParseJson(R"({"pharoscope_config": {"modelCad": "x"}})")));
    EXPECT_FALSE(model.valid);
    EXPECT_EQ(model.modelCad, "x");
    EXPECT_TRUE(model.ModelToJson().isNull());
    EXPECT_FALSE(TrackedObjectModel().ParseModelSection(ParseJson("{}")));
}

TEST(SensorLayout, SkipsNegativeIdsAndKeepsSourceIndices)
{
    TrackedObjectModel model;
    model.valid = true;
    model.channelMap = {-1, 5, 5, 2};
    model.modelPoints = {{9, 9, 9}, {1, 0, 0}, {-1, 0, 0}, {0, 3, 0}};
    model.modelNormals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 1, 0}};

    const SensorLayout layout(model, kIdentityTransform);
    EXPECT_EQ(layout.sensorIds, (std::vector<int32_t>{5, 5, 2}));
    EXPECT_EQ(layout.idToIndex.at(5), 2);
    EXPECT_EQ(layout.idToIndex.at(2), 3);
    ASSERT_EQ(layout.positions.size(), 3u);
    EXPECT_DOUBLE_EQ(layout.maxPairDistance, std::sqrt(10.0));
    EXPECT_DOUBLE_EQ(layout.maxRadius, 3.0);
    EXPECT_DOUBLE_EQ(layout.cosMaxIncidence, 0.5);

    const TrackedObjectModel back = layout.ToModel();
    EXPECT_TRUE(back.valid);
    EXPECT_EQ(back.channelMap, (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(back.modelPoints[2], Eigen::Vector3f(0, 3, 0));
}

TEST(SensorLayout, MismatchedListsGiveEmptyLayoutWithZeroedScalars)
{
    TrackedObjectModel model;
    model.channelMap = {0, 1};
    model.modelPoints = {{1, 0, 0}};
    model.modelNormals = {{0, 0, 1}, {0, 0, 1}};
    const SensorLayout layout(model, kIdentityTransform);
    EXPECT_EQ(layout.SensorCount(), 0u);
    EXPECT_EQ(layout.cosMaxIncidence, 0.0);
    EXPECT_EQ(layout.maxPairDistance, 0.0);
    EXPECT_EQ(layout.maxRadius, 0.0);
}

TEST(SensorLayout, AppliesRotationRowsAndTranslation)
{
    TrackedObjectModel model;
    model.channelMap = {0};
    model.modelPoints = {{1, 2, 3}};
    model.modelNormals = {{1, 0, 0}};
    // Quarter turn about Z, then shifted along X.
    const ModelTransform transform = {0, -1, 0, 1, 0, 0, 0, 0, 1, 10, 0, 0};
    const SensorLayout layout(model, transform);
    EXPECT_EQ(layout.positions[0], Eigen::Vector3d(8, 1, 3));
    EXPECT_EQ(layout.normals[0], Eigen::Vector3d(0, 1, 0));
}

} // namespace
} // namespace kelvorig
