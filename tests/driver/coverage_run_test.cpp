#include "cad/scad_writer.h"
#include "model/sensor_model.h"
#include "support/cli_runner.h"
#include "support/scad_seats.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

namespace kelvorig {
namespace {

using test::CliResult;
using test::MakeBox;
using test::ReadFile;
using test::RunKelvorig;
using test::TempDir;
using test::WriteBinaryStl;
using test::WriteFile;

using Seat = test::ScadSeat;

std::vector<Seat> Coverage(const TempDir& dir, std::vector<std::string> arguments)
{
    const CliResult result = RunKelvorig(arguments, dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "");
    return test::ParseScadSeats(ReadFile(dir.File("coverage.scad")));
}

// The face of a box centred on the origin that a point lies on (its axis), or -1.
int FaceAxis(const Eigen::Vector3f& p, const Eigen::Vector3f& half)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        if (std::abs(std::abs(p[axis]) - half[axis]) < 2e-6f)
            return axis;
    }
    return -1;
}

TEST(CoverageRun, SeatsLieOnTheFacesWithTheirNormalsClearOfEdges)
{
    const TempDir dir;
    const Eigen::Vector3f size(40, 30, 20);
    WriteBinaryStl(dir.File("box.stl"), MakeBox(size));
    // The coverage run draws with the surface's own limit: /maxsurfaceangle tilts nothing.
    const std::vector<Seat> seats = Coverage(
        dir, {"/verifycoverage", "1000", "/outscad", "coverage.scad", "/sensors", "box.stl", "/maxsurfaceangle", "45"});
    ASSERT_EQ(seats.size(), 1000u);
    const Eigen::Vector3f half = 0.0005f * size;
    for (const Seat& seat : seats)
    {
        const int axis = FaceAxis(seat.position, half);
        ASSERT_GE(axis, 0) << seat.position.transpose();
        const Eigen::Vector3f faceNormal = std::copysign(1.0f, seat.position[axis]) * Eigen::Vector3f::Unit(axis);
        EXPECT_LT((seat.normal - faceNormal).norm(), 1e-4f) << seat.normal.transpose();
        // The chords 1 mm under the face reach 3 mm to each side.
        for (int other = 0; other < 3; ++other)
        {
            if (other != axis)
            {
                EXPECT_LE(std::abs(seat.position[other]), half[other] - 0.003f + 2e-6f) << seat.position.transpose();
            }
        }
    }
}

TEST(CoverageRun, SeatsFollowTheUsableArea)
{
    const TempDir dir;
    // Top and bottom offer 54 x 54 mm clear of edges each, the four sides 54 x 14 mm.
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(60, 60, 20)));
    const std::vector<Seat> seats =
        Coverage(dir, {"/verifycoverage", "3000", "/outscad", "coverage.scad", "/sensors", "box.stl"});
    ASSERT_EQ(seats.size(), 3000u);
    int onTopOrBottom = 0;
    for (const Seat& seat : seats)
        onTopOrBottom += std::abs(seat.normal.z()) > 0.5f ? 1 : 0;
    const double expected = 2 * 54.0 * 54.0 / (2 * 54.0 * 54.0 + 4 * 54.0 * 14.0);
    EXPECT_NEAR(onTopOrBottom / 3000.0, expected, 0.035);
}

TEST(CoverageRun, ObstacleUnderAFaceRemovesSeatsThere)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 40, 40)));
    // Fins 4 mm apart through the right half of the top face, from x = 2 mm outwards: every
    // point there has a fin within a chord's reach. (A chord wholly inside an obstacle
    // meets none of its facets.)
    test::TestMesh fins = MakeBox(Eigen::Vector3f(0.2f, 60, 10), Eigen::Vector3f(2, 0, 20));
    for (float x = 6; x < 20; x += 4)
        fins = test::Combine(fins, MakeBox(Eigen::Vector3f(0.2f, 60, 10), Eigen::Vector3f(x, 0, 20)));
    WriteBinaryStl(dir.File("block.stl"), fins);
    const std::vector<Seat> seats = Coverage(
        dir, {"/verifycoverage", "2000", "/outscad", "coverage.scad", "/sensors", "box.stl", "/obstacles", "block.stl"});
    ASSERT_EQ(seats.size(), 2000u);
    int onTop = 0;
    for (const Seat& seat : seats)
    {
        if (seat.normal.z() > 0.5f)
        {
            ++onTop;
            EXPECT_LE(seat.position.x(), -0.001f + 2e-6f) << seat.position.transpose();
        }
    }
    EXPECT_GT(onTop, 50);
    EXPECT_NE(ReadFile(dir.File("coverage.scad")).find("block.stl"), std::string::npos);
}

