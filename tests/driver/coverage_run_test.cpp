#include "support/cli_runner.h"
#include "support/scad_seats.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeBox;

// Draws `count` seats on box.stl (and the obstacles) in `dir`; returns the seats drawn.
std::vector<test::ScadSeat> Coverage(const test::TempDir& dir, const std::string& count,
                                     std::vector<std::string> more = {})
{
    more.insert(more.begin(), {"/verifycoverage", count, "/outscad", "c.scad", "/sensors", "box.stl"});
    const test::CliResult result = test::RunKelvorig(more, dir.path());
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(test::WithoutMeshLines(result.err) + result.out, "");
    return test::ParseScadSeats(test::ReadFile(dir.File("c.scad")));
}

// Seats lie on the faces, normals along the face's, 3 mm clear of the edges (the chords 1 mm
// under the face reach 3 mm to each side), and follow the usable area: top and bottom offer
// 54 x 54 mm each, the sides 54 x 14 mm. /maxsurfaceangle tilts nothing here, and coverage
// comes before /generate.
TEST(CoverageRun, SeatsLieOnTheFacesClearOfEdgesAndFollowTheUsableArea)
{
    const test::TempDir dir;
    const Eigen::Vector3f half(0.03f, 0.03f, 0.01f);
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(2000.0f * half));
    const std::vector<test::ScadSeat> seats =
        Coverage(dir, "3000", {"/maxsurfaceangle", "45", "/generate", "/nsensors", "4"});
    ASSERT_EQ(seats.size(), 3000u);
    int onTopOrBottom = 0;
    for (const test::ScadSeat& seat : seats)
    {
        int axis = 0;
        while (axis < 3 && std::abs(std::abs(seat.position[axis]) - half[axis]) >= 2e-6f)
            ++axis;
        ASSERT_LT(axis, 3) << seat.position.transpose();
        onTopOrBottom += axis == 2;
        EXPECT_LT((seat.normal - std::copysign(1.0f, seat.position[axis]) * Eigen::Vector3f::Unit(axis)).norm(), 1e-4f);
        for (int other : {(axis + 1) % 3, (axis + 2) % 3})
            EXPECT_LE(std::abs(seat.position[other]), half[other] - 0.003f + 2e-6f) << seat.position.transpose();
    }
    EXPECT_NEAR(onTopOrBottom / 3000.0, 2 * 54.0 * 54.0 / (2 * 54.0 * 54.0 + 4 * 54.0 * 14.0), 0.035);
}

// Fins 4 mm apart through the right half of the top face leave no seat there. (A chord
// wholly inside an obstacle meets none of its facets.)
TEST(CoverageRun, ObstacleOverAFaceRemovesSeatsThere)
{
    const test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 40, 40)));
    test::TestMesh fins;
    for (float x = 2; x < 20; x += 4)
        fins = test::Combine(fins, MakeBox(Eigen::Vector3f(0.2f, 60, 10), Eigen::Vector3f(x, 0, 20)));
    test::WriteBinaryStl(dir.File("fins.stl"), fins);
    int onTop = 0;
    for (const test::ScadSeat& seat : Coverage(dir, "2000", {"/obstacles", "fins.stl"}))
    {
        onTop += seat.normal.z() > 0.5f;
        EXPECT_TRUE(seat.normal.z() < 0.5f || seat.position.x() <= -0.001f + 2e-6f) << seat.position.transpose();
    }
    EXPECT_GT(onTop, 50);
}

} // namespace
} // namespace kelvorig
