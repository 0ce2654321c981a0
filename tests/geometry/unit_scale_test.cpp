#include "geometry/unit_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvorig {
namespace {

VertexMatrix Corners(const Eigen::Vector3f& low, const Eigen::Vector3f& high)
{
    VertexMatrix V(3, 3);
    V.row(0) = low.transpose();
    V.row(1) = high.transpose();
    V.row(2) = (0.5f * (low + high)).transpose();
    return V;
}

TEST(UnitScaleTest, DiagonalIsThatOfTheBoundingBox)
{
    EXPECT_EQ(MeshExtentDiagonal(Corners(Eigen::Vector3f(-1, -2, 0), Eigen::Vector3f(2, 2, 12))), 13.0f);
    EXPECT_EQ(MeshExtentDiagonal(Corners(Eigen::Vector3f(5, 5, 5), Eigen::Vector3f(5, 5, 5))), 0.0f);
}

TEST(UnitScaleTest, DiagonalsUnderFiveAreMetres)
{
    const struct
    {
        float diagonal;
        double scale;
    } cases[] = {
        {0.0f, 1.0},
        {1.2f, 1.0},
        {4.9999995f, 1.0},
        {5.0f, 0.001},
        {5.0000005f, 0.001},
        {1200.0f, 0.001},
        {std::numeric_limits<float>::quiet_NaN(), 0.001},
        {std::numeric_limits<float>::infinity(), 0.001},
    };
    for (const auto& c : cases)
        EXPECT_EQ(InferUnitScale(c.diagonal), c.scale) << c.diagonal;
}

TEST(UnitScaleTest, TheDiagonalAndNotTheLongestSideDecides)
{
    // Longest side 4, diagonal sqrt(48) > 5: millimetres.
    const float diagonal = MeshExtentDiagonal(Corners(Eigen::Vector3f::Zero(), Eigen::Vector3f(4, 4, 4)));
    EXPECT_FLOAT_EQ(diagonal, std::sqrt(48.0f));
    EXPECT_EQ(InferUnitScale(diagonal), 0.001);
}

} // namespace
} // namespace kelvorig
