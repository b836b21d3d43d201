// Wavelet kernels: every build equals the scalar one, and touches nothing but a line and what it depends on.
#include "jpeg2k/wavelet53.h"
#include "jpeg2k/wavelet97.h"

#include <string.h>

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

// Lines of `table` and of the scalar build, from the same data. Extended lines have four samples around them.
template <class Table, class T> void rows(LiftingKernels<T> Table::*of)
{
    everyBuild<Table>([&](const Table& table) {
        Random random(1);
        for (int len = 2; len <= 140; ++len) {
            for (int kind = 0; kind < 4; ++kind) {
                Line line = {len, kind % 2, kind < 2};
                size_t lows = size_t(line.lows()), highs = size_t(line.highs());
                auto fault = len % 2 ? Fault::behind : Fault::before;
                size_t around = line.mirrored ? 0 : 4, offset = size_t(kind) % 3;
                Guarded<T> turns(size_t(len) + 2 * around, fault, offset);
                Guarded<T> low(lows, fault, offset), high(highs, fault), low2(lows), high2(highs);
                fill(random, turns.data(), turns.size());
                (table.*of).forwardRow(turns.data() + around, line, low.data(), high.data());
                (Table::scalar.*of).forwardRow(turns.data() + around, line, low2.data(), high2.data());
                ASSERT_EQ(memcmp(low.data(), low2.data(), low.sizeInBytes()), 0) << len << ' ' << kind;
                ASSERT_EQ(memcmp(high.data(), high2.data(), high.sizeInBytes()), 0) << len << ' ' << kind;
                ASSERT_TRUE(low.intact() && high.intact()) << len << ' ' << kind;

                Guarded<T> lowAround(lows + 2 * around, fault), highAround(highs + 2 * around, fault, offset);
                Guarded<T> back(turns.size() - 2 * around, fault, offset), back2(back.size());
                fill(random, lowAround.data(), lowAround.size());
                fill(random, highAround.data(), highAround.size());
                auto *l = lowAround.data() + around, *h = highAround.data() + around;
                (table.*of).inverseRow(l, h, line, back.data());
                (Table::scalar.*of).inverseRow(l, h, line, back2.data());
                ASSERT_EQ(memcmp(back.data(), back2.data(), back.sizeInBytes()), 0) << len << ' ' << kind;
                ASSERT_TRUE(back.intact()) << len << ' ' << kind;
            }
        }
    });
}

// Pairs of rows, in place as the tile functions do them.
template <class Table, class T> void pairs(LiftingKernels<T> Table::*of)
{
    everyBuild<Table>([&](const Table& table) {
        Random random(2);
        everyLength([&](int width) {
            for (int count = 1; count <= kMostPairs; ++count) {
                size_t w = size_t(width), n = 2 * size_t(count) * w;
                Guarded<T> kept(4 * w), kept2(4 * w), rows(n, Fault::behind, 1), rows2(n, Fault::behind, 1);
                // At first zeros, as before the first pair: random bits need not be finite values.
                memset(kept.data(), 0, kept.sizeInBytes());
                fill(random, rows.data(), n);
                memcpy(kept2.data(), kept.data(), kept.sizeInBytes());
                memcpy(rows2.data(), rows.data(), rows.sizeInBytes());
                T *at[2 * kMostPairs], *at2[2 * kMostPairs];
                for (int i = 0; i < 2 * count; ++i) at[i] = rows.data() + i * width, at2[i] = rows2.data() + i * width;
                auto lift = [&](const LiftingKernels<T>& kernels) {
                    return width % 2 ? kernels.forwardPairs : kernels.inversePairs;
                };
                for (int round = 0; round < 2; ++round) {
                    lift(table.*of)(at, at, count, kept.data(), width);
                    lift(Table::scalar.*of)(at2, at2, count, kept2.data(), width);
                }
                ASSERT_EQ(memcmp(rows.data(), rows2.data(), rows.sizeInBytes()), 0) << width << ' ' << count;
                ASSERT_EQ(memcmp(kept.data(), kept2.data(), kept.sizeInBytes()), 0) << width << ' ' << count;
                ASSERT_TRUE(rows.intact() && kept.intact()) << width << ' ' << count;
            }
        });
    });
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
