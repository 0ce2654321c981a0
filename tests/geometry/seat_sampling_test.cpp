#include "geometry/tracked_surface.h"

#include "geometry/angles.h"
#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::TempDir;
using test::TestMesh;
using test::WriteBinaryStl;
using test::WriteFile;

constexpr uint32_t kSeed = 99;

// A surface built from meshes given in code; keeps its files for its lifetime.
class SurfaceFixture
{
public:
    explicit SurfaceFixture(const TestMesh& mesh, const std::vector<TestMesh>& obstacles = {})
    {
        WriteBinaryStl(dir.File("surface.stl"), mesh);
        std::vector<std::string> paths;
        for (size_t i = 0; i < obstacles.size(); ++i)
        {
            paths.push_back(dir.File("obstacle" + std::to_string(i) + ".stl"));
            WriteBinaryStl(paths.back(), obstacles[i]);
        }
        surface = std::make_unique<TrackedSurface>(dir.File("surface.stl"), paths, kSeed);
    }

    TempDir dir;
    std::unique_ptr<TrackedSurface> surface;
};

// Which face of an axis-aligned box centred on the origin a point lies on: the axis
// whose coordinate is at the half size.
int FaceAxis(const Eigen::Vector3f& p, const Eigen::Vector3f& half)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        if (std::abs(std::abs(p[axis]) - half[axis]) < 1e-6f)
            return axis;
    }
    return -1;
}

TEST(SeatSamplingTest, MaxSurfaceAngleIsStoredAsItsCosine)
{
    SurfaceFixture fixture(MakeBox(Eigen::Vector3f(1, 1, 1)));
    TrackedSurface& surface = *fixture.surface;
    const struct
    {
        double degrees;
        float cosine;
    } cases[] = {
        {0.0, 1.0f},
        {180.0, -1.0f},
        {60.0, static_cast<float>(std::cos(DegreesToRadians(60.0)))},
        {-30.0, static_cast<float>(std::cos(DegreesToRadians(30.0)))},
        {90.0, static_cast<float>(std::cos(DegreesToRadians(90.0)))},
    };
    for (const auto& c : cases)
    {
        surface.SetMaxSurfaceAngle(c.degrees);
        EXPECT_EQ(surface.cosMaxSurfaceAngle(), c.cosine) << c.degrees;
    }
}

TEST(SeatSamplingTest, PickTriangleFollowsTheArea)
{
    // Areas 1, 0 and 3; the degenerate facet must never be drawn.
    const TestMesh small = test::MakeTriangle(Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(1, 0, 0), Eigen::Vector3f(0, 2, 0));
    const TestMesh flat = test::MakeTriangle(Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(1, 0, 1), Eigen::Vector3f(2, 0, 1));
    const TestMesh large = test::MakeTriangle(Eigen::Vector3f(0, 0, 2), Eigen::Vector3f(3, 0, 2), Eigen::Vector3f(0, 2, 2));
    SurfaceFixture fixture(test::Combine(test::Combine(small, flat), large));
    TrackedSurface& surface = *fixture.surface;
    ASSERT_EQ(surface.totalArea(), 4.0);
    int counts[3] = {0, 0, 0};
    constexpr int kPicks = 40000;
    for (int i = 0; i < kPicks; ++i)
        ++counts[surface.PickTriangle()];
    EXPECT_EQ(counts[1], 0);
    EXPECT_NEAR(counts[2] / static_cast<double>(kPicks), 0.75, 0.015);
}

TEST(SeatSamplingTest, SamplePointIsUniformInsideTheFacet)
{
    const Eigen::Vector3f p0(0.1f, 0.2f, 0.3f);
    const Eigen::Vector3f p1(1.1f, 0.2f, 0.5f);
    const Eigen::Vector3f p2(0.3f, 1.4f, 0.1f);
    SurfaceFixture fixture(test::MakeTriangle(p0, p1, p2));
    TrackedSurface& surface = *fixture.surface;
    // The same words, folded by hand: a first, then b.
    RandomEngine engine(kSeed);
    Eigen::Vector3f mean = Eigen::Vector3f::Zero();
    constexpr int kPoints = 20000;
    for (int i = 0; i < kPoints; ++i)
    {
        float a = DrawRange(engine, 0.0f, 1.0f);
        float b = DrawRange(engine, 0.0f, 1.0f);
        if (a + b >= 1.0f)
        {
            a = 1.0f - a;
            b = 1.0f - b;
        }
        const Eigen::Vector3f point = surface.SamplePoint(0);
        ASSERT_EQ(point, p0 + a * (p1 - p0) + b * (p2 - p0));
        mean += point;
    }
    const Eigen::Vector3f centroid = (p0 + p1 + p2) / 3.0f;
    EXPECT_LT((mean / kPoints - centroid).norm(), 0.01f);
}

