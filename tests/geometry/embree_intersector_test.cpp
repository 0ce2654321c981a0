#include "geometry/embree_intersector.h"

#include "support/random_draws.h"
#include "support/test_meshes.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvorig {
namespace {

using test::TestMesh;

// Two-sided Möller–Trumbore over every facet in 64-bit floats: the nearest facet hit within
// [tnear, tfar] and its distance, or -1; nullopt when too close to an edge, a bound or a
// second hit to call.
std::optional<std::pair<int, double>> BruteForce(const TestMesh& mesh, const Eigen::Vector3d& o,
                                                 const Eigen::Vector3d& d, double tnear, double tfar)
{
    constexpr double kSlack = 1e-4;
    std::vector<std::pair<double, int>> hits;
    for (size_t f = 0; f < mesh.triangles.size(); ++f)
    {
        const Eigen::Vector3d p0 = mesh.vertices[mesh.triangles[f][0]].cast<double>();
        const Eigen::Vector3d e1 = mesh.vertices[mesh.triangles[f][1]].cast<double>() - p0;
        const Eigen::Vector3d e2 = mesh.vertices[mesh.triangles[f][2]].cast<double>() - p0;
        const double det = e1.dot(d.cross(e2));
        if (std::abs(det) < 1e-12)
            continue;
        const double u = (o - p0).dot(d.cross(e2)) / det, v = d.dot((o - p0).cross(e1)) / det;
        const double t = e2.dot((o - p0).cross(e1)) / det;
        const double margin = std::min({u, v, 1 - u - v, t - tnear, tfar - t});
        if (std::abs(margin) < kSlack)
            return std::nullopt;
        if (margin > 0)
            hits.emplace_back(t, static_cast<int>(f));
    }
    std::sort(hits.begin(), hits.end());
    if (hits.size() > 1 && hits[1].first - hits[0].first < kSlack)
        return std::nullopt;
    return hits.empty() ? std::pair{-1, 0.0} : std::pair{hits[0].second, hits[0].first};
}

// Vertices and facets are packed 3 to a row, so the mesh is viewed as matrices in place.
void Build(const TestMesh& mesh, EmbreeIntersector& intersector)
{
    using Rows = Eigen::Matrix<float, Eigen::Dynamic, 3, Eigen::RowMajor>;
    using Facets = Eigen::Matrix<int, Eigen::Dynamic, 3, Eigen::RowMajor>;
    const auto n = static_cast<Eigen::Index>(mesh.vertices.size()),
               m = static_cast<Eigen::Index>(mesh.triangles.size());
    EXPECT_TRUE(intersector.init(Eigen::Map<const Rows>(mesh.vertices[0].data(), n, 3),
                                 Eigen::Map<const Facets>(mesh.triangles[0].data(), m, 3)));
}

// Random rays at three nested solids, half aimed into a facet, some unnormalised, some with
// bounds: our answer is the brute-force one, and a miss leaves the hit alone. (The barycentrics
// are Embree's own and unused.)
TEST(EmbreeIntersector, AgreesWithBruteForce)
{
    const TestMesh mesh = test::Combine(test::Combine(test::MakeTetrahedron(1.5f), test::MakeSphere(0.8f, 8, 16)),
                                        test::MakeBox(Eigen::Vector3f(0.5f, 2.5f, 0.3f)));
    EmbreeIntersector intersector;
    Build(mesh, intersector);
    ASSERT_TRUE(intersector.isInitialised());
    RandomEngine engine(13);
    const auto draw = [&engine](float low, float high)
    { return Eigen::Vector3f(Eigen::Vector3f::NullaryExpr([&] { return DrawRange(engine, low, high); })); };
    int hits = 0, compared = 0;
    for (int i = 0; i < 4000; ++i)
    {
        const Eigen::Vector3f origin = draw(-3.0f, 3.0f);
        const std::array<int, 3>& f = mesh.triangles[engine() % mesh.triangles.size()];
        const float a = DrawRange(engine, 0.1f, 0.45f), b = DrawRange(engine, 0.1f, 0.45f);
        const Eigen::Vector3f onFacet = mesh.vertices[f[0]] + a * (mesh.vertices[f[1]] - mesh.vertices[f[0]]) +
                                        b * (mesh.vertices[f[2]] - mesh.vertices[f[0]]);
        Eigen::Vector3f direction = ((i % 2 == 0) ? draw(-1.5f, 1.5f) : onFacet) - origin;
        if (i % 3 != 0)
            direction.normalize();
        const float tnear = (i % 4 == 0) ? DrawRange(engine, 0.0f, 2.0f) : 0.0f;
        const float tfar =
            (i % 5 == 0) ? tnear + DrawRange(engine, 0.0f, 3.0f) : std::numeric_limits<float>::infinity();
        const auto expected = BruteForce(mesh, origin.cast<double>(), direction.cast<double>(), tnear, tfar);
        if (!expected)
            continue;
        ++compared;
        RayHit hit;
        hit.primitiveId = -7;
        ASSERT_EQ(intersector.intersectRay(origin, direction, hit, tnear, tfar), expected->first >= 0) << "ray " << i;
        EXPECT_EQ(hit.primitiveId, expected->first < 0 ? -7 : expected->first) << "ray " << i;
        if (expected->first < 0)
            continue;
        ++hits;
        EXPECT_NEAR(hit.hitDistance, expected->second, 1e-4 * (1.0 + expected->second)) << "ray " << i;
    }
    EXPECT_GT(compared, 3000);
    EXPECT_TRUE(hits > 500 && hits < compared);
}

// Our wrapper's own guards: nothing built meets nothing, rays that are not numbers meet
// nothing, and a rebuild without facets drops the previous structure.
TEST(EmbreeIntersector, EmptyMeshesAndRaysThatAreNotNumbersMeetNothing)
{
    EmbreeIntersector intersector;
    RayHit hit;
    const Eigen::Vector3f centre = Eigen::Vector3f::Zero(), up = Eigen::Vector3f::UnitZ();
    EXPECT_FALSE(intersector.isInitialised());
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit));
    Build(test::MakeBox(Eigen::Vector3f(2, 2, 2)), intersector);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit, nan, 10.0f) ||
                 intersector.intersectRay(centre, up, hit, 0.0f, nan) ||
                 intersector.intersectRay({nan, 0, 0}, up, hit) || intersector.intersectRay(centre, {0, nan, 1}, hit) ||
                 intersector.intersectRay({0, 0, -std::numeric_limits<float>::infinity()}, up, hit));
    EXPECT_TRUE(intersector.intersectRay(centre, up, hit));
    VertexMatrix V = VertexMatrix::Zero(3, 3);
    EXPECT_TRUE(intersector.init(V, TriangleMatrix()));
    EXPECT_FALSE(intersector.isInitialised());
    EXPECT_TRUE(intersector.init(V, TriangleMatrix::Zero(12, 2)));
    EXPECT_FALSE(intersector.isInitialised());
}

} // namespace
} // namespace kelvorig
