// Norms by the autocorrelations of the synthesis filters.
#include "codec/j2k_band_energy.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

namespace qel::codec {

namespace {

// Taps of symmetric synthesis filters from the middle one on.
constexpr double kLow53[] = {1, 0.5}, kHigh53[] = {0.75, -0.25, -0.125};
constexpr double kLow97[] = {1.115087052456994, 0.591271763114247, -0.057543526228500, -0.091271763114250};
constexpr double kHigh97[] = {0.602949018236360, -0.266864118442875, -0.078223266528990, 0.016864118442875,
                              0.026748757410810};

using Taps = std::span<const double>;

// Products of a waveform with itself, moved by so many samples either way. One level up, a waveform w becomes
// sum(w[n] low[k - 2n]), and of its autocorrelation only this much is needed.
constexpr int kReach = 8;
using Correlation = std::array<double, 2 * kReach + 1>;

double at(Taps taps, int n) { return size_t(std::abs(n)) < taps.size() ? taps[size_t(std::abs(n))] : 0; }

Correlation autocorrelation(Taps taps)
{
    Correlation result = {};
    for (int lag = -kReach; lag <= kReach; ++lag)
        for (int n = -kReach; n <= kReach; ++n) result[size_t(lag + kReach)] += at(taps, n) * at(taps, n + lag);
    return result;
}

Correlation oneLevelUp(const Correlation& below, const Correlation& low)
{
    Correlation result = {};
    for (int lag = -kReach; lag <= kReach; ++lag)
        for (int n = -kReach; n <= kReach; ++n)
            if (int rest = lag - 2 * n; std::abs(rest) <= kReach)
                result[size_t(lag + kReach)] += below[size_t(n + kReach)] * low[size_t(rest + kReach)];
    return result;
}

double lineEnergy(bool isReversible, uint32_t length, int level, bool isHigh)
{
    if (level == 0) return 1;
    Correlation low = autocorrelation(isReversible ? Taps(kLow53) : Taps(kLow97));
    Correlation current = isHigh ? autocorrelation(isReversible ? Taps(kHigh53) : Taps(kHigh97)) : low;
    while (--level > 0) current = oneLevelUp(current, low);
    // A low coefficient of a line that is shorter than its waveform stands for the mean of all.
    return std::min(current[kReach], double(length));
}

}

double bandEnergy(bool isReversible, uint32_t width, uint32_t height, int level, J2kBandKind kind)
{
    bool highX = kind == J2kBandKind::hl || kind == J2kBandKind::hh;
    bool highY = kind == J2kBandKind::lh || kind == J2kBandKind::hh;
    return lineEnergy(isReversible, width, level, highX) * lineEnergy(isReversible, height, level, highY);
}

double componentEnergy(bool isReversible, int component)
{
    // Sums of the squared coefficients of the inverse transforms (G-6 to G-8 without rounding, G-12 to G-14).
    static constexpr double kReversible[] = {3, 0.6875, 0.6875};
    static constexpr double kIrreversible[] = {3, 0.344136 * 0.344136 + 1.772 * 1.772,
                                               1.402 * 1.402 + 0.714136 * 0.714136};
    return isReversible ? kReversible[component] : kIrreversible[component];
}

}
