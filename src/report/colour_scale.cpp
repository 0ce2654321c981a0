#include "report/colour_scale.h"

#include <algorithm>
#include <cmath>

namespace kelvorig {

const std::array<Rgb, kErrorScaleStops> kErrorScale = {{{0.267004, 0.004874, 0.329415},
                                                        {0.282623, 0.140926, 0.457517},
                                                        {0.253935, 0.265254, 0.529983},
                                                        {0.206756, 0.371758, 0.553117},
                                                        {0.163625, 0.471133, 0.558148},
                                                        {0.127568, 0.566949, 0.550556},
                                                        {0.134692, 0.658636, 0.517649},
                                                        {0.208030, 0.718701, 0.472873},
                                                        {0.477504, 0.821444, 0.318195},
                                                        {0.741388, 0.873449, 0.149561},
                                                        {0.993248, 0.906157, 0.143936}}};

namespace {

Rgb Mix(const Rgb& a, const Rgb& b, double t)
{
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

} // namespace

Rgb ErrorColour(double errorMm)
{
    const double low = std::log10(kMapErrorLowMm);
    const double high = std::log10(kMapErrorHighMm);
    double t = (std::log10(std::max(errorMm, kMapErrorLowMm)) - low) / (high - low);
    t = std::clamp(std::isnan(t) ? 1.0 : t, 0.0, 1.0);
    const double position = t * static_cast<double>(kErrorScaleStops - 1);
    const size_t stop = std::min(static_cast<size_t>(position), kErrorScaleStops - 2);
    return Mix(kErrorScale[stop], kErrorScale[stop + 1], position - static_cast<double>(stop));
}

Rgb CountColour(int32_t count, int32_t maxCount)
{
    constexpr Rgb kNone = {0.97, 0.98, 1.0};
    constexpr Rgb kMost = {0.03, 0.19, 0.42};
    if (maxCount <= 0)
        return kNone;
    return Mix(kNone, kMost, std::clamp(static_cast<double>(count) / maxCount, 0.0, 1.0));
}

} // namespace kelvorig
