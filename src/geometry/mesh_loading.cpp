#include "geometry/mesh_loading.h"

#include "geometry/list_to_matrix.h"
#include "geometry/stl_reader.h"

#include <algorithm>

namespace kelvorig {
namespace {

// Stacks `more` under `stacked`, adding `offset` to each of its entries. note: files whose
// facets list different numbers of vertices keep the columns they share; only the first
// three are ever used.
template <typename Matrix>
void AppendRows(Matrix& stacked, const Matrix& more, typename Matrix::Scalar offset)
{
    if (more.rows() == 0)
        return;
    if (stacked.rows() == 0)
    {
        stacked = more.array() + offset;
        return;
    }
    const Eigen::Index columns = std::min(stacked.cols(), more.cols());
    Matrix joined(stacked.rows() + more.rows(), columns);
    joined.topRows(stacked.rows()) = stacked.leftCols(columns);
    joined.bottomRows(more.rows()) = more.leftCols(columns).array() + offset;
    stacked = std::move(joined);
}

} // namespace

Status ReadMeshMatrices(const std::string& path, VertexMatrix& V, TriangleMatrix& F, NormalMatrix& N)
{
    FloatLists vertices;
    IndexLists facets;
    FloatLists normals;
    for (Status status : {ReadStlFile(path, vertices, facets, normals), list_to_matrix(vertices, V),
                          list_to_matrix(facets, F), list_to_matrix(normals, N)})
    {
        if (!status.ok())
            return status;
    }
    return {};
}

Status ReadMeshList(std::span<const std::string> paths, VertexMatrix& V, TriangleMatrix& F, NormalMatrix& N)
{
    if (paths.empty())
        return {};
    VertexMatrix stackedV;
    TriangleMatrix stackedF;
    NormalMatrix stackedN;
    for (const std::string& path : paths)
    {
        VertexMatrix fileV;
        TriangleMatrix fileF;
        NormalMatrix fileN;
        if (Status status = ReadMeshMatrices(path, fileV, fileF, fileN); !status.ok())
            return status;
        AppendRows(stackedF, fileF, static_cast<int32_t>(stackedV.rows()));
        AppendRows(stackedV, fileV, 0.0f);
        AppendRows(stackedN, fileN, 0.0f);
    }
    V = std::move(stackedV);
    F = std::move(stackedF);
    N = std::move(stackedN);
    return {};
}

} // namespace kelvorig
