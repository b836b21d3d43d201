// SPDX-License-Identifier: Apache-2.0
// Distortion tables: the squared error before a decision less that after it.
#include "jpeg2k/coding/distortion_tables.h"

using namespace qel;

namespace {

// Magnitudes in units of 1/64 of the plane's step: the table's unit is half of their square's.
constexpr int kStep = 64;
constexpr int square(int x) { return x * x; }
constexpr int reduction(int magnitude, int before, int after)
{
    return (square(magnitude - before) - square(magnitude - after)) << (kDistortionFractionBits - 12);
}

template <int kEntries, class Rule> constexpr DistortionTable<kEntries> tableOf(Rule rule)
{
    DistortionTable<kEntries> table = {};
    for (int i = 0; i < kEntries; ++i) table.entries[i] = rule(i);
    return table;
}

// After a refinement the middle of the upper or the lower half.
constexpr int middleOfHalf(int magnitude) { return magnitude < kStep ? kStep / 2 : kStep * 3 / 2; }

}

constexpr DistortionTable<64> FsLossy_LUT = tableOf<64>([](int i) { return reduction(kStep + i, 0, kStep * 3 / 2); });
constexpr DistortionTable<64> FsLossless_LUT = tableOf<64>([](int i) { return reduction(kStep + i, 0, kStep + i); });
constexpr DistortionTable<128> FmLossy_LUT = tableOf<128>([](int i) { return reduction(i, kStep, middleOfHalf(i)); });
constexpr DistortionTable<128> FmLossless_LUT = tableOf<128>([](int i) { return reduction(i, kStep, i); });
