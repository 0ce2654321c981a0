#include "geometry/angles.h"
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

TEST(TrackrefTool, ReferenceAxesGiveTheIdentityQuaternion)
{
    const CliResult result = RunWithAxes(Eigen::Vector3d(1, 2, 3), Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 0, 1));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "{\n   \"trackref_from_imu\" : [ 0.0, 0.0, 0.0, 1.0, 1.0, 2.0, 3.0 ]\n}\n\n");
}

TEST(TrackrefTool, OppositeZIsAHalfTurnAboutXWithoutWarning)
{
    const CliResult result = RunWithAxes(Eigen::Vector3d(0, 0, 0.5), Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 0, -1));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "{\n   \"trackref_from_imu\" : [ 1.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.5 ]\n}\n\n");
}

TEST(TrackrefTool, ZeroAxesEndTheRunZCheckedFirst)
{
    const CliResult zeroBoth = RunWithAxes(Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(0, 0, 0));
    EXPECT_EQ(zeroBoth.status, 1);
    EXPECT_EQ(zeroBoth.err, kZeroZ);
    EXPECT_EQ(zeroBoth.out, "");

    const CliResult zeroX = RunWithAxes(Eigen::Vector3d(1, 0, 0), Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(0, 0, 1));
    EXPECT_EQ(zeroX.status, 1);
    EXPECT_EQ(zeroX.err, kZeroX);
    EXPECT_EQ(zeroX.out, "");
}

TEST(TrackrefTool, MissingZKeyIsAZeroAxisNotAParseError)
{
    TempDir dir;
    WriteFile(dir.File("imu.json"), R"({"imu_from_trackref": [1, 2, 3], "imu_plusx_in_trackref": [1, 0]})");
    const CliResult result = RunKelvorig({"/trackref_from_imu", dir.File("imu.json")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, kZeroZ);
}

TEST(TrackrefTool, ZeroPositionIsOnlyAWarning)
{
    const CliResult result = RunWithAxes(Eigen::Vector3d(0, 0, 0), Eigen::Vector3d(0, 1, 0), Eigen::Vector3d(1, 0, 0));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, kZeroPosition);
    const std::array<double, 7> pose = PoseOf(result);
    EXPECT_NEAR(pose[0], 0.5, 1e-15);
    EXPECT_NEAR(pose[3], 0.5, 1e-15);
}

TEST(TrackrefTool, AxesAt89Point9DegreesWarnAndReportTheIdentity)
{
    // Z tilted within the XZ plane to 89.9 degrees from X: a dot product of about 0.0017.
    const double angle = DegreesToRadians(89.9);
    const Eigen::Vector3d plusZ(std::cos(angle), 0, std::sin(angle));
    const CliResult result = RunWithAxes(Eigen::Vector3d(0.1, 0, 0), Eigen::Vector3d(1, 0, 0), plusZ);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, kNotPerpendicular);
    EXPECT_EQ(result.out, "{\n   \"trackref_from_imu\" : [ 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0 ]\n}\n\n");

    // Far from any rotation, the identity matches neither axis.
    const CliResult crooked = RunWithAxes(Eigen::Vector3d(0.1, 0, 0), Eigen::Vector3d(0, 1, 0), Eigen::Vector3d(0, 1, 1));
    EXPECT_EQ(crooked.status, 0);
    EXPECT_EQ(crooked.err, std::string(kNotPerpendicular) + kNoMatchZ + kNoMatchX);
}

TEST(TrackrefTool, AxesAt89Point97DegreesGiveAPoseWithZKept)
{
    const double angle = DegreesToRadians(89.97);
    const Eigen::Vector3d plusX(std::sin(angle), 0, std::cos(angle));
    const CliResult result = RunWithAxes(Eigen::Vector3d(0.1, 0, 0), plusX, Eigen::Vector3d(0, 0, 1));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::array<double, 7> pose = PoseOf(result);
    EXPECT_EQ(pose[3], 1.0);
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