TEST(SeatSamplingTest, SampleNormalWithoutTiltIsTheFacetNormalAndDrawsNothing)
{
    SurfaceFixture plain(MakeBox(Eigen::Vector3f(1, 1, 1)));
    SurfaceFixture twin(MakeBox(Eigen::Vector3f(1, 1, 1)));
    for (int32_t t = 0; t < 12; ++t)
    {
        EXPECT_EQ(plain.surface->SampleNormal(t), Eigen::Vector3f(plain.surface->faceNormals().row(t).transpose()));
        EXPECT_EQ(plain.surface->PickTriangle(), twin.surface->PickTriangle()) << "no word was drawn";
    }
}

TEST(SeatSamplingTest, TiltedNormalsFillTheCapAndTakeTwoDraws)
{
    SurfaceFixture tilted(MakeBox(Eigen::Vector3f(1, 1, 1)));
    SurfaceFixture twin(MakeBox(Eigen::Vector3f(1, 1, 1)));
    tilted.surface->SetMaxSurfaceAngle(40.0);
    const float cosMax = tilted.surface->cosMaxSurfaceAngle();
    double sumCosine = 0.0;
    constexpr int kNormals = 4000;
    for (int i = 0; i < kNormals; ++i)
    {
        const int32_t t = i % 12;
        const Eigen::Vector3f facetNormal = tilted.surface->faceNormals().row(t).transpose();
        const Eigen::Vector3f normal = tilted.surface->SampleNormal(t);
        EXPECT_NEAR(normal.norm(), 1.0f, 1e-6f);
        const float cosine = normal.dot(facetNormal);
        EXPECT_GE(cosine, cosMax - 1e-6f);
        sumCosine += cosine;
        twin.surface->SamplePoint(0);  // two words
    }
    EXPECT_EQ(tilted.surface->PickTriangle(), twin.surface->PickTriangle());
    // The cosine is uniform between cosMax and 1.
    EXPECT_NEAR(sumCosine / kNormals, 0.5 * (1.0 + cosMax), 0.01);
}

TEST(SeatSamplingTest, TiltFrameTakesTheReferenceAxisAwayFromTheNormal)
{
    // One facet with the normal (1, 0, 0) and one with (0, 0, 1), as the file states them.
    const TempDir dir;
    WriteFile(dir.File("two.stl"),
              "solid t\nfacet normal 1 0 0\nouter loop\nvertex 0 0 0\nvertex 0 1 0\nvertex 0 0 1\nendloop\nendfacet\n"
              "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\nendsolid t\n");
    TrackedSurface surface(dir.File("two.stl"), {}, kSeed);
    surface.SetMaxSurfaceAngle(90.0);
    RandomEngine engine(kSeed);
    // n = x: reference y, e1 = y cross x = -z, e2 = e1 cross x = -y.
    // n = z: reference x, e1 = x cross z = -y, e2 = e1 cross z = -x.
    const struct
    {
        int32_t triangle;
        Eigen::Vector3f e1;
        Eigen::Vector3f e2;
    } cases[] = {{0, -Eigen::Vector3f::UnitZ(), -Eigen::Vector3f::UnitY()},
                 {1, -Eigen::Vector3f::UnitY(), -Eigen::Vector3f::UnitX()}};
    for (const auto& c : cases)
    {
        const float r1 = DrawRange(engine, 0.0f, 1.0f);
        const float r2 = DrawRange(engine, 0.0f, 1.0f);
        const double phi = r2 * kFullTurn;
        const double s = std::sqrt(1.0 - static_cast<double>(r1) * r1);
        const Eigen::Vector3f n = surface.faceNormals().row(c.triangle).transpose();
        const Eigen::Vector3f expected =
            (c.e1 * static_cast<float>(s * std::cos(phi)) + c.e2 * static_cast<float>(s * std::sin(phi)) + n * r1)
                .normalized();
        const Eigen::Vector3f normal = surface.SampleNormal(c.triangle);
        EXPECT_LT((normal - expected).norm(), 1e-5f) << c.triangle;
    }
}

