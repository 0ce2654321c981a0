#pragma once

#include "support/formatted_text.h"
#include "support/status.h"

#include <Eigen/Core>

#include <algorithm>
#include <vector>

namespace kelvorig {

// Copies a list of equally long lists (vectors or arrays) into a matrix, one row per outer element and one
// column per inner element. An empty list gives a 0 by 0 matrix. Lists of differing lengths
// fail with a message naming the smallest and largest length.
template <typename Inner, typename Matrix>
Status list_to_matrix(const std::vector<Inner>& lists, Matrix& matrix)
{
    if (lists.empty())
    {
        matrix.resize(0, 0);
        return {};
    }
    size_t minLength = lists.front().size();
    size_t maxLength = minLength;
    for (const Inner& inner : lists)
    {
        minLength = std::min(minLength, inner.size());
        maxLength = std::max(maxLength, inner.size());
    }
    if (minLength != maxLength)
    {
        return Status::Failure(
            Formatted("Error: list_to_matrix() list elements are not all the same size: (min: %d, max: %d)\n",
                      static_cast<int>(minLength), static_cast<int>(maxLength)));
    }
    matrix.resize(static_cast<Eigen::Index>(lists.size()), static_cast<Eigen::Index>(minLength));
    for (size_t row = 0; row < lists.size(); ++row)
    {
        for (size_t column = 0; column < minLength; ++column)
            matrix(static_cast<Eigen::Index>(row), static_cast<Eigen::Index>(column)) = lists[row][column];
    }
    return {};
}

} // namespace kelvorig
