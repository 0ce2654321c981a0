#include "quality/observation_jacobian.h"

#include "quality/reference_pose_error.h"
#include "support/random_draws.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

using test::MakeLayout;
using test::ReferencePose;

// Partials from the dual numbers agree with central differences of the two angles, at
// random poses in front of the base station, for the standard and the tilted sweep.
TEST(ObservationJacobian, MatchesFiniteDifferences)
{
    for (const auto& [kind, tilt] : {std::pair<int32_t, double>{0, 0.0}, {7, 0.5}})
    {
        RandomEngine engine(1234);
        for (int trial = 0; trial < 20; ++trial)
        {
            std::vector<Eigen::Vector3f> points, normals;
            for (int i = 0; i < 6; ++i)
            {
                points.emplace_back(static_cast<float>(DrawRange(engine, -0.1, 0.1)),
                                    static_cast<float>(DrawRange(engine, -0.1, 0.1)),
                                    static_cast<float>(DrawRange(engine, -0.1, 0.1)));
                normals.emplace_back(0.0f, 0.0f, 1.0f);
            }
            const SensorLayout layout = MakeLayout(points, normals);
            const BaseStationModel baseStation{kind, 0.5};
            SensorVisibility visibility(layout, nullptr, baseStation);
            visibility.visible[1] = false;  // a hidden sensor takes no rows
            visibility.visible[4] = false;

            ReferencePose pose;
            pose << DrawRange(engine, -0.3, 0.3), DrawRange(engine, -0.3, 0.3), DrawRange(engine, -2.5, -1.5),
                DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0);

            std::vector<Eigen::Vector3d> seen;
            for (int i : {0, 2, 3, 5})
                seen.push_back(layout.positions[i]);
            const Eigen::MatrixXd expected = test::ReferenceJacobian(pose, seen, tilt);

            ObservationJacobian jacobian(8, 6);
            double residuals[64];
            ASSERT_TRUE(BuildObservationJacobian(visibility, pose.data(), 8, residuals, &jacobian));
            for (int row = 0; row < 8; ++row)
            {
                const Eigen::Vector2d angles = test::ReferenceAngles(pose, seen[row / 2], tilt);
                EXPECT_NEAR(residuals[row], angles[row % 2], 1e-12) << "row " << row;
                for (int column = 0; column < 6; ++column)
                    EXPECT_NEAR(jacobian(row, column), expected(row, column), 1e-6 * (1.0 + std::abs(expected(row, column))))
                        << "trial " << trial << " row " << row << " column " << column;
            }
        }
    }
}

SensorLayout OneSensorAt(float x, float y, float z)
{
    return MakeLayout({Eigen::Vector3f(x, y, z)}, {Eigen::Vector3f(0.0f, 0.0f, 1.0f)});
}

TEST(ObservationJacobian, ZeroRotationHasFinitePartials)
{
    const SensorLayout layout = OneSensorAt(0.05f, -0.02f, 0.01f);
    const BaseStationModel standard;
    const SensorVisibility visibility(layout, nullptr, standard);
    const double pose[6] = {0.0, 0.0, -2.0, 0.0, 0.0, 0.0};
    ObservationJacobian jacobian(2, 6);
    double residuals[64];
    ASSERT_TRUE(BuildObservationJacobian(visibility, pose, 2, residuals, &jacobian));
    EXPECT_TRUE(jacobian.allFinite());

    ReferencePose reference;
    reference << 0.0, 0.0, -2.0, 0.0, 0.0, 0.0;
    const Eigen::MatrixXd expected = test::ReferenceJacobian(reference, {layout.positions[0]}, 0.0);
    EXPECT_TRUE(jacobian.isApprox(expected, 1e-6)) << jacobian << "\n\n" << expected;
}

// On the base station's own Z axis the tilted sweep divides by zero: y not 0 fails the
// sensor, y = 0 gives angles that are not numbers but still succeeds.
TEST(ObservationJacobian, TiltedSweepOnTheAxis)
{
    const BaseStationModel tilted{7, 0.5};
    const double pose[6] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    double residuals[64];

    const SensorLayout off = OneSensorAt(0.0f, 0.1f, 0.0f);
    const SensorVisibility offAxis(off, nullptr, tilted);
    ObservationJacobian untouched = ObservationJacobian::Constant(2, 6, 7.0);
    EXPECT_FALSE(BuildObservationJacobian(offAxis, pose, 2, residuals, &untouched));
    EXPECT_TRUE((untouched.array() == 7.0).all());

    const SensorLayout origin = OneSensorAt(0.0f, 0.0f, 0.0f);
    const SensorVisibility atOrigin(origin, nullptr, tilted);
    ASSERT_TRUE(BuildObservationJacobian(atOrigin, pose, 2, residuals, nullptr));
    EXPECT_TRUE(std::isnan(residuals[0]));
    EXPECT_TRUE(std::isnan(residuals[1]));
}

// One failing sensor fails the whole build, even with others that succeed around it.
// Kinds 7 and 13 select different sweep models that compute the same angles.
} // namespace
} // namespace kelvorig
