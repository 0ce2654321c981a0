#include "quality/pose_solvability.h"

#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// Eight sensors: 0 to 3 on the plane z = 0, 4 to 7 on z = 0.05.
SensorLayout TwoSquares()
{
    std::vector<Eigen::Vector3f> points;
    for (float z : {0.0f, 0.05f})
        for (const auto& [x, y] : {std::pair{0.0f, 0.0f}, {0.1f, 0.0f}, {0.0f, 0.1f}, {0.1f, 0.1f}})
            points.emplace_back(x, y, z);
    return test::MakeLayout(points, std::vector<Eigen::Vector3f>(8, {0, 0, 1}));
}

std::vector<SweepHit> BothAxes(const std::vector<int32_t>& ids)
{
    std::vector<SweepHit> hits;
    for (const int32_t id : ids)
        hits.insert(hits.end(), {{id, 0}, {id, 1}});
    return hits;
}

// Enough hits are four per axis and eight in all; the geometry needs, on each axis, four
// sensors off one plane.
TEST(PoseSolvability, HitsAndGeometry)
{
    const SensorLayout layout = TwoSquares();
    const struct
    {
        std::vector<SweepHit> hits;
        bool enough;
        bool solvable;
    } cases[] = {
        {BothAxes({0, 1, 2, 4}), true, true},
        {BothAxes({0, 1, 2}), false, false},
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {5, 0}, {0, 1}, {1, 1}, {2, 1}}, false, false},
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {0, 1}, {1, 1}, {2, 1}, {5, 1}}, true, true},
        {{}, false, false},
        {BothAxes({0, 1, 2, 3}), true, false}, // coplanar
        {BothAxes({0, 1, 2, 3, 4, 5, 6, 7}), true, true},
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {3, 1}, {5, 1}, {6, 1}, {7, 1}}, true, true},  // axes apart
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {0, 1}, {1, 1}, {2, 1}, {3, 1}}, true, false}, // axis 1 planar
    };
    for (const auto& c : cases)
    {
        PoseSolvability solvability(layout, c.hits);
        EXPECT_EQ(solvability.HasEnoughHits(), c.enough) << &c - cases;
        EXPECT_EQ(solvability.IsGeometrySolvable(), c.solvable) << &c - cases;
    }
}

// A fourth sensor closer to the plane than the smallest feature doesn't count as off it.
TEST(PoseSolvability, MinFeatureSizeSetsTheThreshold)
{
    const SensorLayout layout = test::MakeLayout({{0, 0, 0}, {0.1f, 0, 0}, {0, 0.1f, 0}, {0.1f, 0.1f, 0.008f}},
                                                 std::vector<Eigen::Vector3f>(4, {0, 0, 1}));
    const std::vector<SweepHit> none;
    PoseSolvability solvability(layout, none);
    EXPECT_FALSE(solvability.FindNonPlanarSet({0, 1, 2, 3}));
    solvability.minFeatureSize = 0.005;
    EXPECT_TRUE(solvability.FindNonPlanarSet({0, 1, 2, 3}));
}

} // namespace
} // namespace kelvorig
