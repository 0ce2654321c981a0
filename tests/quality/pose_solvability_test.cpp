#include "quality/pose_solvability.h"

#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>


namespace kelvorig {
namespace {

using test::MakeLayout;

// Eight sensors: 0 to 3 on the plane z = 0, 4 to 7 on z = 0.05.
SensorLayout TwoSquares()
{
    std::vector<Eigen::Vector3f> points, normals;
    for (float z : {0.0f, 0.05f})
    {
        for (const auto& [x, y] : {std::pair{0.0f, 0.0f}, {0.1f, 0.0f}, {0.0f, 0.1f}, {0.1f, 0.1f}})
        {
            points.emplace_back(x, y, z);
            normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    }
    return MakeLayout(points, normals);
}

std::vector<SweepHit> BothAxes(const std::vector<int32_t>& ids)
{
    std::vector<SweepHit> hits;
    for (const int32_t id : ids)
    {
        hits.push_back({id, 0});
        hits.push_back({id, 1});
    }
    return hits;
}

TEST(PoseSolvability, EnoughHitsNeedsFourPerAxisAndEightInAll)
{
    const SensorLayout layout = TwoSquares();
    struct Case
    {
        std::vector<SweepHit> hits;
        bool enough;
    } cases[] = {
        {BothAxes({0, 1, 2, 4}), true},
        {BothAxes({0, 1, 2}), false},
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {5, 0}, {0, 1}, {1, 1}, {2, 1}}, false},
        {{{0, 0}, {1, 0}, {2, 0}, {4, 0}, {0, 1}, {1, 1}, {2, 1}, {5, 1}}, true},
        {{}, false},
    };
    for (const Case& c : cases)
    {
        PoseSolvability solvability(layout, c.hits);
        EXPECT_EQ(solvability.HasEnoughHits(), c.enough) << c.hits.size() << " hits";
    }
}

// Hits appended after construction are read at the next question.
TEST(PoseSolvability, GeometryCases)
{
    const SensorLayout layout = TwoSquares();
    struct Case
    {
        const char* name;
        std::vector<SweepHit> hits;
        bool solvable;
    } cases[] = {
        {"four coplanar", BothAxes({0, 1, 2, 3}), false},
        {"four off one plane", BothAxes({0, 1, 2, 4}), true},
        {"eight in two planes", BothAxes({0, 1, 2, 3, 4, 5, 6, 7}), true},
        // Each axis sees its own non-planar four, with no sensor seen on both.
        {"axes apart",
         {{0, 0}, {1, 0}, {2, 0}, {4, 0}, {3, 1}, {5, 1}, {6, 1}, {7, 1}},
         true},
        // Axis 1 sees only the coplanar square.
        {"one axis planar",
         {{0, 0}, {1, 0}, {2, 0}, {4, 0}, {0, 1}, {1, 1}, {2, 1}, {3, 1}},
         false},
        {"too few", BothAxes({0, 4, 5}), false},
    };
    for (const Case& c : cases)
    {
        PoseSolvability solvability(layout, c.hits);
        EXPECT_EQ(solvability.IsGeometrySolvable(), c.solvable) << c.name;
    }
}

// A fourth sensor closer to the plane than the smallest feature doesn't count as off it.
TEST(PoseSolvability, MinFeatureSizeSetsTheThreshold)
{
    const SensorLayout layout = MakeLayout(
        {Eigen::Vector3f(0, 0, 0), Eigen::Vector3f(0.1f, 0, 0), Eigen::Vector3f(0, 0.1f, 0), Eigen::Vector3f(0.1f, 0.1f, 0.008f)},
        std::vector<Eigen::Vector3f>(4, Eigen::Vector3f::UnitZ()));
    const std::vector<SweepHit> none;
    PoseSolvability solvability(layout, none);
    EXPECT_FALSE(solvability.FindNonPlanarSet({0, 1, 2, 3}));
    solvability.minFeatureSize = 0.005;
    EXPECT_TRUE(solvability.FindNonPlanarSet({0, 1, 2, 3}));
}

} // namespace
} // namespace kelvorig
