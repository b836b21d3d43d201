// SPDX-License-Identifier: Apache-2.0
// DCT kernels: every build, the scalar one too, equals the transform computed one value at a time.
#include "jpeg/block/dct.h"

#include "dct_reference.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

template <class Check> void everyTable(Check check)
{
    check(DctKernels::scalar);
    everyBuild<DctKernels>(check);
}

// Blocks of every magnitude, at full range with many extremes, sparse ones, and samples without their mean.
void fillBlock(Random& random, int16_t* block, int kind)
{
    int limit = (1 << kind % 16) - 1;
    if (kind % 16 == 15) return random.fill(block, 64);
    bool isSparse = kind & 16, isExtreme = kind & 32;
    for (int i = 0; i < 64; ++i) {
        block[i] = int16_t(isExtreme ? (random.between(0, 1) ? limit : -limit - 1) : random.between(-limit - 1, limit));
        if (isSparse && random.between(0, 7)) block[i] = 0;
    }
}

// Tables for real step sizes, and entries of any value.
void fillTable(Random& random, uint16_t* table, int kind)
{
    for (int i = 0; i < 64; ++i) {
        int step = kind % 4 == 0 ? 1 : kind % 4 == 1 ? random.between(1, 255) : 1 << random.between(0, 7);
        table[i] = uint16_t((32768 + step / 2) / step);
    }
    if (kind % 4 == 3) random.fill(table, 64);
}

// check(block, entries, src, table) on many blocks and tables; src and table are copies of them at odd addresses.
template <class Check> void everyBlock(Check check)
{
    Random random(5);
    Guarded<int16_t> src(64, Fault::after, 1);
    Guarded<uint16_t> table(64, Fault::after, 1);
    for (int kind = 0; kind < 64 * 20; ++kind) {
        int16_t block[64];
        uint16_t entries[64];
        fillBlock(random, block, kind);
        fillTable(random, entries, kind / 64);
        memcpy(src.data(), block, sizeof block);
        memcpy(table.data(), entries, sizeof entries);
        check(block, entries, src.data(), table.data());
        if (testing::Test::HasFailure()) return;
    }
}

template <class T> void expectEqual(const T* actual, const T* expected)
{
    if (memcmp(actual, expected, 64 * sizeof(T)) == 0) return;
    for (int i = 0; i < 64; ++i) EXPECT_EQ(actual[i], expected[i]) << i;
}

TEST(DctKernels, Forward)
{
    everyTable([](const DctKernels& kernels) {
        Guarded<int16_t> out(64, Fault::after, 1);
        int16_t expected[64];
        everyBlock([&](const int16_t* block, const uint16_t* entries, const int16_t* src, const uint16_t* table) {
            referenceForward(block, expected);
            kernels.forward(src, out.data());
            expectEqual(out.data(), expected);
            for (int i = 0; i < 64; ++i) expected[i] = referenceQuantized(expected[i], entries[i]);
            memcpy(out.data(), src, out.sizeInBytes());
            kernels.forwardQuant(out.data(), out.data(), table);
            expectEqual(out.data(), expected);
            ASSERT_TRUE(out.intact());
        });
    });
}

// Random samples, of which some have nothing but extremes; and extremes along the rows and columns of one frequency,
// which give the largest sums that samples can give.
TEST(DctKernels, ForwardSamples)
{
    const ExactDct exact;
    everyTable([&](const DctKernels& kernels) {
        Random random(6);
        Guarded<int16_t> out(64, Fault::after, 1);
        uint16_t table[64];
        int16_t shifted[64], expected[64];
        for (int round = 0; round < 2000; ++round) {
            const int step = 8 + round % 5;
            Guarded<uint8_t> samples(7 * step + 8, round % 2 ? Fault::after : Fault::before);
            random.fill(samples.data(), samples.size());
            fillTable(random, table, round / 128);
            for (int i = 0; i < 64; ++i) {
                uint8_t& sample = samples.data()[i / 8 * step + i % 8];
                bool isPositive = exact.cosine[round / 8 % 8][i / 8] * exact.cosine[round % 8][i % 8] > 0;
                if (round < 128) sample = isPositive == (round < 64) ? 255 : 0;
                if (round % 3 == 0 && round >= 128) sample = random.between(0, 1) ? 255 : 0;
                shifted[i] = int16_t(sample - 128);
            }
            referenceForward(shifted, expected);
            for (int i = 0; i < 64; ++i) expected[i] = referenceQuantized(expected[i], table[i]);
            kernels.forwardQuantSamples(samples.data(), step, out.data(), table);
            expectEqual(out.data(), expected);
            // The plain transform takes its fast path up to -256..255.
            for (auto& sample : shifted) sample = int16_t(2 * sample + (sample > 0));
            referenceForward(shifted, expected);
            kernels.forward(shifted, out.data());
            expectEqual(out.data(), expected);
            if (testing::Test::HasFailure()) return;
        }
        ASSERT_TRUE(out.intact());
    });
}

