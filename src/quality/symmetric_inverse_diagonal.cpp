#include "quality/symmetric_inverse_diagonal.h"

#include <limits>

namespace kelvorig {

bool SymmetricInverseDiagonal(const Matrix6d& h, double minRelativePivot, Vector6d& diagonal)
{
    constexpr int kSize = 6;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    double lower[kSize][kSize] = {}; // unit lower triangle of L, below the diagonal
    double pivots[kSize];
    double inversePivots[kSize]; // multiplied by rather than divided by: divisions are slow

    for (int j = 0; j < kSize; ++j)
    {
        double scaled[kSize]; // L(j, k)·d(k)
        double pivot = h(j, j);
        for (int k = 0; k < j; ++k)
        {
            scaled[k] = lower[j][k] * pivots[k];
            pivot -= lower[j][k] * scaled[k];
        }
        // Written so that a NaN pivot fails too.
        if (!(pivot > 0.0 && pivot < kInfinity && pivot >= minRelativePivot * h(j, j)))
            return false;
        pivots[j] = pivot;
        inversePivots[j] = 1.0 / pivot;
        for (int i = j + 1; i < kSize; ++i)
        {
            double sum = h(i, j);
            for (int k = 0; k < j; ++k)
                sum -= lower[i][k] * scaled[k];
            lower[i][j] = sum * inversePivots[j];
        }
    }

    // h⁻¹ = L⁻ᵀ·D⁻¹·L⁻¹, so its diagonal entry i is the sum over k of L⁻¹(k, i)² / d(k).
    // Column i of L⁻¹ by forward substitution; entries above the diagonal are 0.
    for (int i = 0; i < kSize; ++i)
    {
        double column[kSize];
        column[i] = 1.0;
        double variance = inversePivots[i];
        for (int k = i + 1; k < kSize; ++k)
        {
            double sum = 0.0;
            for (int m = i; m < k; ++m)
                sum -= lower[k][m] * column[m];
            column[k] = sum;
            variance += sum * sum * inversePivots[k];
        }
        diagonal[i] = variance;
    }
    return true;
}

} // namespace kelvorig
