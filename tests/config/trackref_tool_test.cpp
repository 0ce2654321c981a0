#include "support/angles.h"
#include "support/cli_runner.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>
#include <json/reader.h>

#include <cmath>
#include <sstream>

namespace kelvorig {
namespace {

using test::CliResult;
using test::RunKelvorig;
using test::TempDir;
using test::WriteFile;

const char* const kZeroZ =
    "imu_plusz_in_trackref can't be 0,0,0.  Set it to a vector pointing in the IMU's +Z direction.\n";
const char* const kZeroX =
    "imu_plusx_in_trackref can't be 0,0,0.  Set it to a vector pointing in the IMU's +X direction.\n";
const char* const kZeroPosition =
    "WARNING: imu_from_trackref is 0,0,0!  This is only correct if your IMU is at your CAD origin.\n";
const char* const kNotPerpendicular = "WARNING: imu_plusz_in_trackref isn't perpendicular to imu_plusx_in_trackref!\n";
const char* const kNoMatchZ = "WARNING: computed transform does not get matching +Z\n";
const char* const kNoMatchX = "WARNING: computed transform does not get matching +X\n";

std::string Triple(const Eigen::Vector3d& v)
{
    std::ostringstream text;
    text.precision(17);
    text << "[" << v.x() << ", " << v.y() << ", " << v.z() << "]";
    return text.str();
}

CliResult RunWithAxes(const Eigen::Vector3d& position, const Eigen::Vector3d& plusX, const Eigen::Vector3d& plusZ)
{
    TempDir dir;
    const std::string path = dir.File("imu.json");
    WriteFile(path, "// mounting of the IMU\n{\"imu_from_trackref\": " + Triple(position) +
                        ", \"imu_plusx_in_trackref\": " + Triple(plusX) +
                        ", \"imu_plusz_in_trackref\": " + Triple(plusZ) + "}\n");
    return RunKelvorig({"/trackref_from_imu", path});
}

std::array<double, 7> PoseOf(const CliResult& result)
{
    Json::Value root;
    EXPECT_TRUE(Json::Reader().parse(result.out, root)) << result.out;
    EXPECT_EQ(root.size(), 1u);
    std::array<double, 7> pose{};
    for (Json::ArrayIndex k = 0; k < 7; ++k)
        pose[k] = root["trackref_from_imu"][k].asDouble();
    return pose;
}

// The rotation with the given unit axes as its X and Z columns, built independently.
Eigen::Quaterniond Expected(Eigen::Vector3d x, Eigen::Vector3d z)
{
    x.normalize();
    z.normalize();
    Eigen::Matrix3d r;
    r << x, z.cross(x), z;
    return Eigen::Quaterniond(r);
}

TEST(TrackrefTool, WithoutFilePrintsTheSampleThatIsItselfAnInput)
{
    const CliResult result = RunKelvorig({"/trackref_from_imu"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "// INSTRUCTIONS\n"
              "//\n"
              "// Refer to IMU datasheet for orientation of IMU axes relative to package.\n"
              "// Set imu_from_trackref to the CAD location of the centroid of the IMU package.\n"
              "// Set imu_plusz_in_trackref to a vector (in CAD coordinates) pointing in the +Z axis of the "
              "IMU (usually perpendicular to the PCB).\n"
              "// Set imu_plusx_in_trackref to a vector (in CAD coordinates) pointing in the +X axis of the "
              "IMU.\n"
              "// Feed this file back into kelvorig /trackref_from_imu to get the final transform for your "
              "calibration JSON.\n"
              "\n"
              "{\n"
              "   \"imu_from_trackref\" : [ 0.0, 0.0, 0.0 ],\n"
              "   \"imu_plusx_in_trackref\" : [ 0.0, 0.0, 0.0 ],\n"
              "   \"imu_plusz_in_trackref\" : [ 0.0, 0.0, 0.0 ]\n"
              "}\n"
              "\n");

    // Fed back as it is, the zero Z axis is the first complaint.
    TempDir dir;
    WriteFile(dir.File("sample.json"), result.out);
    const CliResult fed = RunKelvorig({"/trackref_from_imu", dir.File("sample.json")});
    EXPECT_EQ(fed.status, 1);
    EXPECT_EQ(fed.err, kZeroZ);
    EXPECT_EQ(fed.out, "");
}

TEST(TrackrefTool, PosesRotateUnitAxesOntoTheGivenDirections)
{
    const struct
    {
        Eigen::Vector3d x, z;
    } cases[] = {
        {{1, 0, 0}, {0, 0, 1}},  {{0, 1, 0}, {1, 0, 0}},      {{2, 0, 0}, {0, 0, 5}},
        {{0, 0, -1}, {0, 1, 0}}, {{1, 1, 0}, {1, -1, 0.0}},   {{0.2, 0.9, -0.4}, {0.9, -0.2, 0}},
        {{3, -2, 1}, {1, 2, 1}},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunWithAxes(Eigen::Vector3d(0.012, -0.034, 0.056), c.x, c.z);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        const std::array<double, 7> pose = PoseOf(result);
        const Eigen::Quaterniond q(pose[3], pose[0], pose[1], pose[2]);
        EXPECT_NEAR(std::abs(q.dot(Expected(c.x, c.z))), 1.0, 1e-12);
        EXPECT_NEAR(((q * Eigen::Vector3d::UnitX()) - c.x.normalized()).norm(), 0.0, 1e-12);
        EXPECT_NEAR(((q * Eigen::Vector3d::UnitZ()) - c.z.normalized()).norm(), 0.0, 1e-12);
        EXPECT_EQ(pose[4], 0.012);
        EXPECT_EQ(pose[5], -0.034);
        EXPECT_EQ(pose[6], 0.056);
    }
}

TEST(TrackrefTool, WarningsAndRefusals)
{
    const double tilt = DegreesToRadians(89.9);    // a dot product of about 0.0017: refused
    const double nearly = DegreesToRadians(89.97);  // within the limit: X is flattened, Z kept
    const std::string pose = "{\n   \"trackref_from_imu\" : [ ";
    const struct
    {
        Eigen::Vector3d position, x, z;
        int status;
        std::string err;
        std::string out;  // empty: not checked
    } cases[] = {
        {{1, 2, 3}, {1, 0, 0}, {0, 0, 1}, 0, "", pose + "0.0, 0.0, 0.0, 1.0, 1.0, 2.0, 3.0 ]\n}\n\n"},
        // Opposite Z is a half turn about X, without a warning.
        {{0, 0, 0.5}, {1, 0, 0}, {0, 0, -1}, 0, "", pose + "1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.5 ]\n}\n\n"},
        // Refused axes report the identity and say how far it is from what was asked.
        {{0.1, 0, 0}, {1, 0, 0}, {std::cos(tilt), 0, std::sin(tilt)}, 0, kNotPerpendicular,
         pose + "0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0 ]\n}\n\n"},
        {{0.1, 0, 0}, {0, 1, 0}, {0, 1, 1}, 0, std::string(kNotPerpendicular) + kNoMatchZ + kNoMatchX, ""},
        {{0.1, 0, 0}, {std::sin(nearly), 0, std::cos(nearly)}, {0, 0, 1}, 0, "",
         pose + "0.0, 0.0, 0.0, 1.0, 0.10000000000000001, 0.0, 0.0 ]\n}\n\n"},
        // Zero axes end the run, Z checked first.
        {{1, 0, 0}, {0, 0, 0}, {0, 0, 0}, 1, kZeroZ, ""},
        {{1, 0, 0}, {0, 0, 0}, {0, 0, 1}, 1, kZeroX, ""},
    };
    for (const auto& c : cases)
    {
        const CliResult result = RunWithAxes(c.position, c.x, c.z);
        EXPECT_EQ(result.status, c.status) << c.err;
        EXPECT_EQ(result.err, c.err);
        if (c.status != 0 || !c.out.empty())
        {
            EXPECT_EQ(result.out, c.out);
        }
    }

    // A zero position is only a warning: the pose still follows the axes.
    const CliResult atOrigin =
        RunWithAxes(Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(0, 1, 0), Eigen::Vector3d(1, 0, 0));
    EXPECT_EQ(atOrigin.status, 0);
    EXPECT_EQ(atOrigin.err, kZeroPosition);
    const std::array<double, 7> turned = PoseOf(atOrigin);
    EXPECT_NEAR(turned[0], 0.5, 1e-15);
    EXPECT_NEAR(turned[3], 0.5, 1e-15);

    // A missing key reads as zeros: not a parse error.
    TempDir dir;
    WriteFile(dir.File("imu.json"), R"({"imu_from_trackref": [1, 2, 3], "imu_plusx_in_trackref": [1, 0]})");
    const CliResult result = RunKelvorig({"/trackref_from_imu", dir.File("imu.json")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, kZeroZ);
}

TEST(TrackrefTool, UnreadableOrBrokenFilesEndWithStatus1)
{
    TempDir dir;
    const CliResult missing = RunKelvorig({"/trackref_from_imu", dir.File("absent.json")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "couldn't read " + dir.File("absent.json") + ": No such file or directory\n");

    WriteFile(dir.File("broken.json"), "{\"imu_from_trackref\": [1, 2, 3],\n");
    const CliResult broken = RunKelvorig({"/trackref_from_imu", dir.File("broken.json")});
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err.rfind("couldn't parse " + dir.File("broken.json") + ": * Line 2", 0), 0u) << broken.err;

    WriteFile(dir.File("typed.json"), R"({"imu_plusz_in_trackref": "up", "imu_plusx_in_trackref": [1, 0, 0]})");
    const CliResult typed = RunKelvorig({"/trackref_from_imu", dir.File("typed.json")});
    EXPECT_EQ(typed.status, 1);
    EXPECT_EQ(typed.err.rfind("couldn't read " + dir.File("typed.json") + ": ", 0), 0u) << typed.err;
    EXPECT_EQ(typed.out, "");

    const CliResult directory = RunKelvorig({"/trackref_from_imu", dir.path()});
    EXPECT_EQ(directory.status, 1);
    EXPECT_EQ(directory.err.rfind("couldn't read " + dir.path() + ": ", 0), 0u) << directory.err;
}

} // namespace
} // namespace kelvorig
