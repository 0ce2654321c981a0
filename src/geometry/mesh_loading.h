#pragma once

#include "geometry/mesh_matrices.h"
#include "support/status.h"

#include <span>
#include <string>

namespace kelvorig {

// Reads one STL file into matrices (V: vertices by 3, file unit; F: facets by vertices
// per facet; N: facets by 3, normals as stated). Row t of F and of N is facet t of the
// file. Fails, saying why, when the file can't be read.
Status ReadMeshMatrices(const std::string& path, VertexMatrix& V, TriangleMatrix& F, NormalMatrix& N);

// Reads the files in order and stacks them: rows of each file follow those of the files
// before it, and its indices are shifted to the stacked vertex rows. An empty list gives
// success and leaves the outputs untouched; any failure keeps nothing.
Status ReadMeshList(std::span<const std::string> paths, VertexMatrix& V, TriangleMatrix& F, NormalMatrix& N);

} // namespace kelvorig
