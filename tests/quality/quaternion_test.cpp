#include "quality/quaternion.h"

#include "quality/dual_number.h"

#include <Eigen/Geometry>
#include <gtest/gtest.h>

namespace kelvorig {
namespace {

// The unit form agrees with Eigen's Hamilton quaternions for unit quaternions.
TEST(Quaternion, RotatesLikeHamiltonQuaternions)
{
    const Eigen::Quaterniond rotations[] = {
        Eigen::Quaterniond(Eigen::AngleAxisd(0.3, Eigen::Vector3d(1, 2, 3).normalized())),
        Eigen::Quaterniond(Eigen::AngleAxisd(2.9, Eigen::Vector3d(-1, 0.5, 0.2).normalized())),
        Eigen::Quaterniond(Eigen::AngleAxisd(1.5707963267948966, Eigen::Vector3d::UnitZ())),
    };
    const Eigen::Vector3d v(0.4, -1.2, 0.7);
    for (const Eigen::Quaterniond& e : rotations)
    {
        const Triple<double> r = RotateByUnitQuaternion(Quaternion<double>{e.w(), e.x(), e.y(), e.z()},
                                                        Triple<double>{v.x(), v.y(), v.z()});
        const Eigen::Vector3d expected = e * v;
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(r[i], expected[i], 1e-14);
    }
    // A quarter turn about Z takes X to Y.
    const double h = std::sqrt(0.5);
    const Triple<double> y = RotateByUnitQuaternion(Quaternion<double>{h, 0.0, 0.0, h}, Triple<double>{1.0, 0.0, 0.0});
    EXPECT_NEAR(y[0], 0.0, 1e-15);
    EXPECT_NEAR(y[1], 1.0, 1e-15);
}

// The form is not normalised: a quaternion of twice the length doesn't give the rotation.
TEST(Quaternion, UnitFormDoesNotNormalise)
{
    const Triple<double> r = RotateByUnitQuaternion(Quaternion<double>{2.0, 0.0, 0.0, 0.0}, Triple<double>{1.0, 2.0, 3.0});
    EXPECT_EQ(r, (Triple<double>{1.0, 2.0, 3.0}));  // u = 0: v whatever w is
    const Triple<double> s = RotateByUnitQuaternion(Quaternion<double>{0.0, 0.0, 0.0, 2.0}, Triple<double>{1.0, 0.0, 0.0});
    EXPECT_EQ(s, (Triple<double>{-7.0, 0.0, 0.0}));
}

// Plain coordinates enter the dual-number rotation as constants.
TEST(Quaternion, RotatesPlainVectorsByDualQuaternions)
{
    const Quaternion<DualNumber> q = {DualNumber::Parameter(1.0, 3), DualNumber(0.0), DualNumber(0.0), DualNumber(0.0)};
    const Triple<DualNumber> r = RotateByUnitQuaternion(q, Triple<double>{1.0, 2.0, 3.0});
    EXPECT_EQ(r[0].value, 1.0);
    EXPECT_EQ(r[2].value, 3.0);
    for (const DualNumber& c : r)
        for (double partial : c.partials)
            EXPECT_EQ(partial, 0.0);
}

} // namespace
} // namespace kelvorig
