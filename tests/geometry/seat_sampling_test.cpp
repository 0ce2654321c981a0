#include "geometry/tracked_surface.h"

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
            EXPECT_NEAR(position.z(), half.z(), 1e-6f);
            EXPECT_TRUE(surface.CanSeatSensor(position, normal));
        }
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

TEST(SeatSamplingTest, SurfaceWithoutSeatsFails)
{
    // A 2 mm cube in metres: every point is within a chord of an edge.
    SurfaceFixture fixture(MakeBox(Eigen::Vector3f(0.002f, 0.002f, 0.002f)));
    const std::string message = "Error: no position on the sensor surface \"" + fixture.surface->surfacePath() +
                                "\" can take a sensor.\n";
    Eigen::Vector3f position;
    Eigen::Vector3f normal = Eigen::Vector3f::UnitZ();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(fixture.surface->SampleSeat(position, normal));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(fixture.surface->SampleSeatNear(position, normal, 0.5f));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
}

} // namespace
} // namespace kelvorig