void expectSamples(const Guarded<uint8_t>& samples, int step, const int16_t* values, int16_t shift, uint8_t min,
                   uint8_t max)
{
    for (int i = 0; i < 64; ++i) {
        int actual = samples.data()[i / 8 * step + i % 8], expected = referenceClipped(values[i], shift, min, max);
        if (actual != expected) ADD_FAILURE() << actual << ", not " << expected << " at " << i;
    }
    EXPECT_TRUE(samples.intact());
}

TEST(DctKernels, Inverse)
{
    const struct {
        int16_t shift;
        uint8_t min, max;
    } bounds[] = {{128, 0, 255}, {128, 16, 235}, {32767, 0, 255}, {32767, 1, 255}, {-32768, 0, 254}, {0, 9, 9}};
    everyTable([&](const DctKernels& kernels) {
        constexpr int kStep = 11;
        Guarded<int16_t> out(64, Fault::after, 1);
        Guarded<uint8_t> samples(7 * kStep + 8);
        int16_t expected[64], scaled[64];
        everyBlock([&](const int16_t* block, const uint16_t* entries, const int16_t* src, const uint16_t* table) {
            referenceInverse(block, expected);
            kernels.inverse(src, out.data());
            expectEqual(out.data(), expected);
            for (auto& row : bounds) {
                kernels.clip(src, samples.data(), kStep, row.shift, row.min, row.max);
                expectSamples(samples, kStep, block, row.shift, row.min, row.max);
            }
            kernels.inverseClip(src, samples.data(), kStep, int16_t(entries[0]), uint8_t(entries[1] & 127), 235);
            expectSamples(samples, kStep, expected, int16_t(entries[0]), uint8_t(entries[1] & 127), 235);

            for (int i = 0; i < 64; ++i) scaled[i] = int16_t(uint32_t(block[i]) * entries[i]);
            referenceInverse(scaled, expected);
            memcpy(out.data(), src, out.sizeInBytes());
            kernels.inverseQuant(out.data(), out.data(), table);
            expectEqual(out.data(), expected);
            kernels.inverseQuantSamples(src, samples.data(), kStep, table);
            expectSamples(samples, kStep, expected, 128, 0, 255);
            ASSERT_TRUE(out.intact());
        });
    });
}

TEST(DctKernels, InverseOfEveryMean)
{
    everyTable([](const DctKernels& kernels) {
        Guarded<uint8_t> samples(64);
        uint16_t ones[64];
        for (auto& entry : ones) entry = 1;
        int16_t block[64] = {}, out[64], expected[64];
        // From 8188 on the first pass saturates.
        for (int mean = -32768; mean <= 32767; mean += mean < -8300 || mean > 8300 ? 61 : 1) {
            block[0] = int16_t(mean);
            referenceInverse(block, expected);
            kernels.inverse(block, out);
            expectEqual(out, expected);
            kernels.inverseQuantSamples(block, samples.data(), 8, ones);
            expectSamples(samples, 8, expected, 128, 0, 255);
            if (testing::Test::HasFailure()) return;
        }
        // One other coefficient anywhere is enough for the whole transform.
        for (int i = 1; i < 64; ++i) {
            int16_t one[64] = {100};
            one[i] = 40;
            referenceInverse(one, expected);
            kernels.inverseQuantSamples(one, samples.data(), 8, ones);
            expectSamples(samples, 8, expected, 128, 0, 255);
        }
    });
}

}
