#include "quality/observation_jacobian.h"

#include "geometry/random_draws.h"
#include "quality/reference_pose_error.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace kelvorig {
namespace {

using test::MakeLayout;
using test::ReferencePose;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct JacobianCase
{
    const char* name;
    int32_t kind;
    double tilt;  // 0 for the standard sweep in the reference
};

class ObservationJacobianTest : public ::testing::TestWithParam<JacobianCase>
{
};

// Partials from the dual numbers agree with central differences of the two angles, at
// random poses in front of the base station.
TEST_P(ObservationJacobianTest, MatchesFiniteDifferences)
{
    const JacobianCase& c = GetParam();
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
        const BaseStationModel baseStation{c.kind, 0.5};
        SensorVisibility visibility(layout, nullptr, baseStation);
        visibility.visible[1] = false;  // a hidden sensor takes no rows
        visibility.visible[4] = false;

        ReferencePose pose;
        pose << DrawRange(engine, -0.3, 0.3), DrawRange(engine, -0.3, 0.3), DrawRange(engine, -2.5, -1.5),
            DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0), DrawRange(engine, -1.0, 1.0);

        std::vector<Eigen::Vector3d> seen;
        for (int i : {0, 2, 3, 5})
            seen.push_back(layout.positions[i]);
        const Eigen::MatrixXd expected = test::ReferenceJacobian(pose, seen, c.tilt);

        ObservationJacobian jacobian(8, 6);
        double residuals[64];
        ASSERT_TRUE(BuildObservationJacobian(visibility, pose.data(), 8, residuals, &jacobian));
        for (int row = 0; row < 8; ++row)
        {
            const Eigen::Vector2d angles = test::ReferenceAngles(pose, seen[row / 2], c.tilt);
            EXPECT_NEAR(residuals[row], angles[row % 2], 1e-12) << "row " << row;
            for (int column = 0; column < 6; ++column)
                EXPECT_NEAR(jacobian(row, column), expected(row, column), 1e-6 * (1.0 + std::abs(expected(row, column))))
                    << "trial " << trial << " row " << row << " column " << column;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(SweepModels, ObservationJacobianTest,
                         ::testing::Values(JacobianCase{"Standard", 0, 0.0}, JacobianCase{"Tilted", 7, 0.5}),
                         [](const auto& info) { return std::string(info.param.name); });

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

TEST(ObservationJacobian, SensorStraightAheadSeesBothAnglesAtRightAngles)
{
    const SensorLayout layout = OneSensorAt(0.0f, 0.0f, 0.0f);
    const BaseStationModel standard;
    const SensorVisibility visibility(layout, nullptr, standard);
    const double pose[6] = {0.0, 0.0, -2.0, 0.0, 0.0, 0.0};
    double residuals[64];
    ASSERT_TRUE(BuildObservationJacobian(visibility, pose, 2, residuals, nullptr));
    EXPECT_EQ(residuals[0], std::numbers::pi / 2.0);
    EXPECT_EQ(residuals[1], std::numbers::pi / 2.0);
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
TEST(ObservationJacobian, OneFailedSensorLeavesOutputsAlone)
{
    const SensorLayout layout = MakeLayout(
        {Eigen::Vector3f(0.1f, 0.0f, 0.0f), Eigen::Vector3f(0.0f, 5.0f, 0.0f), Eigen::Vector3f(0.0f, 0.0f, 0.1f)},
        {Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(0, 0, 1), Eigen::Vector3f(0, 0, 1)});
    const BaseStationModel tilted{7, 0.5};
    const SensorVisibility visibility(layout, nullptr, tilted);
    const double pose[6] = {0.0, 0.0, -2.0, 0.0, 0.0, 0.0};
    double residuals[64];
    for (double& r : residuals)
        r = kNaN;
    ObservationJacobian jacobian = ObservationJacobian::Constant(6, 6, -3.0);
    EXPECT_FALSE(BuildObservationJacobian(visibility, pose, 6, residuals, &jacobian));
    EXPECT_TRUE((jacobian.array() == -3.0).all());
    EXPECT_TRUE(std::isnan(residuals[0]));
}

TEST(ObservationJacobian, KindSelectsSweepModel)
{
    const std::vector<std::pair<int32_t, int32_t>> table = {{0, 1}, {7, 2}, {8, 2}, {10, 3}, {11, 4},
                                                            {13, 5}, {9, 1}, {-1, 1}, {12, 1}};
    for (const auto& [kind, sweepModel] : table)
        EXPECT_EQ(SweepModelForKind(kind), sweepModel) << "kind " << kind;
}

// Kinds 7 and 13 select different sweep models that compute the same angles.
TEST(ObservationJacobian, TiltedModelsShareOneFormula)
{
    const SensorLayout layout = OneSensorAt(0.1f, 0.05f, 0.0f);
    const double pose[6] = {0.0, 0.0, -2.0, 0.1, 0.2, 0.3};
    double first[64], second[64];
    const BaseStationModel seven{7, 0.3}, thirteen{13, 0.3};
    ASSERT_TRUE(BuildObservationJacobian(SensorVisibility(layout, nullptr, seven), pose, 2, first, nullptr));
    ASSERT_TRUE(BuildObservationJacobian(SensorVisibility(layout, nullptr, thirteen), pose, 2, second, nullptr));
    EXPECT_EQ(first[0], second[0]);
    EXPECT_EQ(first[1], second[1]);
}

} // namespace
} // namespace kelvorig
