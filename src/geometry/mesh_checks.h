#pragma once

#include "geometry/mesh_matrices.h"

#include <cstdint>
#include <string>

namespace kelvorig {

// What is wrong with one mesh, as loaded (file unit); all zero for a sound closed mesh.
struct MeshProblems
{
    int64_t facets = 0;
    int64_t badStoredNormals = 0;     // zero or not finite
    int64_t flippedStoredNormals = 0; // more than 90 degrees from the winding's normal
    int64_t zeroAreaFacets = 0;
    int64_t openEdges = 0;  // used by one facet only, vertices joined where equal
    bool insideOut = false; // closed, and the winding encloses a negative volume
};

// Looks at every facet of V (vertex rows, file unit), F (facets by 3 or more) and N (stored
// normals, facets by 3). Facets with a vertex that isn't finite are passed over.
MeshProblems FindMeshProblems(const VertexMatrix& V, const TriangleMatrix& F, const NormalMatrix& N);

// Edges used by exactly one facet, with vertices of equal coordinates taken as one.
int64_t CountOpenEdges(const VertexMatrix& V, const TriangleMatrix& F);

// Makes the winding and the stored normals of a mesh with `problems` agree, with a warning line
// for each fix: a closed mesh wound inside out is turned outside in; an open mesh, whose winding
// encloses nothing to check it by, is turned when most stored normals point against it; then,
// when `storedNormalsUsed`, a stored normal that is zero, not finite or against the winding is
// replaced by the winding's. So a sound mesh seats its sensors facing out whichever of the two
// was wrong, and /normalsfromwinding can never make a sound run worse.
void RepairOrientation(std::string& warnings, const std::string& path, const MeshProblems& problems, TriangleMatrix& F,
                       NormalMatrix& N, const VertexMatrix& V, bool storedNormalsUsed);

// Appends one "WARNING: " line to `warnings` for each other kind of problem found in the mesh
// `path`: facets of zero area and open edges.
void WarnOfMeshProblems(std::string& warnings, const std::string& path, const MeshProblems& problems);

// Appends a warning when the mesh's longest side (file unit) times unitScale is under 20 mm or
// over 2 m, naming the unit, `inferred` or not.
void WarnOfImplausibleSize(std::string& warnings, const std::string& path, float longestSide, double unitScale,
                           bool inferred);

// The largest coordinate, in the file's unit, a usable vertex may have: beyond it a mesh of
// any unit is no device (a kilometre in millimetres), and areas and hulls overflow.
constexpr float kLargestCoordinate = 1e6f;

// Leaves out of F (and N, row for row) every facet with a corner that is not finite or lies
// beyond kLargestCoordinate, and keeps in V only the corners of the facets left, in their
// order; appends a warning that counts them to `warnings`. Nothing changes when every facet is
// usable.
void DropUnusableFacets(std::string& warnings, const std::string& path, VertexMatrix& V, TriangleMatrix& F,
                        NormalMatrix& N);

// Facets by 3: each facet's normal from its winding, not unit length; zero where degenerate.
NormalMatrix WindingNormals(const VertexMatrix& V, const TriangleMatrix& F);

// True when some facet has a positive, finite area.
bool HasFacetOfPositiveArea(const VertexMatrix& V, const TriangleMatrix& F);

} // namespace kelvorig
