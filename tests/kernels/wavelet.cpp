// SPDX-License-Identifier: Apache-2.0
// Wavelet kernels: every build equals the scalar one, and touches nothing but a line and what it depends on.
#include "jpeg2k/transform/wavelet53.h"
#include "jpeg2k/transform/wavelet97.h"

#include <limits.h>
#include <string.h>

#include "jpeg2k/transform/wavelet_calls.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Samples that give finite floats, and integers of the full range; at any address.
void fill(Random& random, float* p, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        float value = float(random.between(-100000, 100000)) / 16;
        memcpy(p + i, &value, sizeof value);
    }
}
template <class T> void fill(Random& random, T* p, size_t count) { random.fill(p, count); }

// Lines both ways. Extended ones have four samples around them.
template <class Table, class T> void rows(LiftingKernels<T> Table::*of)
{
    everyRoundEqualsScalar<Table>(139 * 4, [=](const Table& table, Random& random, int round) {
        const LiftingKernels<T>& kernels = table.*of;
        const Line line = {2 + round / 4, round % 2, round % 4 < 2};
        const size_t lows = size_t(line.lows()), highs = size_t(line.highs());
        const size_t around = line.mirrored ? 0 : 4, offset = size_t(round) % 3;
        const Fault fault = line.length % 2 ? Fault::after : Fault::before;
        Guarded<T> turns(lows + highs + 2 * around, fault, offset), low(lows, fault, offset), high(highs, fault);
        fill(random, turns.data(), turns.size());
        kernels.forwardRow(turns.data() + around, line, low.data(), high.data());
        Guarded<T> lowAround(lows + 2 * around, fault), highAround(highs + 2 * around, fault, offset);
        Guarded<T> back(lows + highs, fault, offset);
        fill(random, lowAround.data(), lowAround.size());
        fill(random, highAround.data(), highAround.size());
        kernels.inverseRow(lowAround.data() + around, highAround.data() + around, line, back.data());
        return std::tuple(bytesOf(low), bytesOf(high), bytesOf(back));
    });
}

// Pairs of rows, in place as the tile functions do them.
template <class Table, class T> void pairs(LiftingKernels<T> Table::*of)
{
    everyLength([=](int width) {
        everyRoundEqualsScalar<Table>(kMostPairs, [=](const Table& table, Random& random, int round) {
            const int count = round + 1;
            Guarded<T> kept(size_t(4 * width)), rows(size_t(2 * count * width), Fault::after, 1);
            // At first zeros, as before the first pair: random bits need not be finite values.
            memset(kept.data(), 0, kept.sizeInBytes());
            fill(random, rows.data(), rows.size());
            T* at[2 * kMostPairs];
            for (int i = 0; i < 2 * count; ++i) at[i] = rows.data() + i * width;
            auto lift = width % 2 ? (table.*of).forwardPairs : (table.*of).inversePairs;
            for (int again = 0; again < 2; ++again) lift(at, at, count, kept.data(), width);
            return std::tuple(bytesOf(rows), bytesOf(kept));
        });
    });
}

// The loop over as many columns as an int can count: without memory, as the kernel only adds widths up.
TEST(WaveletLoops, EndAtTheWidestLines)
{
    static int64_t columns;
    columns = 0;
    auto count = [](const int32_t* const*, int32_t* const*, int, int32_t*, ptrdiff_t width) { columns += width; };
    const LiftingKernels<int32_t> kernels = {0, nullptr, nullptr, count, count};
    int32_t sample;
    auto rows = interleaved(&sample, INT_MAX);
    liftColumns<int32_t>(kernels, Direction::forward, extendedLine(1, 0), rows, rows, INT_MAX);
    EXPECT_EQ(columns, INT_MAX);
}

TEST(Wavelet53Kernels, Rows16) { rows(&Wavelet53Kernels::of16s); }
TEST(Wavelet53Kernels, Rows32) { rows(&Wavelet53Kernels::of32s); }
TEST(Wavelet53Kernels, Pairs16) { pairs(&Wavelet53Kernels::of16s); }
TEST(Wavelet53Kernels, Pairs32) { pairs(&Wavelet53Kernels::of32s); }
TEST(Wavelet97Kernels, Rows16) { rows(&Wavelet97Kernels::of16s); }
TEST(Wavelet97Kernels, Rows32) { rows(&Wavelet97Kernels::of32s); }
TEST(Wavelet97Kernels, RowsFloat) { rows(&Wavelet97Kernels::of32f); }
TEST(Wavelet97Kernels, Pairs16) { pairs(&Wavelet97Kernels::of16s); }
TEST(Wavelet97Kernels, Pairs32) { pairs(&Wavelet97Kernels::of32s); }
TEST(Wavelet97Kernels, PairsFloat) { pairs(&Wavelet97Kernels::of32f); }

}