TEST(SeatSamplingTest, CanSeatSensorNeedsAFlatSolidPatch)
{
    // Millimetre meshes; positions in metres.
    SurfaceFixture plate(test::MakePlate(10, 2));
    EXPECT_TRUE(plate.surface->CanSeatSensor(Eigen::Vector3f::Zero(), Eigen::Vector3f::UnitZ()));

    SurfaceFixture box(MakeBox(Eigen::Vector3f(20, 20, 20)));
    const Eigen::Vector3f up = Eigen::Vector3f::UnitZ();
    EXPECT_FALSE(box.surface->CanSeatSensor(Eigen::Vector3f(0.008f, 0, 0.01f), up)) << "2 mm from the edge";
    EXPECT_FALSE(box.surface->CanSeatSensor(Eigen::Vector3f(0, -0.008f, 0.01f), up)) << "2 mm from the edge";
    EXPECT_TRUE(box.surface->CanSeatSensor(Eigen::Vector3f(0.006f, 0, 0.01f), up)) << "4 mm from the edge";
    EXPECT_TRUE(box.surface->CanSeatSensor(Eigen::Vector3f(0.006f, 0.006f, 0.01f), up)) << "4 mm from both edges";
    EXPECT_TRUE(box.surface->CanSeatSensor(Eigen::Vector3f(0.01f, 0, 0), Eigen::Vector3f::UnitX()));
    EXPECT_FALSE(box.surface->CanSeatSensor(Eigen::Vector3f(0.01f, 0.0085f, 0), Eigen::Vector3f::UnitX()));

    // A plate thinner than the chords' depth can't be seen by the test: the disc lies under it.
    SurfaceFixture thin(test::MakePlate(20, 0.5f));
    EXPECT_TRUE(thin.surface->CanSeatSensor(Eigen::Vector3f(0.009f, 0, 0), up));
}

TEST(SeatSamplingTest, ObstaclesCrossingTheDiscRefuseTheSeat)
{
    const TestMesh plate = MakeBox(Eigen::Vector3f(20, 20, 4), Eigen::Vector3f(0, 0, -2));
    // A pin through the plate, 2 mm beside the seat.
    const TestMesh pin = MakeBox(Eigen::Vector3f(0.5f, 0.5f, 10), Eigen::Vector3f(2, 0, 0));
    SurfaceFixture bare(plate);
    SurfaceFixture pinned(plate, {pin});
    EXPECT_TRUE(bare.surface->CanSeatSensor(Eigen::Vector3f::Zero(), Eigen::Vector3f::UnitZ()));
    EXPECT_FALSE(pinned.surface->CanSeatSensor(Eigen::Vector3f::Zero(), Eigen::Vector3f::UnitZ()));
}

TEST(SeatSamplingTest, SampleSeatLandsOnFacesClearOfTheirEdges)
{
    const Eigen::Vector3f size(40, 30, 20);
    SurfaceFixture fixture(MakeBox(size));
    const Eigen::Vector3f half = 0.0005f * size;
    const float clearance = 0.003f - 1e-6f;
    for (int i = 0; i < 2000; ++i)
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        ASSERT_TRUE(fixture.surface->SampleSeat(position, normal));
        const int axis = FaceAxis(position, half);
        ASSERT_GE(axis, 0) << position.transpose();
        EXPECT_EQ(normal, std::copysign(1.0f, position[axis]) * Eigen::Vector3f::Unit(axis));
        for (int other = 0; other < 3; ++other)
        {
            if (other != axis)
            {
                EXPECT_LE(std::abs(position[other]), half[other] - clearance) << position.transpose();
            }
        }
    }
}

TEST(SeatSamplingTest, SampleSeatKeepsTheTiltedNormal)
{
    SurfaceFixture fixture(MakeBox(Eigen::Vector3f(40, 40, 40)));
    fixture.surface->SetMaxSurfaceAngle(30.0);
    const float cosMax = fixture.surface->cosMaxSurfaceAngle();
    int tilted = 0;
    for (int i = 0; i < 500; ++i)
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        fixture.surface->SampleSeat(position, normal);
        const int axis = FaceAxis(position, Eigen::Vector3f::Constant(0.02f));
        ASSERT_GE(axis, 0);
        const float cosine = std::abs(normal[axis]);
        EXPECT_GE(cosine, cosMax - 1e-6f);
        tilted += cosine < 0.999f ? 1 : 0;
    }
    EXPECT_GT(tilted, 400);
}

TEST(SeatSamplingTest, SampleSeatNearPrefersTheWantedNormal)
{
    // A 4 mm slab: only its top and bottom faces can take a seat.
    const Eigen::Vector3f size(60, 60, 4);
    const Eigen::Vector3f half = 0.0005f * size;
    const Eigen::Vector3f up = Eigen::Vector3f::UnitZ();
    SurfaceFixture fixture(MakeBox(size));
    TrackedSurface& surface = *fixture.surface;
    for (float threshold : {0.5f, 1.0f, 1.5f})
    {
        for (int i = 0; i < 50; ++i)
        {
            Eigen::Vector3f position;
            Eigen::Vector3f normal = up;
            ASSERT_TRUE(surface.SampleSeatNear(position, normal, threshold));
            // Above the threshold the first such seat wins; at or above 1 the best of 20,
            // which is on the top face unless all 20 fell on the bottom.
            EXPECT_EQ(normal, up) << threshold;
            EXPECT_EQ(FaceAxis(position, half), 2) << threshold;
            EXPECT_NEAR(position.z(), half.z(), 1e-6f);
            EXPECT_TRUE(surface.CanSeatSensor(position, normal));
        }
    }
}

