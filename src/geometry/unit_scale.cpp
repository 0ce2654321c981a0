#include "geometry/unit_scale.h"

#include <cmath>

namespace kelvorig {

float MeshExtentDiagonal(const VertexMatrix& V)
{
    float sum = 0.0f;
    for (Eigen::Index column = 0; column < V.cols(); ++column)
    {
        const float extent = V.col(column).maxCoeff() - V.col(column).minCoeff();
        sum += extent * extent;
    }
    return std::sqrt(sum);
}

double InferUnitScale(float diagonal)
{
    constexpr double kLargestMetreDiagonal = 5.0;
    return kLargestMetreDiagonal > diagonal ? 1.0 : 0.001;
}

} // namespace kelvorig