TEST(CoverageRun, DrawingIsTheWritersTextWithNothingAhead)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 40, 40)));
    WriteBinaryStl(dir.File("block.stl"), MakeBox(Eigen::Vector3f(4, 4, 4), Eigen::Vector3f(0, 0, 30)));
    WriteFile(dir.File("coverage.scad"), std::string(10000, 'x'));
    for (bool withNormals : {false, true})
    {
        std::vector<std::string> arguments = {"/verifycoverage", "-3",         "/outscad", "coverage.scad", "/sensors",
                                              "box.stl",         "/obstacles", "block.stl"};
        if (withNormals)
            arguments.push_back("/withscadnormals");
        // A negative count draws no seats at all.
        EXPECT_TRUE(Coverage(dir, arguments).empty());
        EXPECT_EQ(ReadFile(dir.File("coverage.scad")),
                  WriteScadFile(TrackedObjectModel(), "box.stl", {"block.stl"}, 0.001, withNormals));
    }
}

TEST(CoverageRun, BrokenSurfaceIsReportedByTheReaderThenRefused)
{
    const TempDir dir;
    const std::string cutBinary = test::BinaryStl(MakeBox(Eigen::Vector3f(10, 10, 10))).substr(0, 84 + 50 + 20);
    const struct
    {
        std::string contents;
        std::string err;
    } cases[] = {
        {"", "IOError: broken.stl too short.\n"},
        {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n", "IOError: broken.stl bad format (4).\n"},
        {cutBinary, "IOError: broken.stl bad format (4).\n"},
        {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
         "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\nendfacet\nendsolid x\n",
         "Error: list_to_matrix() list elements are not all the same size: (min: 2, max: 3)\n"},
        // Read without complaint, but nothing to build a surface from.
        {"solid x\nendsolid x\n", ""},
        {"solid x\nfacet normal 0 0 1\nouter loop\nendloop\nendfacet\nendsolid x\n", ""},
        {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nendloop\nendfacet\nendsolid x\n", ""},
    };
    for (const auto& c : cases)
    {
        WriteFile(dir.File("broken.stl"), c.contents);
        const CliResult result =
            RunKelvorig({"/verifycoverage", "10", "/outscad", "o.scad", "/sensors", "broken.stl"}, dir.path());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, c.err + "Could not build tracked surface from \"broken.stl\"\n");
        EXPECT_FALSE(std::filesystem::exists(dir.File("o.scad")));
    }

    const CliResult missing =
        RunKelvorig({"/verifycoverage", "10", "/outscad", "o.scad", "/sensors", "missing.stl"}, dir.path());
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err,
              "IOError: missing.stl could not be opened...\nCould not build tracked surface from \"missing.stl\"\n");
}

TEST(CoverageRun, BrokenObstacleRefusesTheWholeSurface)
{
    const TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 40, 40)));
    WriteBinaryStl(dir.File("block.stl"), MakeBox(Eigen::Vector3f(4, 4, 4), Eigen::Vector3f(0, 0, 30)));
    WriteFile(dir.File("broken.stl"), "solid b\nfacet normal 0 0 1\nouter lop\n");
    const CliResult result = RunKelvorig({"/verifycoverage", "10", "/outscad", "o.scad", "/sensors", "box.stl",
                                          "/obstacles", "block.stl", "/obstacles", "broken.stl"},
                                         dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "IOError: broken.stl bad format (2).\n"
                          "Could not build tracked surface from \"box.stl\" and \"block.stl\" and \"broken.stl\"\n");
}

TEST(CoverageRun, SurfaceWithoutSeatsEndsWithAMessage)
{
    const TempDir dir;
    // A rod 2 mm thick, in millimetres by its size: no point of it is 3 mm from an edge.
    WriteBinaryStl(dir.File("tiny.stl"), MakeBox(Eigen::Vector3f(30.0f, 2.0f, 2.0f)));
    const CliResult result =
        RunKelvorig({"/verifycoverage", "10", "/outscad", "o.scad", "/sensors", "tiny.stl"}, dir.path());
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Error: no position on the sensor surface \"tiny.stl\" can take a sensor.\n");
}

} // namespace
} // namespace kelvorig
