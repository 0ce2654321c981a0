#include "driver/placement_switches.h"

#include "geometry/mesh_checks.h"
#include "geometry/mesh_loading.h"
#include "support/angles.h"

#include <cstdio>
#include <vector>

namespace kelvorig {
namespace {

// Every vertex of the sensor surface and the obstacles, metres: what the hull is made of.
bool DevicePoints(const TrackedSurface& surface, std::vector<Eigen::Vector3d>& points)
{
    VertexMatrix obstacles;
    TriangleMatrix triangles;
    NormalMatrix normals;
    // note: the surface was built from these same files, so they read again.
    if (Status read = ReadMeshList(surface.obstaclePaths(), obstacles, triangles, normals); !read.ok())
    {
        std::fputs(read.message().c_str(), stderr);
        return false;
    }
    obstacles *= static_cast<float>(surface.unitScale());
    const VertexMatrix& scaledObstacles = obstacles;
    for (const VertexMatrix* vertices : {&surface.vertices(), &scaledObstacles})
    {
        for (Eigen::Index row = 0; row < vertices->rows(); ++row)
            points.push_back(vertices->row(row).transpose().cast<double>());
    }
    return true;
}

bool LoadKeepOut(const std::string& path, double unitScale, SeatRules& rules)
{
    VertexMatrix vertices;
    TriangleMatrix triangles;
    NormalMatrix normals;
    Status read = ReadMeshMatrices(path, vertices, triangles, normals);
    std::fputs(read.message().c_str(), stderr);
    if (!read.ok() || triangles.rows() == 0 || triangles.cols() < 3)
    {
        std::fprintf(stderr, "Could not build keep-out volume from \"%s\"\n", path.c_str());
        return false;
    }
    const int64_t openEdges = CountOpenEdges(vertices, triangles);
    if (openEdges > 0)
    {
        std::fprintf(stderr, "/keepout \"%s\" is not a closed mesh: %lld edges are used by one facet only\n",
                     path.c_str(), static_cast<long long>(openEdges));
        return false;
    }
    vertices *= static_cast<float>(unitScale);
    rules.AddKeepOut(KeepOutVolume(vertices, triangles));
    return true;
}

// The box around V's rows (metres), low corner and high corner.
std::pair<Eigen::Vector3f, Eigen::Vector3f> BoxOf(const VertexMatrix& V)
{
    return {V.colwise().minCoeff().transpose(), V.colwise().maxCoeff().transpose()};
}

} // namespace

void DescribeMeshes(const CommandOptions& options, const TrackedSurface& surface)
{
    const auto describe = [](const std::string& path, const std::string& unit, const Eigen::Vector3f& extent)
    {
        const Eigen::Vector3d mm = extent.cast<double>() * kMillimetresPerMetre;
        std::fprintf(stderr, "mesh \"%s\": %s, %.4g x %.4g x %.4g mm\n", path.c_str(), unit.c_str(), mm.x(), mm.y(),
                     mm.z());
    };
    const std::string unitName = UnitName(surface.unitScale());
    auto [low, high] = BoxOf(surface.vertices());
    describe(surface.surfacePath(),
             unitName + (options.meshUnit.empty() ? ", inferred from its size" : ", from /meshunit"), high - low);
    // A mesh that misses the surface's box grown by a tenth on every side, or whose size is off
    // the surface's by more than this factor, is no part of this device: most likely another
    // unit (a factor of 10, 25.4 or 1000).
    constexpr float kSizeFactor = 100.0f;
    const float size = (high - low).maxCoeff();
    const Eigen::Vector3f margin = 0.1f * (high - low);
    low -= margin;
    high += margin;
    for (const auto& [paths, kind] :
         {std::pair{&options.obstaclePaths, "/obstacles"}, {&options.keepOutPaths, "/keepout"}})
    {
        for (const std::string& path : *paths)
        {
            VertexMatrix V;
            TriangleMatrix F;
            NormalMatrix N;
            if (!ReadMeshMatrices(path, V, F, N) || V.rows() == 0)
                continue; // said where the mesh is used
            V *= static_cast<float>(surface.unitScale());
            const auto [meshLow, meshHigh] = BoxOf(V);
            describe(path, unitName + ", as the sensor surface", meshHigh - meshLow);
            const float meshSize = (meshHigh - meshLow).maxCoeff();
            if ((meshLow.array() > high.array()).any() || (meshHigh.array() < low.array()).any() ||
                meshSize * kSizeFactor < size || meshSize > kSizeFactor * size)
                std::fprintf(stderr,
                             "WARNING: %s \"%s\" does not fit the sensor surface (it lies outside its box, or is over "
                             "100 times smaller or larger); is it in the same unit (%s)?\n",
                             kind, path.c_str(), unitName.c_str());
        }
    }
}

SurfaceLoading SurfaceLoadingOf(const CommandOptions& options)
{
    SurfaceLoading loading;
    loading.normalsFromWinding = options.normalsFromWinding;
    if (!options.meshUnit.empty())
        loading.unitScale = UnitScaleNamed(options.meshUnit);
    return loading;
}

bool BuildSeatRules(const CommandOptions& options, const TrackedSurface& surface, std::unique_ptr<SeatRules>& rules)
{
    rules = std::make_unique<SeatRules>();
    // The hull measures every seat's depth, rule or not; only /maxseatdepth needs it.
    std::vector<Eigen::Vector3d> points;
    if (!DevicePoints(surface, points))
        return false;
    if (std::optional<ConvexHull> hull = ConvexHull::Build(points))
        rules->SetHull(std::move(*hull));
    else if (options.maxSeatDepth)
    {
        std::fprintf(stderr, "Could not compute the convex hull of \"%s\" for /maxseatdepth\n",
                     surface.surfacePath().c_str());
        return false;
    }
    if (options.maxSeatDepth)
        rules->SetMaxSeatDepth(*options.maxSeatDepth);
    for (const std::string& path : options.keepOutPaths)
    {
        if (!LoadKeepOut(path, surface.unitScale(), *rules))
            return false;
    }
    // A spacing of 0 keeps nothing apart: no rule, and draws exactly as without the switch.
    if (options.minSensorSpacing && *options.minSensorSpacing > 0.0)
        rules->SetMinSensorSpacing(*options.minSensorSpacing);
    return true;
}

} // namespace kelvorig
