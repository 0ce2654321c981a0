#include "quality/dual_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace kelvorig {
namespace {

// x carries partial 0, y partial 1; every operation's partials follow the chain rule.
struct Rule
{
    const char* name;
    std::function<DualNumber(const DualNumber&, const DualNumber&)> dual;
    std::function<double(double, double)> plain;
};

TEST(DualNumber, OperationsFollowTheChainRule)
{
    const Rule rules[] = {
        {"sum", [](auto& x, auto& y) { return x + y; }, [](double x, double y) { return x + y; }},
        {"difference", [](auto& x, auto& y) { return x - y; }, [](double x, double y) { return x - y; }},
        {"product", [](auto& x, auto& y) { return x * y; }, [](double x, double y) { return x * y; }},
        {"quotient", [](auto& x, auto& y) { return x / y; }, [](double x, double y) { return x / y; }},
        {"negation", [](auto& x, auto&) { return -x; }, [](double x, double) { return -x; }},
        {"sqrt", [](auto& x, auto& y) { return sqrt(x * y); }, [](double x, double y) { return std::sqrt(x * y); }},
        {"sin", [](auto& x, auto& y) { return sin(x * y); }, [](double x, double y) { return std::sin(x * y); }},
        {"cos", [](auto& x, auto& y) { return cos(x - y); }, [](double x, double y) { return std::cos(x - y); }},
        {"asin", [](auto& x, auto& y) { return asin(x * y); }, [](double x, double y) { return std::asin(x * y); }},
        {"atan2", [](auto& x, auto& y) { return atan2(y, x); }, [](double x, double y) { return std::atan2(y, x); }},
        {"atan2 behind", [](auto& x, auto& y) { return atan2(-y, -x); },
         [](double x, double y) { return std::atan2(-y, -x); }},
        {"plain factor", [](auto& x, auto&) { return DualNumber(3.0) * x + 1.5; },
         [](double x, double) { return 3.0 * x + 1.5; }},
    };
    const double x = 0.7, y = 0.4, h = 1e-6;
    const DualNumber dx = DualNumber::Parameter(x, 0);
    const DualNumber dy = DualNumber::Parameter(y, 1);
    for (const Rule& rule : rules)
    {
        const DualNumber r = rule.dual(dx, dy);
        EXPECT_EQ(r.value, rule.plain(x, y)) << rule.name;
        EXPECT_NEAR(r.partials[0], (rule.plain(x + h, y) - rule.plain(x - h, y)) / (2 * h), 1e-8) << rule.name;
        EXPECT_NEAR(r.partials[1], (rule.plain(x, y + h) - rule.plain(x, y - h)) / (2 * h), 1e-8) << rule.name;
        for (int i = 2; i < 6; ++i)
            EXPECT_EQ(r.partials[i], 0.0) << rule.name;
    }
}

TEST(DualNumber, PlainNumbersEnterWithZeroPartials)
{
    const DualNumber plain = 2.5;
    EXPECT_EQ(plain.value, 2.5);
    for (double partial : plain.partials)
        EXPECT_EQ(partial, 0.0);
    const DualNumber seeded = DualNumber::Parameter(-1.0, 4);
    EXPECT_EQ(seeded.partials[4], 1.0);
    EXPECT_EQ(seeded.partials[3], 0.0);
}

// A plain number takes part in the full chain rule: an infinite value times its zero
// partial is not a number.
TEST(DualNumber, InfinityTimesPlainNumberGivesNaNPartials)
{
    const DualNumber infinite = DualNumber::Parameter(std::numeric_limits<double>::infinity(), 0);
    const DualNumber r = infinite * DualNumber(2.0);
    EXPECT_TRUE(std::isinf(r.value));
    EXPECT_TRUE(std::isnan(r.partials[1]));
}

} // namespace
} // namespace kelvorig
