#include "geometry/unit_scale.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvorig {
namespace {

// Bounding-box diagonals under five are metres; the diagonal and not the longest side decides.
TEST(UnitScale, BoundingBoxDiagonalsUnderFiveAreMetres)
{
    VertexMatrix V(3, 3);
    V << -1, -2, 0, 2, 2, 12, 0, 0, 0;
    EXPECT_EQ(MeshExtentDiagonal(V), 13.0f);
    V << 0, 0, 0, 4, 4, 4, 2, 2, 2;
    EXPECT_EQ(InferUnitScale(MeshExtentDiagonal(V)), 0.001);
    for (const auto& [diagonal, scale] : {std::pair{0.0f, 1.0}, {1.2f, 1.0}, {4.9999995f, 1.0}, {5.0f, 0.001},
                                          {5.0000005f, 0.001}, {1200.0f, 0.001}, {std::numeric_limits<float>::quiet_NaN(), 0.001}})
        EXPECT_EQ(InferUnitScale(diagonal), scale) << diagonal;
}

} // namespace
} // namespace kelvorig
