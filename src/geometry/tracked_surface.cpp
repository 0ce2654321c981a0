#include "geometry/tracked_surface.h"

#include "geometry/mesh_checks.h"
#include "geometry/mesh_loading.h"
#include "geometry/unit_scale.h"

#include <Eigen/Geometry>

#include <cmath>

namespace kelvorig {
namespace {

// Facets narrower than a triangle can't be traced or sampled.
bool HasTriangles(const TriangleMatrix& triangles)
{
    return triangles.rows() > 0 && triangles.cols() >= 3;
}

} // namespace

TrackedSurface::TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths,
                               const SurfaceLoading& loading)
    : TrackedSurface(surfacePath, obstaclePaths, TimeAndProcessSeed(), loading)
{
}

TrackedSurface::TrackedSurface(const std::string& surfacePath, const std::vector<std::string>& obstaclePaths,
                               uint32_t seed, const SurfaceLoading& loading)
    : surfacePath_(surfacePath),
      obstaclePaths_(obstaclePaths)
{
    buildFailure_ = LoadSensorSurface(loading);
    if (buildFailure_.ok())
    {
        buildFailure_ = intersector_.init(vertices_, triangles_);
        rayEngineFailed_ = !buildFailure_.ok();
    }
    if (buildFailure_.ok())
    {
        BuildAreaTable();
        if (!obstaclePaths_.empty())
            buildFailure_ = AddObstacles();
    }
    if (!buildFailure_.ok())
    {
        triangles_.resize(0, 0);
        return;
    }
    rng_.seed(seed);
}

// A surface that can't be used fails; with an empty message where the caller names it.
Status TrackedSurface::LoadSensorSurface(const SurfaceLoading& loading)
{
    if (Status read = ReadMeshMatrices(surfacePath_, vertices_, triangles_, faceNormals_); !read.ok())
        return read;
    if (vertices_.size() == 0 || faceNormals_.size() == 0 || !HasTriangles(triangles_))
        return Status::Failure("");
    // note: before the unit is inferred, which a corner at 1e38 would decide on its own.
    DropUnusableFacets(warnings_, surfacePath_, vertices_, triangles_, faceNormals_);
    if (triangles_.rows() == 0)
        return Status::Failure("");

    const float diagonal = MeshExtentDiagonal(vertices_);
    unitScale_ = loading.unitScale ? *loading.unitScale : InferUnitScale(diagonal);
    const MeshProblems problems = FindMeshProblems(vertices_, triangles_, faceNormals_);
    RepairOrientation(warnings_, surfacePath_, problems, triangles_, faceNormals_, vertices_,
                      !loading.normalsFromWinding);
    WarnOfMeshProblems(warnings_, surfacePath_, problems);
    const float longestSide = (vertices_.colwise().maxCoeff() - vertices_.colwise().minCoeff()).maxCoeff();
    WarnOfImplausibleSize(warnings_, surfacePath_, longestSide, unitScale_, !loading.unitScale);
    vertices_ *= static_cast<float>(unitScale_);
    if (loading.normalsFromWinding)
        faceNormals_ = WindingNormals(vertices_, triangles_);
    // note: no guard for a zero normal, which only a facet without area keeps: its row becomes
    // not-a-number, and the facet, having no area, is never drawn.
    for (Eigen::Index row = 0; row < faceNormals_.rows(); ++row)
        faceNormals_.row(row) /= faceNormals_.row(row).norm();
    // A surface without area offers no seat: it counts as not built.
    return HasFacetOfPositiveArea(vertices_, triangles_) ? Status() : Status::Failure("");
}

void TrackedSurface::BuildAreaTable()
{
    totalArea_ = 0.0;
    cumulativeArea_.clear();
    cumulativeArea_.reserve(static_cast<size_t>(triangles_.rows()));
    for (Eigen::Index row = 0; row < triangles_.rows(); ++row)
    {
        const Eigen::Vector3f p0 = vertices_.row(triangles_(row, 0)).transpose();
        const Eigen::Vector3f p1 = vertices_.row(triangles_(row, 1)).transpose();
        const Eigen::Vector3f p2 = vertices_.row(triangles_(row, 2)).transpose();
        const float twiceArea = (p1 - p0).cross(p2 - p0).norm();
        totalArea_ += static_cast<double>(twiceArea) * 0.5;
        cumulativeArea_.push_back(totalArea_);
    }
    areaPick_ = {0.0, totalArea_};
}

// Obstacles only block rays: their geometry ends up in the intersector and nowhere else.
Status TrackedSurface::AddObstacles()
{
    VertexMatrix obstacleVertices;
    TriangleMatrix obstacleTriangles;
    NormalMatrix obstacleNormals;
    if (Status read = ReadMeshList(obstaclePaths_, obstacleVertices, obstacleTriangles, obstacleNormals); !read.ok())
        return read;
    if (obstacleTriangles.rows() == 0)
        return {};
    if (!HasTriangles(obstacleTriangles))
        return Status::Failure("");

    obstacleTriangles.array() += static_cast<int32_t>(vertices_.rows());
    obstacleVertices *= static_cast<float>(unitScale_);

    VertexMatrix allVertices(vertices_.rows() + obstacleVertices.rows(), 3);
    allVertices << vertices_, obstacleVertices;
    TriangleMatrix allTriangles(triangles_.rows() + obstacleTriangles.rows(), 3);
    allTriangles << triangles_.leftCols(3), obstacleTriangles.leftCols(3);
    Status built = intersector_.init(allVertices, allTriangles);
    rayEngineFailed_ = !built.ok();
    return built;
}

bool TrackedSurface::isBuilt() const
{
    return triangles_.rows() >= 1;
}

const std::string& TrackedSurface::surfacePath() const
{
    return surfacePath_;
}

const std::vector<std::string>& TrackedSurface::obstaclePaths() const
{
    return obstaclePaths_;
}

double TrackedSurface::unitScale() const
{
    return unitScale_;
}

const EmbreeIntersector& TrackedSurface::intersector() const
{
    return intersector_;
}

} // namespace kelvorig
