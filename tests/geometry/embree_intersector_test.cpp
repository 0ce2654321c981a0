#include "geometry/embree_intersector.h"

#include "support/random_draws.h"
#include "support/test_meshes.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace kelvorig {
namespace {

using test::TestMesh;

void ToMatrices(const TestMesh& mesh, VertexMatrix& V, TriangleMatrix& F)
{
    V.resize(static_cast<Eigen::Index>(mesh.vertices.size()), 3);
    for (size_t i = 0; i < mesh.vertices.size(); ++i)
        V.row(static_cast<Eigen::Index>(i)) = mesh.vertices[i].transpose();
    F.resize(static_cast<Eigen::Index>(mesh.triangles.size()), 3);
    for (size_t t = 0; t < mesh.triangles.size(); ++t)
        F.row(static_cast<Eigen::Index>(t)) << mesh.triangles[t][0], mesh.triangles[t][1], mesh.triangles[t][2];
}

struct BruteHit
{
    int primitive = -1;
    double t = 0.0;
    bool ambiguous = false;  // too close to an edge, a bound or another hit to call
};

// Two-sided Möller–Trumbore over every facet, in 64-bit floats.
BruteHit BruteForce(const TestMesh& mesh, const Eigen::Vector3f& origin, const Eigen::Vector3f& direction, float tnear,
                    float tfar)
{
    constexpr double kSlack = 1e-4;
    const Eigen::Vector3d o = origin.cast<double>();
    const Eigen::Vector3d d = direction.cast<double>();
    BruteHit best;
    std::optional<double> runnerUp;
    for (size_t f = 0; f < mesh.triangles.size(); ++f)
    {
        const Eigen::Vector3d p0 = mesh.vertices[mesh.triangles[f][0]].cast<double>();
        const Eigen::Vector3d e1 = mesh.vertices[mesh.triangles[f][1]].cast<double>() - p0;
        const Eigen::Vector3d e2 = mesh.vertices[mesh.triangles[f][2]].cast<double>() - p0;
        const Eigen::Vector3d p = d.cross(e2);
        const double det = e1.dot(p);
        if (std::abs(det) < 1e-12)
            continue;
        const Eigen::Vector3d s = o - p0;
        const double u = s.dot(p) / det;
        const Eigen::Vector3d q = s.cross(e1);
        const double v = d.dot(q) / det;
        const double t = e2.dot(q) / det;
        const bool inside = u >= 0 && v >= 0 && u + v <= 1 && t >= tnear && t <= tfar;
        const bool near = u > -kSlack && v > -kSlack && u + v < 1 + kSlack && t > tnear - kSlack && t < tfar + kSlack;
        if (near && !inside)
            best.ambiguous = true;
        if (near && (std::min({u, v, 1 - u - v}) < kSlack || t - tnear < kSlack || tfar - t < kSlack))
            best.ambiguous = true;
        if (!inside)
            continue;
        if (best.primitive < 0 || t < best.t)
        {
            if (best.primitive >= 0)
                runnerUp = best.t;
            best.primitive = static_cast<int>(f);
            best.t = t;
        }
        else if (!runnerUp || t < *runnerUp)
        {
            runnerUp = t;
        }
    }
    if (runnerUp && *runnerUp - best.t < kSlack)
        best.ambiguous = true;
    return best;
}

Eigen::Vector3f RandomVector(RandomEngine& engine, float low, float high)
{
    return Eigen::Vector3f(DrawRange(engine, low, high), DrawRange(engine, low, high), DrawRange(engine, low, high));
}

// Runs random rays through the mesh and checks Embree against the brute-force answer.
void CompareWithBruteForce(const TestMesh& mesh, uint32_t seed)
{
    VertexMatrix V;
    TriangleMatrix F;
    ToMatrices(mesh, V, F);
    EmbreeIntersector intersector;
    intersector.init(V, F);
    ASSERT_TRUE(intersector.isInitialised());

    RandomEngine engine(seed);
    int hits = 0;
    int compared = 0;
    for (int i = 0; i < 4000; ++i)
    {
        const Eigen::Vector3f origin = RandomVector(engine, -3.0f, 3.0f);
        // Half the rays aim at a point inside a facet, so that hits are common.
        const std::array<int, 3>& facet = mesh.triangles[engine() % mesh.triangles.size()];
        const float a = DrawRange(engine, 0.1f, 0.45f);
        const float b = DrawRange(engine, 0.1f, 0.45f);
        const Eigen::Vector3f onFacet = mesh.vertices[facet[0]] + a * (mesh.vertices[facet[1]] - mesh.vertices[facet[0]]) +
                                        b * (mesh.vertices[facet[2]] - mesh.vertices[facet[0]]);
        const Eigen::Vector3f target = (i % 2 == 0) ? RandomVector(engine, -1.5f, 1.5f) : onFacet;
        Eigen::Vector3f direction = target - origin;
        if (i % 3 != 0)
            direction.normalize();
        const float tnear = (i % 4 == 0) ? DrawRange(engine, 0.0f, 2.0f) : 0.0f;
        const float tfar = (i % 5 == 0) ? tnear + DrawRange(engine, 0.0f, 3.0f) : std::numeric_limits<float>::infinity();

        const BruteHit expected = BruteForce(mesh, origin, direction, tnear, tfar);
        if (expected.ambiguous)
            continue;
        ++compared;
        RayHit hit;
        hit.primitiveId = -7;
        const bool found = intersector.intersectRay(origin, direction, hit, tnear, tfar);
        ASSERT_EQ(found, expected.primitive >= 0) << "ray " << i;
        if (!found)
        {
            EXPECT_EQ(hit.primitiveId, -7) << "a miss leaves the hit alone";
            continue;
        }
        ++hits;
        EXPECT_EQ(hit.primitiveId, expected.primitive) << "ray " << i;
        EXPECT_NEAR(hit.hitDistance, expected.t, 1e-4 * (1.0 + expected.t)) << "ray " << i;
        EXPECT_GE(hit.hitU, 0.0f);
        EXPECT_GE(hit.hitV, 0.0f);
        EXPECT_LE(hit.hitU + hit.hitV, 1.0f + 1e-5f);
    }
    EXPECT_GT(compared, 3000);
    EXPECT_GT(hits, 500);
    EXPECT_LT(hits, compared);
}

TEST(EmbreeIntersectorTest, AgreesWithBruteForce)
{
    const TestMesh overlapping = test::Combine(test::Combine(test::MakeTetrahedron(1.5f), test::MakeSphere(0.8f, 8, 16)),
                                               test::MakeBox(Eigen::Vector3f(0.5f, 2.5f, 0.3f)));
    CompareWithBruteForce(test::MakeBox(Eigen::Vector3f(2.0f, 1.0f, 1.5f)), 11);
    CompareWithBruteForce(test::MakeSphere(1.2f, 12, 24), 12);
    CompareWithBruteForce(overlapping, 13);
}

TEST(EmbreeIntersectorTest, EmptyMeshesAndRaysThatAreNotNumbersMeetNothing)
{
    EmbreeIntersector intersector;
    RayHit hit;
    hit.primitiveId = -7;
    const Eigen::Vector3f centre = Eigen::Vector3f::Zero();
    const Eigen::Vector3f up = Eigen::Vector3f::UnitZ();
    EXPECT_FALSE(intersector.isInitialised());
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit));

    VertexMatrix V;
    TriangleMatrix F;
    ToMatrices(test::MakeBox(Eigen::Vector3f(2, 2, 2)), V, F);
    intersector.init(V, F);
    ASSERT_TRUE(intersector.isInitialised());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(intersector.intersectRay(Eigen::Vector3f(nan, 0, 0), up, hit));
    EXPECT_FALSE(intersector.intersectRay(centre, Eigen::Vector3f(0, nan, 1), hit));
    EXPECT_FALSE(intersector.intersectRay(Eigen::Vector3f(0, 0, -inf), up, hit));
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit, nan, 10.0f));
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit, 0.0f, nan));
    EXPECT_EQ(hit.primitiveId, -7);
    EXPECT_TRUE(intersector.intersectRay(centre, up, hit, 0.0f, inf));

    // A rebuild with nothing in it drops the previous structure.
    intersector.init(V, TriangleMatrix());
    EXPECT_FALSE(intersector.isInitialised());
    EXPECT_FALSE(intersector.intersectRay(centre, up, hit));
    intersector.init(V, TriangleMatrix::Zero(12, 2));
    EXPECT_FALSE(intersector.isInitialised());
}

} // namespace
} // namespace kelvorig
