// SPDX-License-Identifier: Apache-2.0
// Code-block encoding: what is stored decodes to what was loaded, whole and cut after any pass; distortions are those
// of the decoder's results; order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <algorithm>
#include <vector>

#include "argument_faults.h"
#include "code_block_coding.h"
#include "code_block_reference.h"
#include "random.h"

namespace {

using namespace qel::test;
using Bytes = std::vector<uint8_t>;
using Block = std::vector<int32_t>;

constexpr int kEncoderStyles = 0x3F, kMethods = 3, kPredictable = 2;

Coded encode(QelEncodeState* state, const Block& block, QelSize size, int band, int style, int method, int nBitPlanes,
             int piece = 1 << 20)
{
    Coded c = {size, band, style, method, nBitPlanes};
    load(state, block, c);
    store(state, c, piece);
    return c;
}

// The coefficients after so many passes, from the first `length` bytes.
Block decode(const Coded& c, int passes, uint32_t length, int decoderStyle = JPEG2K_KEEP_LOW_BITS)
{
    int size = 0;
    EXPECT_EQ(qeliDecodeGetBufSize_JPEG2K(c.size, &size), qelStsNoErr);
    std::vector<uint8_t> memory(size_t(size), 0xEE);
    std::vector<uint32_t> lengths = c.lengths;
    for (uint32_t& segment : lengths) {
        segment = std::min(segment, length);
        length -= segment;
    }
    Bytes bytes = c.bytes;
    // Neither pointer may be null.
    lengths.push_back(0);
    bytes.push_back(0);
    Block block(size_t(c.size.width) * c.size.height);
    int error = -1, style = (c.style & ~JPEG2K_LOSSLESS) | decoderStyle;
    EXPECT_EQ(qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(bytes.data(), block.data(), 4 * c.size.width, c.size, c.band,
                                                   c.planes, passes, lengths.data(), c.segments, style, &error,
                                                   (QelDecodeCBProgrState*)memory.data()),
              qelStsNoErr)
        << "plane " << error;
    return block;
}

// Signs and magnitudes of wavelet coefficients: many small ones, few large. `bits` of them lie from bit `low` up, and
// bits below are set as well if `isFine`.
Block randomBlock(Random& random, QelSize size, int bits, int low, bool isFine)
{
    Block block(size_t(size.width) * size.height);
    for (int32_t& value : block) {
        int zeros = random.between(0, 2 * bits);
        uint32_t magnitude = zeros >= bits ? 0 : uint32_t(random.between(0, (1 << (bits - zeros)) - 1));
        uint32_t fine = isFine ? uint32_t(random.between(0, (1 << low) - 1)) : 0;
        value = int32_t(uint32_t(random.between(0, 1)) << 31 | magnitude << low | fine);
    }
    return block;
}

// What a decoder of all planes down to `low` knows of a block.
Block knownFrom(Block block, int low)
{
    for (int32_t& value : block) {
        uint32_t kept = uint32_t(value) >> low << low;
        value = int32_t(kept & 0x7FFFFFFF ? kept : 0);
    }
    return block;
}

// The planes that have bits, the passes of those that are coded, the segments that these make, and their bytes.
void expectCounts(const Coded& c, const Block& block)
{
    uint32_t bits = 0, sum = 0;
    for (int32_t value : block) bits |= uint32_t(value) & 0x7FFFFFFF;
    for (uint32_t length : c.lengths) sum += length;
    ASSERT_EQ(c.planes, bits == 0 ? 0 : 32 - __builtin_clz(bits));
    ASSERT_EQ(c.passes, std::max(3 * (c.planes + c.nBitPlanes - 31) - 2, 0));
    ASSERT_EQ(c.segments, c.passes == 0 ? 0 : segmentOf(c.passes - 1, c.style) + 1);
    ASSERT_EQ(sum, c.bytes.size());
}

constexpr QelSize kSizes[] = {{1, 1},   {1, 7},   {5, 3},   {3, 4},   {16, 4},  {17, 5},   {15, 9},
                              {33, 13}, {64, 64}, {40, 30}, {4, 150}, {150, 4}, {1024, 4}, {64, 3}};

// All of it, and what any pass leaves from the bytes up to its rate; from fewer where that is to be the least.
TEST(CodeBlockEncode, DecodesToWhatWasLoaded)
{
    Random random(1);
    for (QelSize size : kSizes) {
        Encoder encoder = makeEncoder(size.width, size.height);
        bool isLarge = size.width * size.height > 2000;
        for (int style = 0; style <= kEncoderStyles; style += isLarge ? 5 : 1) {
            int method = random.between(0, kMethods - 1), band = random.between(0, 3);
            SCOPED_TRACE(testing::Message() << size.width << 'x' << size.height << " style " << style << " method "
                                            << method << " band " << band);
            int bits = random.between(1, 12), low = random.between(0, 31 - bits);
            Block block = randomBlock(random, size, bits, low, style & 1);
            bool isLeast = random.between(0, 1);
            Coded c = encode(encoder.get(), block, size, band, style | isLeast * JPEG2K_LEAST_RATES, method, 31 - low,
                             random.between(1, random.between(1, 300)));
            ASSERT_NO_FATAL_FAILURE(expectCounts(c, block));
            const auto all = uint32_t(c.bytes.size());
            int check = method == kPredictable ? JPEG2K_PREDICTABLE_TERMINATION : 0;
            Block decoded = decode(c, c.passes, all, JPEG2K_KEEP_LOW_BITS | check);
            ASSERT_EQ(knownFrom(decoded, low), knownFrom(block, low));
            for (int pass = 0; pass < c.passes; ++pass) {
                uint32_t rate = c.rates[pass];
                ASSERT_GE(rate, pass == 0 ? 0 : c.rates[pass - 1]);
                ASSERT_LE(rate, isLeast ? all : all + 4);
                ASSERT_TRUE(rate == 0 || rate > all || c.bytes[rate - 1] != 0xFF);
                Block whole = decode(c, pass + 1, all);
                ASSERT_EQ(decode(c, pass + 1, rate), whole) << pass << " of " << c.passes;
                if (isLeast && !(style & JPEG2K_SEGMENTATION_SYMBOLS) && c.segments == 1 && pass + 1 < c.passes &&
                    rate > 0) {
                    ASSERT_NE(decode(c, pass + 1, rate - 1), whole) << pass;
                }
            }
        }
    }
}

double magnitudeOf(int32_t value) { return double(value & 0x7FFFFFFF); }

// The sum over the samples that a pass has changed of their squared errors before and after, in units of the square of
// the step of the lowest plane. Magnitudes count down to six bits below the pass's plane.
double reductionOf(const Coded& c, const Block& block, const Block& before, const Block& after, int plane)
{
    const int low = 31 - c.nBitPlanes;
    bool isExact = c.style & JPEG2K_LOSSLESS && plane == low;
    double sum = 0, step = double(1u << low);
    for (size_t i = 0; i < block.size(); ++i) {
        if (before[i] == after[i]) continue;
        double magnitude = magnitudeOf(plane < 6 ? block[i] : block[i] >> (plane - 6) << (plane - 6));
        double errorBefore = magnitude - magnitudeOf(before[i]);
        double errorAfter = isExact ? 0 : magnitude - magnitudeOf(after[i]);
        sum += (errorBefore * errorBefore - errorAfter * errorAfter) / (step * step);
    }
    return sum;
}

TEST(CodeBlockEncode, DistortionsAreThoseOfTheDecoder)
{
    Random random(4);
    Encoder encoder = makeEncoder(64, 64);
    for (int style : {0, int(JPEG2K_LOSSLESS), int(JPEG2K_LOSSLESS | JPEG2K_BYPASS | JPEG2K_VERTICALLY_CAUSAL)})
        for (int low : {1, 3, 9, 17}) {
            int bits = random.between(3, 12);
            Block block = randomBlock(random, {50, 41}, bits, low, true);
            Coded c = encode(encoder.get(), block, {50, 41}, 1, style, 0, 31 - low);
            Block before(block.size());
            double total = 0;
            for (int pass = 0; pass < c.passes; ++pass) {
                Block after = decode(c, pass + 1, uint32_t(c.bytes.size()));
                const int plane = c.planes - 1 - (pass + 2) / 3;
                double expected = reductionOf(c, block, before, after, plane);
                int mantissa = 0, exponent = 0;
                double distortion = -1;
                ASSERT_EQ(qeliEncodeGetDistReduction_JPEG2K(encoder.get(), pass, &mantissa, &exponent), qelStsNoErr);
                ASSERT_EQ(qeliEncodeGetDist_JPEG2K(encoder.get(), pass, &distortion), qelStsNoErr);
                ASSERT_EQ(exponent, 2 * (plane - low) - 13);
                ASSERT_DOUBLE_EQ(mantissa * exp2(exponent), expected) << "pass " << pass << " low " << low;
                total += expected;
                ASSERT_NEAR(distortion, total, 1e-9 * total);
                before = after;
            }
        }
}

TEST(CodeBlockEncode, TheLargestSumOfDistortions)
{
    constexpr int kWidth = 300, kHeight = 300;
    Encoder encoder = makeEncoder(kWidth, kHeight);
    encode(encoder.get(), Block(size_t(kWidth) * kHeight, 0x7FFFFFFF), {kWidth, kHeight}, 3, 0, 0, 31);
    int mantissa = 0, exponent = 0;
    ASSERT_EQ(qeliEncodeGetDistReduction_JPEG2K(encoder.get(), 0, &mantissa, &exponent), qelStsNoErr);
    EXPECT_DOUBLE_EQ(mantissa * exp2(exponent - 60), double(kWidth) * kHeight * 30336 / 8192);
}

// Planes that are not coded at all, and a zero with a sign.
TEST(CodeBlockEncode, NothingToCode)
{
    Encoder encoder = makeEncoder(4, 4);
    for (int nBitPlanes : {30, 0, -5})
        for (Block block : {Block{1}, Block{int32_t(0x80000000)}})
            expectCounts(encode(encoder.get(), block, {1, 1}, 0, JPEG2K_TERMINATE_EVERY_PASS, 0, nBitPlanes), block);
}

TEST(CodeBlockEncode, OrderOfFaults)
{
    Encoder encoder = makeEncoder(4, 4);
    QelEncodeState* state = encoder.get();
    Bytes other(4096, 0);
    auto* untagged = (QelEncodeState*)other.data();
    int32_t block[16] = {};
    int planes = 7, passes = 7, segments = 7, more = 7, count = 0, mantissa = 7, exponent = 7;
    uint32_t rate = 7;
    double distortion = 7;
    uint8_t byte = 7;

    expectFaults(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R,
                 {block, 16, 4, 4, state, 0, 31, 0, 0, 0, &planes, &passes, &segments}, null<4>,
                 wrong<4>(qelStsContextMatchErr, untagged), null<10>, null<11>, null<12>, length<2>, length<3>, null<0>,
                 step<1>, bad<7>(3, -1), bad<6>(32), wrong<2>(qelStsSizeErr, 5), wrong<3>(qelStsSizeErr, 5));
    EXPECT_TRUE(planes == 7 && passes == 7 && segments == 7);

    // Never loaded: no passes, nothing to store.
    auto noPass = wrong<1>(qelStsJPEG2KBadPassNumber, 0, -1);
    auto noState = wrong<0>(qelStsContextMatchErr, untagged);
    expectFaults(qeliEncodeGetRate_JPEG2K, {state, 0, &rate}, null<0>, noState, null<2>, noPass);
    expectFaults(qeliEncodeGetDistReduction_JPEG2K, {state, 0, &mantissa, &exponent}, null<0>, noState, null<2>,
                 null<3>, noPass);
    expectFaults(qeliEncodeGetDist_JPEG2K, {state, 0, &distortion}, null<0>, noState, null<2>, noPass);
    expectFaults(qeliEncodeGetTermPassLen_JPEG2K, {state, 0, &rate}, null<0>, noState, null<2>, noPass);
    expectFaults(qeliEncodeStoreBits_JPEG2K_1u, {&byte, &count, state, &more}, null<2>,
                 wrong<2>(qelStsContextMatchErr, untagged), null<0>, null<1>, null<3>);
    EXPECT_EQ(qeliEncodeStoreBits_JPEG2K_1u(&byte, &count, state, &more), qelStsSizeErr);
    EXPECT_TRUE(rate == 7 && mantissa == 7 && exponent == 7 && distortion == 7 && more == 7);
    count = 1;
    EXPECT_EQ(qeliEncodeStoreBits_JPEG2K_1u(&byte, &count, state, &more), qelStsNoErr);
    EXPECT_TRUE(byte == 7 && count == 0 && more == 0);
}

TEST(CodeBlockEncode, Memory)
{
    QelEncodeState* state = (QelEncodeState*)1;
    expectFaults(qeliEncodeInitAlloc_JPEG2K, {&state, 4, 4}, null<0>, length<1>, length<2>);
    EXPECT_EQ(state, (QelEncodeState*)1);
    for (QelSize size : {QelSize{INT32_MAX, INT32_MAX}, QelSize{INT32_MAX, 1}, QelSize{1, INT32_MAX}}) {
        state = (QelEncodeState*)1;
        EXPECT_EQ(qeliEncodeInitAlloc_JPEG2K(&state, size.width, size.height), qelStsMemAllocErr);
        EXPECT_EQ(state, nullptr);
    }
    EXPECT_EQ(qeliEncodeFree_JPEG2K(nullptr), qelStsNullPtrErr);
}

}
