#pragma once

#include "geometry/mesh_matrices.h"

namespace kelvorig {

// Diagonal of the axis-aligned box around V (n by 3), in V's own unit, in 32-bit floats.
float MeshExtentDiagonal(const VertexMatrix& V);

// Metres per file unit: 1.0 when the diagonal is under 5 (metres), else 0.001 (millimetres).
// A diagonal of exactly 5, or not a number, counts as millimetres.
double InferUnitScale(float diagonal);

} // namespace kelvorig
