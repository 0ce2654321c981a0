#pragma once

#include "support/status.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvorig {

// Lists between an STL file and the mesh matrices: one inner list per vertex, facet or
// normal. Vertices and normals are 3 floats; a facet lists its vertices' indices, as many
// as the file gives it.
using FloatLists = std::vector<std::array<float, 3>>;
using IndexLists = std::vector<std::vector<int32_t>>;

// Reads a text or binary STL (told apart by contents, never by extension) as a triangle
// soup: every facet appends its own vertices, so facet t of a triangle file refers to
// vertices 3t, 3t+1, 3t+2. Normals are kept as the file states them. On failure the status
// says why; the lists are then not to be used.
Status ReadStlFile(const std::string& path, FloatLists& vertices, IndexLists& facets, FloatLists& normals);
// The same for the bytes of a file already in memory; `name` stands for the path in messages.
Status ReadStlBytes(const std::string& name, std::string_view bytes, FloatLists& vertices, IndexLists& facets,
                    FloatLists& normals);

} // namespace kelvorig
