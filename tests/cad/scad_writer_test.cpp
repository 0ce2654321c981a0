#include "cad/scad_writer.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace kelvorig {
namespace {

// The fixed parts of a drawing and the rows of a model are in the command-line table; bare seats
// are numbered by row, a seat without a normal points along +Z, positions keep six digits.
TEST(WriteScadFile, BareSeatsAreNumberedByRow)
{
    TrackedObjectModel seats;
    seats.modelPoints = {{0.0123456789f, -0.05f, 0}, {0, 0.2f, 0}};
    seats.modelNormals = {{1, 0, 0}};
    const std::string text = WriteScadFile(seats, "", {}, 1.0, false);
    EXPECT_NE(text.find("sensors = [\n\t[ [ 0, \"lime\" ], [ 0.0123457, -0.05, 0], -90, [0, -1, 0] ],\n"
                        "\t[ [ 1, \"lime\" ], [ 0, 0.2, 0], -0, [1, 0, 0] ],\n];\n"),
              std::string::npos)
        << text;
}

TEST(WriteScadFile, BackslashesInImportPathsAreDoubledSlashesKept)
{
    // One helper writes every import line; their order and colours are in the command-line table.
    const std::string text = WriteScadFile(TrackedObjectModel(), "../x\\\\y.stl", {}, 1.0, false);
    EXPECT_NE(text.find("\tcolor(\"orange\") import(\"../x\\\\\\\\y.stl\", convexity = 4);\n"), std::string::npos);
}

TEST(RotationText, TurnsZOntoTheNormal)
{
    // Other normals are in the command-line table's drawings.
    EXPECT_EQ(RotationText({0, 0, -1}), "-180, [1, 0, 0]");
    // Within the cut-off the axis is X whatever the tilt's direction.
    EXPECT_EQ(RotationText({0.01f, 0, 0.99995f}), "-0.573008, [1, 0, 0]");

    // A general normal: the angle is its tilt off +Z, the axis n x Z = (ny, -nx, 0) normalised.
    const Eigen::Vector3f normal = Eigen::Vector3f(0.3f, -0.4f, 0.5f).normalized();
    const std::string text = RotationText(normal);
    EXPECT_NEAR(-std::stod(text), std::acos(static_cast<double>(normal.z())) * 180.0 / 3.141592653589793, 1e-3);
    EXPECT_NE(text.find("[-0.8, -0.6, 0]"), std::string::npos) << text;
}

// OpenSCAD itself reads a drawing with normals and both kinds of mesh.
TEST(WriteScadFile, OpenScadAcceptsTheDrawing)
{
    if (std::system("command -v openscad > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "openscad is not on PATH";
    const test::TempDir dir;
    test::WriteFile(dir.File("m.json"), R"({"channelMap": [3, -1], "modelPoints": [[0.01, -0.02, 0.045], [0.09, 0, 0]],
        "modelNormals": [[0, 0, 1], [2, 0, 0]]})");
    test::WriteBinaryStl(dir.File("shell.stl"), test::MakeBox(Eigen::Vector3f(180, 110, 90)));
    test::WriteFile(dir.File("strap.stl"), test::TextStl(test::MakeBox({20, 20, 20}, {0, 0, -80})));
    const test::CliResult run = test::RunKelvorig({"/model", "m.json", "/sensors", "shell.stl", "/obstacles",
                                                   "strap.stl", "/outscad", "m.scad", "/withscadnormals"},
                                                  dir.path());
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(std::system(("cd '" + dir.path() + "' && openscad -o out.csg m.scad > log 2>&1").c_str()), 0)
        << test::ReadFile(dir.File("log"));
}

} // namespace
} // namespace kelvorig
