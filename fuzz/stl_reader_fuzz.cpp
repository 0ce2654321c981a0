// Any bytes as an STL file, then the matrices and the unit, as the surface loader takes them.
#include "geometry/list_to_matrix.h"
#include "geometry/stl_reader.h"
#include "geometry/unit_scale.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace kelvorig;
    FloatLists vertices;
    IndexLists facets;
    FloatLists normals;
    if (!ReadStlBytes("fuzz.stl", std::string_view(reinterpret_cast<const char*>(data), size), vertices, facets,
                      normals))
        return 0;
    VertexMatrix V;
    TriangleMatrix F;
    NormalMatrix N;
    if (list_to_matrix(vertices, V) && list_to_matrix(facets, F) && list_to_matrix(normals, N) && V.rows() > 0)
        InferUnitScale(MeshExtentDiagonal(V));
    return 0;
}