TEST(SeatSamplingTest, SampleSeatNearBelowMinusOneTakesTheFirstSeat)
{
    SurfaceFixture near(MakeBox(Eigen::Vector3f(30, 20, 10)));
    SurfaceFixture plain(MakeBox(Eigen::Vector3f(30, 20, 10)));
    for (int i = 0; i < 200; ++i)
    {
        Eigen::Vector3f nearPosition;
        Eigen::Vector3f nearNormal = Eigen::Vector3f::UnitX();
        near.surface->SampleSeatNear(nearPosition, nearNormal, -1.5f);
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        plain.surface->SampleSeat(position, normal);
        // Without tilt both draw the same words in the same order.
        EXPECT_EQ(nearPosition, position);
        EXPECT_EQ(nearNormal, normal);
    }
}

TEST(SeatSamplingTest, FacetWithAZeroNormalStillTakesSeats)
{
    // Two open 100 mm facets; the upper one states a zero normal.
    const TempDir dir;
    WriteFile(dir.File("zero.stl"),
              "solid z\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 100 0 0\nvertex 0 100 0\nendloop\nendfacet\n"
              "facet normal 0 0 0\nouter loop\nvertex 0 0 50\nvertex 100 0 50\nvertex 0 100 50\nendloop\nendfacet\n"
              "endsolid z\n");
    TrackedSurface surface(dir.File("zero.stl"), {}, kSeed);
    int notANumber = 0;
    for (int i = 0; i < 200; ++i)
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        ASSERT_TRUE(surface.SampleSeat(position, normal));
        if (std::isnan(normal.x()))
        {
            ++notANumber;
            EXPECT_FLOAT_EQ(position.z(), 0.05f);
        }
        else
        {
            EXPECT_EQ(normal, Eigen::Vector3f::UnitZ());
        }
    }
    EXPECT_GT(notANumber, 50);
    EXPECT_LT(notANumber, 150);
    // It can spend the budget of a near seat but never be its best.
    for (int i = 0; i < 50; ++i)
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal = Eigen::Vector3f::UnitZ();
        ASSERT_TRUE(surface.SampleSeatNear(position, normal, 2.0f));
        EXPECT_EQ(normal, Eigen::Vector3f::UnitZ());
        EXPECT_EQ(position.z(), 0.0f);
    }
}

TEST(SeatSamplingTest, IsOnSensorSurfaceLooksAboveAndBelow)
{
    // A 40 mm box with a 5 mm slot cut over part of its top: a roof 6 mm above the top face.
    const TestMesh box = MakeBox(Eigen::Vector3f(40, 40, 40));
    const TestMesh roof = MakeBox(Eigen::Vector3f(10, 10, 2), Eigen::Vector3f(-10, 0, 27));
    SurfaceFixture fixture(box, {roof});
    const TrackedSurface& surface = *fixture.surface;
    const Eigen::Vector3f up = Eigen::Vector3f::UnitZ();
    const struct
    {
        Eigen::Vector3f position;
        Eigen::Vector3f normal;
        bool on;
    } cases[] = {
        {{0.01f, 0, 0.02f}, up, true},
        {{0.01f, 0, 0.0235f}, up, true},       // standing off by 3.5 mm
        {{0.01f, 0, 0.0245f}, up, false},      // standing off by 4.5 mm
        {{0.01f, 0, 0.0192f}, up, true},       // sunk by 0.8 mm
        {{0.01f, 0, 0.019f}, up, false},       // sunk by 1 mm: the lifted origin is inside
        {{0.01f, 0, 0.02f}, -up, true},        // pointing into a solid thicker than 11 mm
        {{-0.01f, 0, 0.02f}, up, false},       // under the roof
        {{0.02f, 0.005f, 0.0f}, Eigen::Vector3f::UnitX(), true},
    };
    for (const auto& c : cases)
        EXPECT_EQ(surface.IsOnSensorSurface(c.position, c.normal), c.on) << c.position.transpose();
}

TEST(SeatSamplingDeathTest, SurfaceWithoutSeatsEndsTheRun)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // A 2 mm cube in metres: every point is within a chord of an edge.
    SurfaceFixture fixture(MakeBox(Eigen::Vector3f(0.002f, 0.002f, 0.002f)));
    const std::string message = "^Error: no position on the sensor surface \".*/surface.stl\" can take a sensor.\n$";
    Eigen::Vector3f position;
    Eigen::Vector3f normal = Eigen::Vector3f::UnitZ();
    EXPECT_EXIT(fixture.surface->SampleSeat(position, normal), testing::ExitedWithCode(1), message);
    EXPECT_EXIT(fixture.surface->SampleSeatNear(position, normal, 0.5f), testing::ExitedWithCode(1),
                message);
}

} // namespace
} // namespace kelvorig
