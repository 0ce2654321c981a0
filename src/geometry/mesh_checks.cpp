#include "geometry/mesh_checks.h"

#include "geometry/surface_loading.h"
#include "support/formatted_text.h"

#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace kelvorig {
namespace {

// Sizes a hand-held or head-worn device can have, metres, as its longest side.
constexpr double kSmallestDevice = 0.02;
constexpr double kLargestDevice = 2.0;

Eigen::Vector3d Corner(const VertexMatrix& V, const TriangleMatrix& F, Eigen::Index facet, int corner)
{
    return V.row(F(facet, corner)).transpose().cast<double>();
}

bool FacetIsFinite(const VertexMatrix& V, const TriangleMatrix& F, Eigen::Index facet)
{
    return Corner(V, F, facet, 0).allFinite() && Corner(V, F, facet, 1).allFinite() &&
           Corner(V, F, facet, 2).allFinite();
}

// Twice the area, as a vector along the winding's normal.
Eigen::Vector3d WindingCross(const VertexMatrix& V, const TriangleMatrix& F, Eigen::Index facet)
{
    const Eigen::Vector3d p0 = Corner(V, F, facet, 0);
    return (Corner(V, F, facet, 1) - p0).cross(Corner(V, F, facet, 2) - p0);
}

// One id per distinct position (minus zero taken as zero) for each corner of the finite
// facets, 3 per facet in facet order; -1 for the corners of the other facets.
std::vector<int64_t> JoinedCorners(const VertexMatrix& V, const TriangleMatrix& F)
{
    using Key = std::pair<std::array<float, 3>, size_t>;
    std::vector<Key> keys;
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        if (!FacetIsFinite(V, F, facet))
            continue;
        for (int corner = 0; corner < 3; ++corner)
        {
            const auto row = V.row(F(facet, corner));
            keys.push_back({{row(0) + 0.0f, row(1) + 0.0f, row(2) + 0.0f}, static_cast<size_t>(facet * 3 + corner)});
        }
    }
    std::sort(keys.begin(), keys.end());
    std::vector<int64_t> ids(static_cast<size_t>(F.rows()) * 3, -1);
    int64_t id = -1;
    for (size_t i = 0; i < keys.size(); ++i)
    {
        if (i == 0 || keys[i].first != keys[i - 1].first)
            ++id;
        ids[keys[i].second] = id;
    }
    return ids;
}

// One line: the mesh's name, then `format` with the count and the total it is out of.
void Warn(std::string& warnings, const std::string& path, const char* format, int64_t count, int64_t total)
{
    if (count == 0)
        return;
    AppendFormatted(warnings, "WARNING: \"%s\": ", path.c_str());
    AppendFormatted(warnings, format, static_cast<long long>(count), static_cast<long long>(total));
    warnings += '\n';
}

} // namespace

int64_t CountOpenEdges(const VertexMatrix& V, const TriangleMatrix& F)
{
    const std::vector<int64_t> ids = JoinedCorners(V, F);
    std::vector<std::pair<int64_t, int64_t>> edges;
    for (size_t facet = 0; facet * 3 < ids.size(); ++facet)
    {
        for (size_t corner = 0; corner < 3; ++corner)
        {
            const int64_t a = ids[facet * 3 + corner];
            const int64_t b = ids[facet * 3 + (corner + 1) % 3];
            if (a >= 0 && a != b)
                edges.push_back(std::minmax(a, b));
        }
    }
    std::sort(edges.begin(), edges.end());
    int64_t open = 0;
    for (size_t i = 0; i < edges.size();)
    {
        size_t j = i;
        while (j < edges.size() && edges[j] == edges[i])
            ++j;
        open += j - i == 1 ? 1 : 0;
        i = j;
    }
    return open;
}

MeshProblems FindMeshProblems(const VertexMatrix& V, const TriangleMatrix& F, const NormalMatrix& N)
{
    MeshProblems problems;
    problems.facets = F.rows();

    double volume = 0.0; // six times the volume the winding encloses
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        const Eigen::Vector3d stored = N.row(facet).transpose().cast<double>();
        const bool storedSound = stored.allFinite() && stored.squaredNorm() > 0.0;
        problems.badStoredNormals += storedSound ? 0 : 1;
        if (!FacetIsFinite(V, F, facet))
            continue;
        const Eigen::Vector3d winding = WindingCross(V, F, facet);
        if (winding.squaredNorm() == 0.0)
            ++problems.zeroAreaFacets;
        else if (storedSound && stored.dot(winding) < 0.0)
            ++problems.flippedStoredNormals;
        volume += Corner(V, F, facet, 0).dot(winding);
    }
    problems.openEdges = CountOpenEdges(V, F);
    problems.insideOut = F.rows() > 0 && problems.openEdges == 0 && volume < 0.0;
    return problems;
}

