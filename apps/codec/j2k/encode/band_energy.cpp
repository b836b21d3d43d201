// SPDX-License-Identifier: Apache-2.0
// Norms by the autocorrelations of the synthesis filters.
#include "codec/j2k/encode/band_energy.h"

#include <algorithm>
#include <array>
#include <span>

#include "codec/j2k/headers.h"

namespace qel::codec::j2k {

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

constexpr size_t place(int lag) { return size_t(lag + kReach); }

constexpr double at(Taps taps, int n)
{
    auto index = size_t(n < 0 ? -n : n);
    return index < taps.size() ? taps[index] : 0;
}

constexpr Correlation autocorrelation(Taps taps)
{
    Correlation result = {};
    for (int lag = -kReach; lag <= kReach; ++lag)
        for (int n = -kReach; n <= kReach; ++n) result[place(lag)] += at(taps, n) * at(taps, n + lag);
    return result;
}

constexpr Correlation oneLevelUp(const Correlation& below, const Correlation& low)
{
    Correlation result = {};
    for (int lag = -kReach; lag <= kReach; ++lag)
        for (int n = -kReach; n <= kReach; ++n)
            if (int rest = lag - 2 * n; rest >= -kReach && rest <= kReach)
                result[place(lag)] += below[place(n)] * low[place(rest)];
    return result;
}

// By level. That of level 0 is 1.
using Energies = std::array<double, kMaxLevels + 1>;

constexpr Energies energiesOf(Taps first, Taps low)
{
    Energies energies = {1};
    const Correlation up = autocorrelation(low);
    Correlation current = autocorrelation(first);
    for (size_t level = 1; level < energies.size(); ++level, current = oneLevelUp(current, up))
        energies[level] = current[place(0)];
    return energies;
}

constexpr Energies kLowEnergies53 = energiesOf(kLow53, kLow53), kHighEnergies53 = energiesOf(kHigh53, kLow53);
constexpr Energies kLowEnergies97 = energiesOf(kLow97, kLow97), kHighEnergies97 = energiesOf(kHigh97, kLow97);

double lineEnergy(bool isReversible, uint32_t length, int level, bool isHigh)
{
    const Energies& low = isReversible ? kLowEnergies53 : kLowEnergies97;
    const Energies& high = isReversible ? kHighEnergies53 : kHighEnergies97;
    // A low coefficient of a line that is shorter than its waveform stands for the mean of all.
    return std::min((isHigh ? high : low)[size_t(level)], double(length));
}

}

double bandEnergy(bool isReversible, uint32_t width, uint32_t height, int level, BandKind kind)
{
    bool highX = kind == BandKind::hl || kind == BandKind::hh;
    bool highY = kind == BandKind::lh || kind == BandKind::hh;
    return lineEnergy(isReversible, width, level, highX) * lineEnergy(isReversible, height, level, highY);
}

double componentEnergy(bool isReversible, int component)
{
    if (component > 2) return 1; // alpha is not transformed
    // Sums of the squared coefficients of the inverse transforms (G-6 to G-8 without rounding, G-12 to G-14).
    static constexpr double kReversible[] = {3, 0.6875, 0.6875};
    static constexpr double kIrreversible[] = {3, 0.344136 * 0.344136 + 1.772 * 1.772,
                                               1.402 * 1.402 + 0.714136 * 0.714136};
    return isReversible ? kReversible[component] : kIrreversible[component];
}

}
