#include "support/cli_runner.h"

#include <gtest/gtest.h>
#include <json/reader.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

const char* const kController = R"(// a controller, flat format
{
  "device_class": "controller", "revision": 2, "type": "Wand", "device_vid": 1, "device_pid": 2,
  "device_serial_number": "W-1", "manufacturer": "Maker",
  "trackref_from_imu": [0, 0, 0, 1, 0.25, 0, -0.5],
  "gyro_bias": [0.5, 0, 0], "gyro_scale": [1, 1, 1], "acc_bias": [0, 0, 0], "acc_scale": [1, 1, 1],
  "pharoscope_config": {"channelMap": [3], "modelPoints": [[0, 0, 0.125]], "modelNormals": [[0, 0, 1]],
                        "modelAngles": [0.5]},
  "resource_root": "Wand"
}
)";

const char* const kControllerFormat0 = R"({
   "acc_bias" : [ 0.0, 0.0, 0.0 ],
   "acc_scale" : [ 1.0, 1.0, 1.0 ],
   "device_class" : "controller",
   "device_pid" : 2,
   "device_serial_number" : "W-1",
   "device_vid" : 1,
   "gyro_bias" : [ 0.5, 0.0, 0.0 ],
   "gyro_scale" : [ 1.0, 1.0, 1.0 ],
   "manufacturer" : "Maker",
   "pharoscope_config" : {
      "channelMap" : [ 3 ],
      "modelAngles" : [ 0.5 ],
      "modelNormals" : [
         [ 0.0, 0.0, 1.0 ]
      ],
      "modelPoints" : [
         [ 0.0, 0.0, 0.125 ]
      ]
   },
   "render_model" : "",
   "resource_root" : "wand",
   "revision" : 2,
   "tracked_controller_role" : "",
   "trackref_from_head" : [ 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0 ],
   "trackref_from_imu" : [ 0.0, 0.0, 0.0, 1.0, 0.25, 0.0, -0.5 ],
   "type" : "Wand"
}

)";

// An hmd in the newer format, with something for every rule of the writer.
const char* const kVisor = R"({
  "device_class": "HMD", "type": "Visor", "model_number": "",
  "device": {"eye_target_width_in_pixels": 1080, "eye_target_height_in_pixels": 1200, "num_windows": 1,
             "first_eye": "eEYE_L", "last_eye": "eEYE_R"},
  "display_edid": ["edid-0", "edid-1"],
  "display_gc": {"prescale": 2, "black_clamp": 0.1},
  "display_mc": {"type": 0, "left": "l.png"},
  "tracking_to_eye_transform": [
    {"distortion": {"type": "DISTORT_NONE", "coeffs": [0, 0]}},
    {"distortion": {"type": "DISTORT_DPOLY3", "coeffs": [0.1, 0.2, 0, 0], "center_x": 0.5},
     "distortion_blue": {"type": "DISTORT_POLY3", "coeffs": [0.3]}, "eye_to_head": [[0, 1, 0], [1, 0, 0], [0, 0, 1]]}
  ],
  "imu": {"position": [0.01, 0.02, 0.03], "plus_x": [0, 1, 0], "plus_z": [0, 0, 1],
          "gyro_bias": [0.1, 0.2, 0.3], "gyro_scale": [1, 1, 1], "acc_bias": [0, 0, 0], "acc_scale": [1, 1, 1]},
  "head": {"position": [0, -0.01, 0], "plus_x": [1, 0, 0], "plus_z": [0, 1, 0]},
  "pharoscope_config": {"channelMap": [0, -1], "modelPoints": [[0.1, 0, 0], [0, 0.1, 0]],
                        "modelNormals": [[1, 0, 0], [0, 1, 0]]},
  "tracked_camera": {"intrinsics": {"width": 640, "height": 480, "undist_width": 700, "undist_height": 520,
                     "focal_x": 300, "focal_y": 300, "center_x": 350, "center_y": 260,
                     "distort": {"type": "DISTORT_FTHETA", "coeffs": [1, 0]}}},
  "firmware_config": {"z": 1, "a": [true]}
})";

struct Converted
{
    CliResult result;
    Json::Value root;
};

Converted Convert(const std::string& format, const std::string& text)
{
    TempDir dir;
    WriteFile(dir.File("device.json"), text);
    Converted converted{RunKelvorig({"/formatconvert", format, dir.File("device.json")}), Json::Value()};
    EXPECT_TRUE(Json::Reader().parse(converted.result.out, converted.root)) << converted.result.out;
    return converted;
}

std::array<double, 7> PoseOf(const Json::Value& array)
{
    std::array<double, 7> pose{};
    for (Json::ArrayIndex k = 0; k < 7; ++k)
        pose[k] = array[k].asDouble();
    return pose;
}

TEST(FormatConversion, ReprintsAFlatFileWithTheWritersRules)
{
    const Converted converted = Convert("0", kController);
    EXPECT_EQ(converted.result.status, 0);
    EXPECT_EQ(converted.result.err, "");
    EXPECT_EQ(converted.result.out, kControllerFormat0);
}

