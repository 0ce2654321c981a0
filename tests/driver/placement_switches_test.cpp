#include "config/model_file.h"
#include "geometry/mesh_loading.h"
#include "support/cli_runner.h"
#include "support/scad_seats.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::RunKelvorig;
using test::TempDir;

const std::string kShell = KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl";

// No seat within the keep-out (the command-line table shows it drawn translucent).
TEST(PlacementSwitches, KeepOutEmptiesItsRegion)
{
    const TempDir dir;
    // Stored normals flipped and zero (facet, float of it, value): /normalsfromwinding reads the
    // winding instead, silently.
    std::string box = test::BinaryStl(MakeBox(Eigen::Vector3f(60, 60, 20)));
    test::PatchStlFloat(box, 0, 2, -1.0f);
    for (size_t slot = 0; slot < 3; ++slot)
        test::PatchStlFloat(box, 5, slot, 0.0f);
    test::WriteFile(dir.File("box.stl"), box);
    test::WriteBinaryStl(dir.File("ko.stl"), MakeBox(Eigen::Vector3f(40, 70, 40), Eigen::Vector3f(20, 0, 0)));
    const test::CliResult result = RunKelvorig({"/verifycoverage", "400", "/outscad", "o.scad", "/sensors", "box.stl",
                                                "/keepout", "ko.stl", "/normalsfromwinding", "/meshunit", "cm"},
                                               dir.path());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(test::WithoutMeshLines(result.err), "");
    const std::vector<test::ScadSeat> seats = test::ParseScadSeats(test::ReadFile(dir.File("o.scad")));
    ASSERT_EQ(seats.size(), 400u);
    for (const test::ScadSeat& seat : seats)
    {
        EXPECT_LT(seat.position.x(), 0.0f);                           // centimetres: 0.3 m wide
        EXPECT_GT(seat.normal.dot(seat.position.normalized()), 0.0f); // outwards
    }
}

// True when q lies outside the convex hull of `points`: Frank-Wolfe steps from inside towards q
// until a plane through the nearest support point separates them.
bool OutsideHull(const std::vector<Eigen::Vector3d>& points, const Eigen::Vector3d& q)
{
    Eigen::Vector3d x = points[0];
    for (int step = 0; step < 20000; ++step)
    {
        const Eigen::Vector3d u = q - x;
        Eigen::Vector3d support = points[0];
        for (const Eigen::Vector3d& p : points)
            support = p.dot(u) > support.dot(u) ? p : support;
        if (u.dot(q) > u.dot(support))
            return true;
        const Eigen::Vector3d d = support - x;
        x += std::clamp(u.dot(d) / d.squaredNorm(), 0.0, 1.0) * d;
    }
    return false;
}

TEST(PlacementSwitches, GenerateUnderMaxSeatDepthSeatsEverySensorWithin5MmOfTheHullsOutside)
{
    const TempDir dir;
    const test::CliResult result =
        RunKelvorig({"/generate", "/nsensors", "16", "/sensors", kShell, "/outmodel", "o.json", "/maxseatdepth", "5",
                     "/seed", "3", "/norientations", "200", "/niterations", "1", "/angleresolutiondegrees", "10"},
                    dir.path());
    ASSERT_EQ(result.status, 0) << result.err;
    TrackedObjectModel model;
    ASSERT_TRUE(ReadModel(dir.File("o.json"), model));
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    ASSERT_TRUE(ReadMeshMatrices(kShell, V, F, N));
    std::set<std::array<double, 3>> corners; // each corner once, in metres
    for (Eigen::Index row = 0; row < V.rows(); ++row)
        corners.insert({0.001 * V(row, 0), 0.001 * V(row, 1), 0.001 * V(row, 2)});
    std::vector<Eigen::Vector3d> points;
    for (const auto& [x, y, z] : corners)
        points.emplace_back(x, y, z);
    EXPECT_FALSE(OutsideHull(points, Eigen::Vector3d(0.0, 0.0, -0.02))); // the check sees inside
    ASSERT_EQ(model.modelPoints.size(), 16u);
    for (size_t i = 0; i < 16; ++i)
    {
        const Eigen::Vector3d p = model.modelPoints[i].cast<double>(), n = model.modelNormals[i].cast<double>();
        EXPECT_TRUE(OutsideHull(points, p + 0.0051 * n)) << p.transpose();
    }
}

} // namespace
} // namespace kelvorig
