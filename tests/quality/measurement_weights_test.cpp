#include "quality/measurement_weights.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// The weights equal (1/A)(I - B/(A + 32B)·P), P = 1 where the parities agree: own noise A per
// angle, shared noise B per axis spread over all 32 slots.
TEST(MeasurementWeights, MatchesClosedForm)
{
    const double a = 2.2206609902451057e-09, b = 1.579136704174297e-10;
    const Eigen::MatrixXd weights = MeasurementWeights();
    ASSERT_EQ(std::make_pair(weights.rows(), weights.cols()), std::make_pair(Eigen::Index{64}, Eigen::Index{64}));
    for (int i = 0; i < 64; ++i)
        for (int j = 0; j < 64; ++j)
            EXPECT_NEAR(weights(i, j), ((i == j) - b / (a + 32.0 * b) * (i % 2 == j % 2)) / a, 1e-9 / a) << i << ", " << j;
}

} // namespace
} // namespace kelvorig
