#include "config/model_file.h"
#include "geometry/mesh_loading.h"
#include "support/cli_runner.h"
#include "support/scad_seats.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::RunKelvorig;
using test::TempDir;
using test::TestMesh;

const std::string kShell = KELVORIG_SOURCE_DIR "/examples/hmd_shell.stl";

// Binary STL of `mesh` with float `slot` of facet `facet` (0-2 normal, 3-11 corners) set.
std::string Patched(const TestMesh& mesh, std::vector<std::array<float, 3>> patches)
{
    std::string bytes = test::BinaryStl(mesh);
    for (const auto& [facet, slot, value] : patches)
        std::memcpy(&bytes[84 + 50 * static_cast<size_t>(facet) + 4 * static_cast<size_t>(slot)], &value, 4);
    return bytes;
}

TEST(PlacementSwitches, MeshChecksWarnOfBrokenMeshesOnly)
{
    const TestMesh box = MakeBox(Eigen::Vector3f(40, 30, 20));
    TestMesh insideOut = box, open = box, sliver = box;
    for (std::array<int, 3>& t : insideOut.triangles)
        std::swap(t[1], t[2]);
    open.triangles.pop_back();
    sliver.triangles.push_back({0, 0, 1});
    const std::string stl = "m.stl", head = "WARNING: \"m.stl\": ";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {Patched(box, {{0, 0, 0}, {0, 1, 0}, {0, 2, 0}}),
         "1 of 12 facets have a stored normal that is zero or not finite (/normalsfromwinding ignores them)"},
        {Patched(box, {{0, 2, 1}}), "1 of 12 facets have a stored normal more than 90 degrees from their winding's "
                                    "(/normalsfromwinding ignores them)"},
        {test::BinaryStl(insideOut), "12 of 12 facets wind inside out: the closed mesh encloses a negative volume"},
        {Patched(box, {{0, 3, NAN}}), "1 of 36 vertices are not finite"},
        {test::BinaryStl(sliver), "1 of 13 facets have zero area"},
        {test::BinaryStl(open), "3 open edges (used by one facet only) in 11 facets"},
        {test::BinaryStl(MakeBox(Eigen::Vector3f(10, 5, 5))),
         "a box diagonal of 12.2474 millimetres (unit inferred from the size) is implausible for a hand-held or "
         "head-worn device (20 mm to 2 m); /meshunit mm|cm|m|in sets the unit"}};
    for (const auto& [bytes, warning] : cases)
    {
        const TempDir dir;
        test::WriteFile(dir.File(stl), bytes);
        const test::CliResult result = RunKelvorig({"/verifycoverage", "1", "/outscad", "o.scad", "/sensors", stl}, dir.path());
        EXPECT_NE(result.err.find(head + warning + "\n"), std::string::npos) << result.err;
    }
    const TempDir dir;
    EXPECT_EQ(RunKelvorig({"/verifycoverage", "100", "/outscad", "o.scad", "/sensors", kShell}, dir.path()).err, "");
}

TEST(PlacementSwitches, RefusalsNameTheirCause)
{
    const TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 30, 20)));
    test::WriteBinaryStl(dir.File("big.stl"), MakeBox(Eigen::Vector3f(200, 200, 200)));
    TestMesh open = MakeBox(Eigen::Vector3f(10, 10, 10));
    open.triangles.pop_back();
    test::WriteBinaryStl(dir.File("open.stl"), open);
    TestMesh flat = open;
    for (Eigen::Vector3f& vertex : flat.vertices)
        vertex = Eigen::Vector3f(1, 2, 3);
    test::WriteBinaryStl(dir.File("flat.stl"), flat);
    const std::vector<std::string> coverage = {"/verifycoverage", "5", "/outscad", "o.scad", "/sensors", "box.stl"};
    const std::string none = " leaves no position on the sensor surface \"box.stl\" that can take a sensor.\n";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"/maxseatdepth", "-1"}, "/maxseatdepth -1: the depth must be 0 mm or more\n"},
        {{"/minsensorspacing", "-2"}, "/minsensorspacing -2: the spacing must be 0 mm or more\n"},
        {{"/meshunit", "ft"}, "/meshunit ft: the unit must be mm, cm, m or in\n"},
        {{"/keepout", "open.stl"}, "/keepout \"open.stl\" is not a closed mesh: 3 edges are used by one facet only\n"},
        {{"/obstacles", "big.stl", "/maxseatdepth", "5"}, "Error: /maxseatdepth 5" + none},
        {{"/keepout", "big.stl"}, "Error: /keepout" + none},
        {{"/generate", "/nsensors", "8", "/outmodel", "o.json", "/minsensorspacing", "500"},
         "Error: /minsensorspacing 500" + none}};
    for (const auto& [extra, message] : cases)
    {
        std::vector<std::string> arguments = extra[0] == "/generate" ? std::vector<std::string>{"/sensors", "box.stl"} : coverage;
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        const test::CliResult result = RunKelvorig(arguments, dir.path());
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, message);
    }
    // A surface left without a facet of finite area is not built.
    const test::CliResult unbuilt = RunKelvorig({"/verifycoverage", "5", "/outscad", "o.scad", "/sensors", "flat.stl"}, dir.path());
    EXPECT_EQ(unbuilt.status, 1);
    EXPECT_TRUE(unbuilt.err.ends_with("Could not build tracked surface from \"flat.stl\"\n")) << unbuilt.err;
}

