#include "quality/observation_jacobian.h"

#include "quality/reference_pose_error.h"
#include "support/random_draws.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvorig {
namespace {

// Partials from the dual numbers agree with central differences of the two angles at random
// poses in front of the base station, for the standard and the tilted sweep; the zero
// rotation is among them and has finite partials.
TEST(ObservationJacobian, MatchesFiniteDifferences)
{
    for (const auto& [kind, tilt] : {std::pair<int32_t, double>{0, 0.0}, {7, 0.5}})
    {
        RandomEngine engine(1234);
        for (int trial = 0; trial < 20; ++trial)
        {
            std::vector<Eigen::Vector3f> points;
            for (int i = 0; i < 6; ++i)
                points.push_back(Eigen::Vector3d(DrawRange(engine, -0.1, 0.1), DrawRange(engine, -0.1, 0.1),
                                                 DrawRange(engine, -0.1, 0.1))
                                     .cast<float>());
            const SensorLayout layout = test::MakeLayout(points, std::vector<Eigen::Vector3f>(6, {0, 0, 1}));
            const BaseStationModel baseStation{kind, 0.5};
            SensorVisibility visibility(layout, nullptr, baseStation);
            visibility.visible[1] = visibility.visible[4] = false; // hidden sensors take no rows
            test::ReferencePose pose;
            pose << DrawRange(engine, -0.3, 0.3), DrawRange(engine, -0.3, 0.3), DrawRange(engine, -2.5, -1.5),
                DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0);
            if (trial == 0)
                pose.tail<3>().setZero();
            std::vector<Eigen::Vector3d> seen;
            for (int i : {0, 2, 3, 5})
                seen.push_back(layout.positions[i]);
            const Eigen::MatrixXd expected = test::ReferenceJacobian(pose, seen, tilt);

            ObservationJacobian jacobian(8, 6);
            double residuals[64];
            ASSERT_TRUE(BuildObservationJacobian(visibility, pose.data(), 8, residuals, &jacobian));
            ASSERT_TRUE(jacobian.allFinite());
            for (int row = 0; row < 8; ++row)
            {
                EXPECT_NEAR(residuals[row], test::ReferenceAngles(pose, seen[row / 2], tilt)[row % 2], 1e-12);
                for (int column = 0; column < 6; ++column)
                    EXPECT_NEAR(jacobian(row, column), expected(row, column),
                                1e-6 * (1.0 + std::abs(expected(row, column))))
                        << "trial " << trial << " row " << row << " column " << column;
            }
        }
    }
}

// On the base station's own Z axis the tilted sweep divides by zero: y not 0 fails the sensor
// and leaves the Jacobian alone, y = 0 gives angles that are not numbers but still succeeds.
TEST(ObservationJacobian, TiltedSweepOnTheAxis)
{
    const BaseStationModel tilted{7, 0.5};
    const double pose[6] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
    double residuals[64];
    const SensorLayout off = test::MakeLayout({{0.0f, 0.1f, 0.0f}}, {{0, 0, 1}});
    ObservationJacobian untouched = ObservationJacobian::Constant(2, 6, 7.0);
    EXPECT_FALSE(BuildObservationJacobian(SensorVisibility(off, nullptr, tilted), pose, 2, residuals, &untouched));
    EXPECT_TRUE((untouched.array() == 7.0).all());
    const SensorLayout origin = test::MakeLayout({{0.0f, 0.0f, 0.0f}}, {{0, 0, 1}});
    ASSERT_TRUE(BuildObservationJacobian(SensorVisibility(origin, nullptr, tilted), pose, 2, residuals, nullptr));
    EXPECT_TRUE(std::isnan(residuals[0]) && std::isnan(residuals[1]));
}

// Without a surface the incidence test alone decides: a limit equal to the incidence cosine
// is not visible, one just below it is. The test reads the layout at each call, so a sensor
// moved in place counts at once. (The object at (0, 0, -2): the view is exactly +Z.)
TEST(SensorVisibility, IncidenceLimitIsStrictAndTheLayoutIsReadAtEachTest)
{
    SensorLayout layout = test::MakeLayout({Eigen::Vector3f::Zero()}, {Eigen::Vector3f(0.6f, 0.0f, 0.8f)});
    const SensorRayTest test{&layout, 0, nullptr};
    layout.cosMaxIncidence = layout.normals[0].z();
    EXPECT_FALSE(test.IsSensorVisible(kInitialPoseVector));
    layout.cosMaxIncidence = std::nextafter(layout.normals[0].z(), 0.0);
    EXPECT_TRUE(test.IsSensorVisible(kInitialPoseVector));
    layout.normals[0] = Eigen::Vector3d(0.0, 0.0, -1.0);
    EXPECT_FALSE(test.IsSensorVisible(kInitialPoseVector));
}

} // namespace
} // namespace kelvorig
