#include "geometry/tracked_surface.h"

#include "support/cli_runner.h"
#include "support/mesh_surface.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::MeshSurface;

const Eigen::Vector3f kUp = Eigen::Vector3f::UnitZ();

// Tilted normals fill the cap uniformly in cosine and take two draws, as a point does.
TEST(SeatSampling, TiltedNormalsFillTheCapAndTakeTwoDraws)
{
    MeshSurface tilted(MakeBox(Eigen::Vector3f(1, 1, 1)), 99), twin(MakeBox(Eigen::Vector3f(1, 1, 1)), 99);
    tilted.surface().SetMaxSurfaceAngle(40.0);
    const float cosMax = tilted.surface().cosMaxSurfaceAngle();
    double sumCosine = 0.0;
    for (int i = 0; i < 4000; ++i)
    {
        const Eigen::Vector3f normal = tilted.surface().SampleNormal(i % 12);
        const float cosine = normal.dot(tilted.surface().faceNormals().row(i % 12));
        EXPECT_NEAR(normal.norm(), 1.0f, 1e-6f);
        EXPECT_GE(cosine, cosMax - 1e-6f);
        sumCosine += cosine;
        twin.surface().SamplePoint(0);
    }
    EXPECT_EQ(tilted.surface().PickTriangle(), twin.surface().PickTriangle());
    EXPECT_NEAR(sumCosine / 4000, 0.5 * (1.0 + cosMax), 0.01);
}

// A seat needs a flat solid patch 3 mm around; a plate thinner than the chords' depth can't
// be seen by the test. Millimetre meshes, positions in metres.
TEST(SeatSampling, CanSeatSensorNeedsAFlatSolidPatch)
{
    MeshSurface plate(test::MakePlate(10, 2)), box(MakeBox(Eigen::Vector3f(20, 20, 20))),
        thin(test::MakePlate(20, 0.5f));
    const struct
    {
        MeshSurface& mesh;
        Eigen::Vector3f position, normal;
        bool seats;
    } cases[] = {{plate, {0, 0, 0}, kUp, true},         {thin, {0.009f, 0, 0}, kUp, true},
                 {box, {0.008f, 0, 0.01f}, kUp, false}, {box, {0, -0.008f, 0.01f}, kUp, false},
                 {box, {0.006f, 0, 0.01f}, kUp, true},  {box, {0.006f, 0.006f, 0.01f}, kUp, true},
                 {box, {0.01f, 0, 0}, {1, 0, 0}, true}, {box, {0.01f, 0.0085f, 0}, {1, 0, 0}, false}};
    for (const auto& c : cases)
        EXPECT_EQ(c.mesh.surface().CanSeatSensor(c.position, c.normal), c.seats) << c.position.transpose();
}

// On a 4 mm slab only top and bottom take seats; a seat near +Z lands on the top at any
// threshold (the first such seat above it, the best of 20 from 1 on).
TEST(SeatSampling, SampleSeatNearPrefersTheWantedNormal)
{
    MeshSurface slab(MakeBox(Eigen::Vector3f(60, 60, 4)));
    for (float threshold : {0.5f, 1.0f, 1.5f})
        for (int i = 0; i < 50; ++i)
        {
            Eigen::Vector3f position, normal = kUp;
            ASSERT_TRUE(slab.surface().SampleSeatNear(position, normal, threshold));
            EXPECT_EQ(normal, kUp) << threshold;
            EXPECT_NEAR(position.z(), 0.002f, 1e-6f);
            EXPECT_TRUE(slab.surface().CanSeatSensor(position, normal));
        }
}

// A 40 mm box with a roof 6 mm above part of its top: a point is on the surface within 4 mm
// above or 1 mm below, and not under the roof.
TEST(SeatSampling, IsOnSensorSurfaceLooksAboveAndBelow)
{
    test::TempDir dir;
    test::WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(40, 40, 40)));
    test::WriteBinaryStl(dir.File("roof.stl"), MakeBox(Eigen::Vector3f(10, 10, 2), Eigen::Vector3f(-10, 0, 27)));
    const TrackedSurface surface(dir.File("box.stl"), {dir.File("roof.stl")}, 99);
    const struct
    {
        Eigen::Vector3f position, normal;
        bool on;
    } cases[] = {
        {{0.01f, 0, 0.02f}, kUp, true},   {{0.01f, 0, 0.0235f}, kUp, true},         {{0.01f, 0, 0.0245f}, kUp, false},
        {{0.01f, 0, 0.0192f}, kUp, true}, {{0.01f, 0, 0.019f}, kUp, false},         {{0.01f, 0, 0.02f}, -kUp, true},
        {{-0.01f, 0, 0.02f}, kUp, false}, {{0.02f, 0.005f, 0.0f}, {1, 0, 0}, true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(surface.IsOnSensorSurface(c.position, c.normal), c.on) << c.position.transpose();
}

// Without any seat the search for a seat near a normal ends, with the message the command-line
// table shows for the plain search.
TEST(SeatSampling, SurfaceWithoutSeatsFails)
{
    MeshSurface tiny(MakeBox(Eigen::Vector3f(0.002f, 0.002f, 0.002f)));
    Eigen::Vector3f position, normal = kUp;
    EXPECT_EQ(tiny.surface().SampleSeatNear(position, normal, 0.5f).message(),
              "Error: no position on the sensor surface \"" + tiny.surface().surfacePath() +
                  "\" can take a sensor.\n  No facet has room for a sensor's 6 mm disc with nothing in the way: is the "
                  "mesh in the unit "
                  "it is read in (see its line above)?\n");
}

// A 60 mm cube broken as real files are (wound inside out, its stored normals negated or
// zeroed, a corner not a number): every seat drawn still faces out of it.
TEST(SeatSampling, BrokenCubesStillSeatFacingOut)
{
    const test::TestMesh box = MakeBox(Eigen::Vector3f(60, 60, 60));
    // Every stored normal negated or zeroed, or one corner of facet 3 not a number.
    const auto patched = [&box](float normalFactor, bool cornerNotANumber)
    {
        std::string bytes = test::BinaryStl(box);
        for (size_t f = 0; f < 12; ++f)
            for (size_t k = 0; k < 3; ++k)
                test::PatchStlFloat(bytes, f, k, normalFactor * box.FacetNormal(f)[int(k)]);
        if (cornerNotANumber)
            test::PatchStlFloat(bytes, 3, 4, NAN);
        return bytes;
    };
    test::TestMesh insideOut = box;
    for (std::array<int, 3>& t : insideOut.triangles)
        std::swap(t[1], t[2]);
    for (const std::string& bytes :
         {test::BinaryStl(insideOut), patched(-1, false), patched(0, false), patched(1, true)})
    {
        const test::TempDir dir;
        test::WriteFile(dir.File("cube.stl"), bytes);
        TrackedSurface cube(dir.File("cube.stl"), {}, 5u);
        ASSERT_TRUE(cube.isBuilt());
        EXPECT_NE(cube.warnings(), "");
        for (int i = 0; i < 200; ++i)
        {
            Eigen::Vector3f position, normal;
            ASSERT_TRUE(cube.SampleSeat(position, normal));
            EXPECT_GT(normal.dot(position), 0.0f) << position.transpose() << " / " << normal.transpose();
        }
    }
}

} // namespace
} // namespace kelvorig
