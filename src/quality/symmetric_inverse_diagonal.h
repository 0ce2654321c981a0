#pragma once

#include "quality/pose_covariance.h"
#include "quality/pose_information.h"

namespace kelvorig {

// The diagonal of h⁻¹ for a symmetric positive definite 6 by 6 h, by an LDLᵀ factorisation
// without pivoting. Returns false, leaving `diagonal` alone, when a pivot is not a number,
// not finite, or below minRelativePivot times h's own diagonal entry at that place: h is
// then singular or too near it for the factorisation's result to be trusted.
bool SymmetricInverseDiagonal(const Matrix6d& h, double minRelativePivot, Vector6d& diagonal);

} // namespace kelvorig