TEST(FormatConversion, HmdToFormat0)
{
    const Converted converted = Convert("0", kVisor);
    ASSERT_EQ(converted.result.status, 0) << converted.result.err;
    const Json::Value& root = converted.root;
    EXPECT_FALSE(root.isMember("imu"));
    EXPECT_FALSE(root.isMember("display_mc"));
    EXPECT_EQ(root["device"]["first_eye"].asString(), "eEYE_LEFT");
    // One window: the second text was cleared on reading, and is still written.
    EXPECT_EQ(root["display_edid"][1].asString(), "");
    EXPECT_EQ(root["display_gc"].getMemberNames(), (std::vector<std::string>{"black_clamp"}));
    EXPECT_EQ(root["gyro_bias"][2].asDouble(), static_cast<double>(0.3f));

    const Json::Value& left = root["tracking_to_eye_transform"][0];
    EXPECT_TRUE(left["distortion"]["coeffs"].isNull());
    EXPECT_FALSE(left.isMember("eye_to_head"));
    const Json::Value& right = root["tracking_to_eye_transform"][1];
    EXPECT_EQ(right["distortion"]["coeffs"].size(), 2u);
    // Red was trivial and takes the main model; blue was not and stays.
    EXPECT_EQ(right["distortion_red"]["type"].asString(), "DISTORT_DPOLY3");
    EXPECT_EQ(right["distortion_blue"]["type"].asString(), "DISTORT_POLY3");
    EXPECT_EQ(right["eye_to_head"][1][0].asDouble(), 1.0);

    const Json::Value& intrinsics = root["tracked_camera"]["intrinsics"];
    EXPECT_EQ(intrinsics["center_x"].asDouble(), 320.0);
    EXPECT_EQ(intrinsics["center_y"].asDouble(), 240.0);
    EXPECT_FALSE(intrinsics.isMember("undist_width"));
    EXPECT_EQ(intrinsics["distort"]["coeffs"].size(), 1u);
    EXPECT_EQ(root["firmware_config"]["a"][0].asBool(), true);
    EXPECT_NE(converted.result.out.find("0.10000000149011612"), std::string::npos);

    // A quarter turn about Z for the IMU, a quarter turn about X for the head.
    const std::array<double, 7> imu = PoseOf(root["trackref_from_imu"]);
    EXPECT_NEAR(imu[2], std::sqrt(0.5), 1e-7);
    EXPECT_NEAR(imu[3], std::sqrt(0.5), 1e-7);
    EXPECT_EQ(imu[4], static_cast<double>(0.01f));
    const std::array<double, 7> head = PoseOf(root["trackref_from_head"]);
    EXPECT_NEAR(std::abs(head[0]), std::sqrt(0.5), 1e-7);
    EXPECT_NEAR(head[0] * head[3], -0.5, 1e-7);
}

TEST(FormatConversion, Format1WritesBothObjectsFromTheStoredPoses)
{
    const Converted converted = Convert("1", kController);
    ASSERT_EQ(converted.result.status, 0) << converted.result.err;
    const Json::Value& root = converted.root;
    EXPECT_FALSE(root.isMember("trackref_from_imu"));
    EXPECT_FALSE(root.isMember("gyro_bias"));
    EXPECT_EQ(root["imu"]["gyro_bias"][0].asDouble(), 0.5);
    EXPECT_EQ(root["imu"]["position"][2].asDouble(), -0.5);
    EXPECT_EQ(root["imu"]["plus_x"][0].asDouble(), 1.0);
    EXPECT_EQ(root["head"]["plus_z"][2].asDouble(), 1.0);
}

TEST(FormatConversion, RoundTripThroughFormat1KeepsThePoses)
{
    const std::string source = R"({"device_class": "generic_tracker",
        "trackref_from_imu": [0.1825742, 0.3651484, 0.5477226, 0.7302967, 0.01, -0.02, 0.03],
        "trackref_from_head": [-0.5, 0.5, -0.5, 0.5, 0, 0.1, 0]})";
    const Converted original = Convert("0", source);
    const Converted newer = Convert("1", source);
    ASSERT_EQ(newer.result.status, 0) << newer.result.err;
    const Converted back = Convert("0", newer.result.out);
    ASSERT_EQ(back.result.status, 0) << back.result.err;
    for (const char* key : {"trackref_from_imu", "trackref_from_head"})
    {
        const std::array<double, 7> before = PoseOf(original.root[key]);
        const std::array<double, 7> after = PoseOf(back.root[key]);
        const double sign = before[0] * after[0] + before[1] * after[1] + before[2] * after[2] +
                            before[3] * after[3] < 0 ? -1.0 : 1.0;
        for (int k = 0; k < 7; ++k)
            EXPECT_NEAR(after[k], (k < 4 ? sign : 1.0) * before[k], 1e-6) << key << " " << k;
    }
}

TEST(FormatConversion, UnreadableFilesAreReported)
{
    TempDir dir;
    WriteFile(dir.File("section.json"), R"({"channelMap": [0], "modelPoints": [[0, 0, 0]]})");
    WriteFile(dir.File("typed.json"), R"({"device_class": "controller", "revision": "two"})");
    WriteFile(dir.File("broken.json"), "{\"device_class\": ");
    const struct
    {
        std::string name;
        int status;
        std::string err;  // behind the path; only the start for the parser's message
    } cases[] = {
        // A missing file is only reported: the status stays 0.
        {"none.json", 0, ": file is empty or does not exist\n"},
        {"section.json", 1, ": missing values from \"device\" section\n"},
        {"typed.json", 1, ": exception thrown in JSON library\n"},
        {"broken.json", 1, ": * Line 1"},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunKelvorig({"/formatconvert", "0", dir.File(c.name)});
        EXPECT_EQ(result.status, c.status) << c.name;
        const std::string expected = "couldn't read " + dir.File(c.name) + c.err;
        if (c.name == "broken.json")
        {
            EXPECT_EQ(result.err.rfind(expected, 0), 0u) << result.err;
        }
        else
        {
            EXPECT_EQ(result.err, expected);
        }
        EXPECT_EQ(result.out, "");
    }
}

} // namespace
} // namespace kelvorig