void RepairOrientation(std::string& warnings, const std::string& path, const MeshProblems& problems, TriangleMatrix& F,
                       NormalMatrix& N, const VertexMatrix& V, bool storedNormalsUsed)
{
    // Stored normals along and against the winding, among facets where both are sound.
    int64_t along = 0;
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        const Eigen::Vector3d stored = N.row(facet).transpose().cast<double>();
        if (stored.allFinite() && stored.squaredNorm() > 0.0 && stored.dot(WindingCross(V, F, facet)) > 0.0)
            ++along;
    }
    const bool open = problems.openEdges > 0;
    // An open mesh encloses nothing, so its winding has no outside to be checked against: the
    // convention most of its facets follow decides.
    const bool turnWinding = problems.insideOut || (open && problems.flippedStoredNormals > along);
    if (problems.insideOut)
        Warn(warnings, path,
             "%lld of %lld facets wind inside out: the closed mesh encloses a negative volume; they are "
             "turned outside in",
             problems.facets, problems.facets);
    else if (turnWinding)
        Warn(warnings, path,
             "%lld of %lld facets wind against their stored normal: the mesh is open, so the majority "
             "decides, and every facet's winding is turned",
             problems.flippedStoredNormals, problems.facets);
    if (turnWinding)
        F.col(1).swap(F.col(2));
    if (!storedNormalsUsed)
        return;
    int64_t replacedUnsound = 0;
    int64_t replacedAgainst = 0;
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        const Eigen::Vector3f winding = WindingCross(V, F, facet).cast<float>();
        const Eigen::Vector3f stored = N.row(facet).transpose();
        const bool sound = stored.allFinite() && stored.squaredNorm() > 0.0f;
        if (winding.allFinite() && winding.squaredNorm() > 0.0f && (!sound || stored.dot(winding) < 0.0f))
        {
            N.row(facet) = winding.transpose();
            ++(sound ? replacedAgainst : replacedUnsound);
        }
    }
    Warn(warnings, path, "%lld of %lld facets have a stored normal that is zero or not finite: their winding's is used",
         replacedUnsound, problems.facets);
    Warn(warnings, path,
         "%lld of %lld facets have a stored normal more than 90 degrees from their winding's: the "
         "winding's is used",
         replacedAgainst, problems.facets);
}

void WarnOfMeshProblems(std::string& warnings, const std::string& path, const MeshProblems& problems)
{
    Warn(warnings, path, "%lld of %lld facets have zero area", problems.zeroAreaFacets, problems.facets);
    Warn(warnings, path, "%lld open edges (used by one facet only) in %lld facets", problems.openEdges,
         problems.facets);
}

void WarnOfImplausibleSize(std::string& warnings, const std::string& path, float longestSide, double unitScale,
                           bool inferred)
{
    const double metres = static_cast<double>(longestSide) * unitScale;
    if (!(metres < kSmallestDevice || metres > kLargestDevice))
        return;
    AppendFormatted(warnings,
                    "WARNING: \"%s\": a longest side of %g %s (%s) is implausible for a hand-held or head-worn device "
                    "(20 mm to 2 m); /meshunit mm|cm|m|in sets the unit\n",
                    path.c_str(), static_cast<double>(longestSide), UnitName(unitScale).c_str(),
                    inferred ? "unit inferred from the size" : "unit from /meshunit");
}

bool HasFacetOfPositiveArea(const VertexMatrix& V, const TriangleMatrix& F)
{
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        const double twiceArea = WindingCross(V, F, facet).norm();
        if (std::isfinite(twiceArea) && twiceArea > 0.0)
            return true;
    }
    return false;
}

NormalMatrix WindingNormals(const VertexMatrix& V, const TriangleMatrix& F)
{
    NormalMatrix normals(F.rows(), 3);
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        const Eigen::Vector3f p0 = V.row(F(facet, 0)).transpose();
        const Eigen::Vector3f p1 = V.row(F(facet, 1)).transpose();
        const Eigen::Vector3f p2 = V.row(F(facet, 2)).transpose();
        normals.row(facet) = (p1 - p0).cross(p2 - p0).transpose();
    }
    return normals;
}

void DropUnusableFacets(std::string& warnings, const std::string& path, VertexMatrix& V, TriangleMatrix& F,
                        NormalMatrix& N)
{
    const auto usable = [&V, &F](Eigen::Index facet)
    {
        for (Eigen::Index k = 0; k < F.cols(); ++k)
        {
            const int32_t row = F(facet, k);
            if (row < 0 || row >= V.rows() || !(V.row(row).array().abs() <= kLargestCoordinate).all())
                return false;
        }
        return true;
    };
    std::vector<Eigen::Index> kept;
    for (Eigen::Index facet = 0; facet < F.rows(); ++facet)
    {
        if (usable(facet))
            kept.push_back(facet);
    }
    const Eigen::Index keptCount = static_cast<Eigen::Index>(kept.size());
    if (keptCount == F.rows())
        return;
    AppendFormatted(warnings,
                    "WARNING: \"%s\": %lld of %lld facets have a corner that is not finite or lies beyond %g units; "
                    "they are left out\n",
                    path.c_str(), static_cast<long long>(F.rows() - keptCount), static_cast<long long>(F.rows()),
                    static_cast<double>(kLargestCoordinate));
    VertexMatrix keptV(keptCount * F.cols(), 3);
    TriangleMatrix keptF(keptCount, F.cols());
    NormalMatrix keptN = NormalMatrix::Zero(keptCount, 3);
    for (Eigen::Index row = 0; row < keptCount; ++row)
    {
        const Eigen::Index facet = kept[static_cast<size_t>(row)];
        for (Eigen::Index k = 0; k < F.cols(); ++k)
        {
            keptV.row(row * F.cols() + k) = V.row(F(facet, k));
            keptF(row, k) = static_cast<int32_t>(row * F.cols() + k);
        }
        if (facet < N.rows())
            keptN.row(row) = N.row(facet);
    }
    V = std::move(keptV);
    F = std::move(keptF);
    N = std::move(keptN);
}

} // namespace kelvorig