TEST(PlacementSwitches, KeepOutEmptiesItsRegionAndIsDrawnTranslucent)
{
    const TempDir dir;
    // Flipped stored normals too: /normalsfromwinding reads the winding instead, silently.
    TestMesh box = MakeBox(Eigen::Vector3f(60, 60, 20));
    test::WriteFile(dir.File("box.stl"), Patched(box, {{0, 2, -1}, {5, 0, 0}, {5, 1, 0}, {5, 2, 0}}));
    test::WriteBinaryStl(dir.File("ko.stl"), MakeBox(Eigen::Vector3f(40, 70, 40), Eigen::Vector3f(20, 0, 0)));
    const test::CliResult result = RunKelvorig({"/verifycoverage", "400", "/outscad", "o.scad", "/sensors", "box.stl",
                                                "/keepout", "ko.stl", "/normalsfromwinding", "/meshunit", "cm"},
                                               dir.path());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    const std::string scad = test::ReadFile(dir.File("o.scad"));
    EXPECT_NE(scad.find("scale([10, 10, 10]) {\n\tcolor(\"orange\") import(\"box.stl\", convexity = 4);\n"
                        "\tcolor(\"red\", 0.3) import(\"ko.stl\", convexity = 4);\n}\n"),
              std::string::npos);
    const std::vector<test::ScadSeat> seats = test::ParseScadSeats(scad);
    ASSERT_EQ(seats.size(), 400u);
    for (const test::ScadSeat& seat : seats)
    {
        EXPECT_LT(seat.position.x(), 0.0f);                               // centimetres: 0.3 m wide
        EXPECT_GT(seat.normal.dot(seat.position.normalized()), 0.0f);  // outwards
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
    const test::CliResult result = RunKelvorig(
        {"/generate", "/nsensors", "16", "/sensors", kShell, "/outmodel", "o.json", "/maxseatdepth", "5", "/seed", "3",
         "/norientations", "200", "/niterations", "1", "/angleresolutiondegrees", "10"}, dir.path());
    ASSERT_EQ(result.status, 0) << result.err;
    TrackedObjectModel model;
    ASSERT_TRUE(ReadModel(dir.File("o.json"), model));
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    ASSERT_TRUE(ReadMeshMatrices(kShell, V, F, N));
    std::vector<std::array<double, 3>> corners;
    for (Eigen::Index row = 0; row < V.rows(); ++row)
        corners.push_back({0.001 * V(row, 0), 0.001 * V(row, 1), 0.001 * V(row, 2)});
    std::sort(corners.begin(), corners.end());
    corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
    std::vector<Eigen::Vector3d> points;
    for (const auto& [x, y, z] : corners)
        points.emplace_back(x, y, z);
    EXPECT_FALSE(OutsideHull(points, Eigen::Vector3d(0.0, 0.0, -0.02)));  // the check sees inside
    ASSERT_EQ(model.modelPoints.size(), 16u);
    for (size_t i = 0; i < 16; ++i)
    {
        const Eigen::Vector3d p = model.modelPoints[i].cast<double>(), n = model.modelNormals[i].cast<double>();
        EXPECT_TRUE(OutsideHull(points, p + 0.0051 * n)) << p.transpose();
    }
}

} // namespace
} // namespace kelvorig
