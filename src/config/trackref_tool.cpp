#include "config/trackref_tool.h"

#include "config/calibration_values.h"
#include "config/pose_axes.h"

#include <json/reader.h>
#include <json/writer.h>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>

namespace kelvorig {
namespace {

constexpr const char* kPositionKey = "imu_from_trackref";
constexpr const char* kPlusXKey = "imu_plusx_in_trackref";
constexpr const char* kPlusZKey = "imu_plusz_in_trackref";
constexpr const char* kResultKey = "trackref_from_imu";

// Below this dot product a computed axis misses the requested one.
constexpr double kMatchLimit = 0.999;

bool IsZero(const Eigen::Vector3d& v)
{
    return v.x() == 0.0 && v.y() == 0.0 && v.z() == 0.0;
}

void PrintStyled(const Json::Value& value, std::ostream& out)
{
    out << Json::StyledWriter().write(value) << "\n";
    out.flush();
}

Status Fail(const char* what, const std::string& path, const std::string& reason)
{
    return Status::Failure(std::string("couldn't ") + what + " " + path + ": " + reason + "\n");
}

Status PrintPoseFromText(const std::string& path, const std::string& text, std::ostream& out, std::ostream& warnings)
{
    Json::Value root;
    Json::Reader reader;
    if (!reader.parse(text, root, true))
        return Fail("parse", path, reader.getFormattedErrorMessages());

    const Eigen::Vector3d position = ReadTripleDouble(root[kPositionKey]);
    Eigen::Vector3d plusZ = ReadTripleDouble(root[kPlusZKey]);
    Eigen::Vector3d plusX = ReadTripleDouble(root[kPlusXKey]);
    NormalizeVector(plusZ);
    NormalizeVector(plusX);

    if (IsZero(plusZ))
        return Status::Failure("imu_plusz_in_trackref can't be 0,0,0.  Set it to a vector pointing in the IMU's +Z "
                               "direction.\n");
    if (IsZero(plusX))
        return Status::Failure("imu_plusx_in_trackref can't be 0,0,0.  Set it to a vector pointing in the IMU's +X "
                               "direction.\n");
    if (IsZero(position))
        warnings << "WARNING: imu_from_trackref is 0,0,0!  This is only correct if your IMU is at your CAD origin.\n";
    if (std::abs(plusZ.dot(plusX)) > kPerpendicularLimit)
        warnings << "WARNING: imu_plusz_in_trackref isn't perpendicular to imu_plusx_in_trackref!\n";

    // note: when the axes are refused the identity pose is reported, and the two checks
    // below say how far it is from what was asked.
    CalibrationPose pose = kIdentityCalibrationPose;
    BuildPoseFromAxes(&pose, position, plusX, plusZ);

    Eigen::Vector3d computedX, computedZ;
    AxesFromPose(nullptr, &computedX, &computedZ, pose);
    if (computedZ.dot(plusZ) < kMatchLimit)
        warnings << "WARNING: computed transform does not get matching +Z\n";
    if (computedX.dot(plusX) < kMatchLimit)
        warnings << "WARNING: computed transform does not get matching +X\n";

    Json::Value result;
    for (Json::ArrayIndex k = 0; k < pose.size(); ++k)
        result[kResultKey][k] = pose[k];
    PrintStyled(result, out);
    return {};
}

} // namespace

void TrackrefSample(std::ostream& out)
{
    out << "// INSTRUCTIONS\n"
           "//\n"
           "// Refer to IMU datasheet for orientation of IMU axes relative to package.\n"
           "// Set imu_from_trackref to the CAD location of the centroid of the IMU package.\n"
           "// Set imu_plusz_in_trackref to a vector (in CAD coordinates) pointing in the +Z axis of "
           "the IMU (usually perpendicular to the PCB).\n"
           "// Set imu_plusx_in_trackref to a vector (in CAD coordinates) pointing in the +X axis of "
           "the IMU.\n"
           "// Feed this file back into kelvorig /trackref_from_imu to get the final transform for "
           "your calibration JSON.\n"
           "\n";
    Json::Value sample;
    for (const char* key : {kPositionKey, kPlusZKey, kPlusXKey})
    {
        for (Json::ArrayIndex k = 0; k < 3; ++k)
            sample[key][k] = 0.0;
    }
    PrintStyled(sample, out);
}

Status TrackrefFromFile(const std::string& path, std::ostream& out, std::ostream& warnings)
{
    // Reading a directory makes the stream throw; that is an unreadable input file too.
    try
    {
        // note: a directory opens as a stream and fails only at the first read, with a text of
        // the library's own.
        std::error_code notChecked;
        if (std::filesystem::is_directory(path, notChecked))
            return Fail("read", path, "is a directory");
        std::ifstream in(path);
        if (!in)
            return Fail("read", path, std::strerror(errno));
        // note: parsed from a string, not the stream: the reader keeps its own copy of a string,
        // while the text it reads from a stream is gone before the error message is formatted.
        const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        return TrackrefFromText(path, text, out, warnings);
    }
    catch (const std::exception& e)
    {
        return Fail("read", path, e.what());
    }
}

Status TrackrefFromText(const std::string& name, const std::string& text, std::ostream& out, std::ostream& warnings)
{
    // A value of the wrong JSON type, or nesting past the reader's limit, makes the library
    // throw; either is an unreadable input file.
    try
    {
        return PrintPoseFromText(name, text, out, warnings);
    }
    catch (const std::exception& e)
    {
        return Fail("read", name, e.what());
    }
}

} // namespace kelvorig
