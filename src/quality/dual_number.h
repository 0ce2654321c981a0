#pragma once

#include <array>
#include <cmath>

namespace kelvorig {

// A 64-bit value with its six partial derivatives with respect to the pose parameters
// (tx, ty, tz, rx, ry, rz): forward-mode differentiation in one pass. A plain number
// converts implicitly, with zero partials, and then takes part in the full chain rule
// (so an infinite value times a zero partial gives NaN, as the arithmetic says).
struct DualNumber
{
    static constexpr int kPartials = 6;

    double value = 0.0;
    std::array<double, kPartials> partials = {};

    DualNumber() = default;
    DualNumber(double plain) : value(plain) {} // NOLINT: implicit on purpose

    // The pose parameter `index` with value `plain`: partial `index` is 1, the others 0.
    static DualNumber Parameter(double plain, int index)
    {
        DualNumber seeded(plain);
        seeded.partials[index] = 1.0;
        return seeded;
    }
};

inline DualNumber operator-(const DualNumber& a)
{
    DualNumber r(-a.value);
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = -a.partials[i];
    return r;
}

inline DualNumber operator+(const DualNumber& a, const DualNumber& b)
{
    DualNumber r(a.value + b.value);
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = a.partials[i] + b.partials[i];
    return r;
}

inline DualNumber operator-(const DualNumber& a, const DualNumber& b)
{
    DualNumber r(a.value - b.value);
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = a.partials[i] - b.partials[i];
    return r;
}

inline DualNumber operator*(const DualNumber& a, const DualNumber& b)
{
    DualNumber r(a.value * b.value);
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = a.partials[i] * b.value + a.value * b.partials[i];
    return r;
}

inline DualNumber operator/(const DualNumber& a, const DualNumber& b)
{
    DualNumber r(a.value / b.value);
    const double squared = b.value * b.value;
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = (a.partials[i] * b.value - a.value * b.partials[i]) / squared;
    return r;
}

// Applies the derivative `slope` of an outer function to every partial of `inner`.
inline DualNumber ChainRule(double value, double slope, const DualNumber& inner)
{
    DualNumber r(value);
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = slope * inner.partials[i];
    return r;
}

inline DualNumber sqrt(const DualNumber& a)
{
    const double root = std::sqrt(a.value);
    return ChainRule(root, 0.5 / root, a);
}

inline DualNumber sin(const DualNumber& a)
{
    return ChainRule(std::sin(a.value), std::cos(a.value), a);
}

inline DualNumber cos(const DualNumber& a)
{
    return ChainRule(std::cos(a.value), -std::sin(a.value), a);
}

inline DualNumber asin(const DualNumber& a)
{
    return ChainRule(std::asin(a.value), 1.0 / std::sqrt(1.0 - a.value * a.value), a);
}

inline DualNumber atan2(const DualNumber& y, const DualNumber& x)
{
    DualNumber r(std::atan2(y.value, x.value));
    const double squared = x.value * x.value + y.value * y.value;
    for (int i = 0; i < DualNumber::kPartials; ++i)
        r.partials[i] = (x.value * y.partials[i] - y.value * x.partials[i]) / squared;
    return r;
}

} // namespace kelvorig
