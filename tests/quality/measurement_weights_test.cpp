#include "quality/measurement_weights.h"

#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// The inverse equals (1/A)(I - B/(A + 32B)·P): shared noise spread over all 32 slots.
TEST(MeasurementWeights, MatchesClosedForm)
{
    const double a = 2.2206609902451057e-09;
    const double b = 1.579136704174297e-10;
    const Eigen::MatrixXd weights = MeasurementWeights();
    ASSERT_EQ(weights.rows(), 64);
    ASSERT_EQ(weights.cols(), 64);
    for (int i = 0; i < 64; ++i)
    {
        for (int j = 0; j < 64; ++j)
        {
            const double parity = (i % 2 == j % 2) ? 1.0 : 0.0;
            const double expected = ((i == j ? 1.0 : 0.0) - b / (a + 32.0 * b) * parity) / a;
            EXPECT_NEAR(weights(i, j), expected, 1e-9 * std::abs(1.0 / a)) << i << ", " << j;
        }
    }
}

} // namespace
} // namespace kelvorig
