#include "geometry/tracked_surface.h"

#include "support/cli_runner.h"
#include "support/test_meshes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeBox;
using test::TempDir;
using test::WriteBinaryStl;

constexpr uint32_t kSeed = 1234;

TEST(TrackedSurfaceTest, MillimetreBoxIsScaledToMetres)
{
    TempDir dir;
    WriteBinaryStl(dir.File("box.stl"), MakeBox(Eigen::Vector3f(100, 60, 40)));
    TrackedSurface surface(dir.File("box.stl"), {}, kSeed);
    ASSERT_TRUE(surface.isBuilt());
    EXPECT_EQ(surface.unitScale(), 0.001);
    EXPECT_EQ(surface.triangles().rows(), 12);
    EXPECT_EQ(surface.vertices().rows(), 36);
    EXPECT_NEAR(surface.totalArea(), 2 * (0.1 * 0.06 + 0.1 * 0.04 + 0.06 * 0.04), 1e-8);
    EXPECT_TRUE(surface.intersector().isInitialised());
}

} // namespace
} // namespace kelvorig
