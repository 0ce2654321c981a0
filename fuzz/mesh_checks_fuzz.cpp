// Any bytes as an STL sensor surface: the checks and mends of the surface loader (unusable
// facets, winding, stored normals), then the same mesh as a keep-out volume and as the points of
// a convex hull, as the seat rules take them.
#include "geometry/convex_hull.h"
#include "geometry/keep_out_volume.h"
#include "geometry/list_to_matrix.h"
#include "geometry/mesh_checks.h"
#include "geometry/stl_reader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvorig;
    FloatLists vertices;
    IndexLists facets;
    FloatLists normals;
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    if (!ReadStlBytes("fuzz.stl", std::string_view(reinterpret_cast<const char*>(data), size), vertices, facets,
                      normals) ||
        !list_to_matrix(vertices, V) || !list_to_matrix(facets, F) || !list_to_matrix(normals, N) || F.rows() == 0 ||
        F.cols() < 3 || N.rows() != F.rows())
        return 0;
    std::string warnings;
    DropUnusableFacets(warnings, "fuzz.stl", V, F, N);
    if (F.rows() == 0)
        return 0;
    const MeshProblems problems = FindMeshProblems(V, F, N);
    RepairOrientation(warnings, "fuzz.stl", problems, F, N, V, true);
    WarnOfMeshProblems(warnings, "fuzz.stl", problems);
    if (CountOpenEdges(V, F) == 0)
    {
        const KeepOutVolume volume(V, F);
        static_cast<void>(volume.Contains(V.row(0).transpose()));
    }
    std::vector<Eigen::Vector3d> points;
    for (Eigen::Index row = 0; row < V.rows(); ++row)
        points.push_back(V.row(row).transpose().cast<double>());
    if (const std::optional<ConvexHull> hull = ConvexHull::Build(points))
        static_cast<void>(hull->ExitDistance(points[0], Eigen::Vector3d::UnitZ()));
    return 0;
}
