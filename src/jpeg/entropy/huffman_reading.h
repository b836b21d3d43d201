// SPDX-License-Identifier: Apache-2.0
// What decoders do with the bits that their state holds already.
#pragma once

#include <string.h>

#include "jpeg/entropy/huffman_tables.h"

namespace qel {

// A reader takes in bytes until it holds so many bits at least, and its state has room for so many.
constexpr int kEnoughBits = 25;
constexpr int kMostBits = 63;

// After a block or value the reader looks on, so that its caller learns of a marker that follows: it takes in bytes
// until it holds enough bits again, four of them at most. Without an 0xFF among the next four that shows no marker, and
// may be left to the next call. Asked before the number of bits, which is harder to predict.
inline __attribute__((always_inline)) bool isMarkerNear(const uint8_t* next, const uint8_t* end)
{
    if (__builtin_expect(end - next < 4, 0)) return true;
    uint32_t word;
    memcpy(&word, next, sizeof word);
    return __builtin_expect((word & ~(word + 0x01010101) & 0x80808080) != 0, 0);
}
// Above the bits of an accumulator, which leave this one free: isMarkerNear() is known to be false where it is set.
constexpr uint64_t kNoMarkerNear = uint64_t(1) << kMostBits;

// The values of n bits, 0 to 15: from `half` to `all` as they stand, and `all` less below that (T.81 F.2.2.1).
struct ValueRanges {
    struct {
        uint32_t all, half;
    } of[16];
};
constexpr ValueRanges kValueRanges = [] {
    ValueRanges ranges = {};
    for (int n = 1; n < 16; ++n) ranges.of[n] = {(1u << n) - 1, 1u << (n - 1)};
    return ranges;
}();

// Stores the next difference and returns true if the state has all its bits, its code is a short one for a value of up
// to 15 bits, and no marker is near. For the caller that decodes value by value: nothing but the number of bits
// changes, which is all that the next call has to wait for.
inline __attribute__((always_inline)) bool takeHeldValue(const QelDecodeHuffmanSpec& spec, QelDecodeHuffmanState* state,
                                                         int16_t* dst)
{
    int count = state->count;
    if (count < kLookAheadBits || count > kMostBits) return false;
    uint64_t bits;
    memcpy(&bits, state->accumulator, sizeof bits);
    if (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) bits = bits << 32 | bits >> 32;
    if ((bits & kNoMarkerNear) == 0) return false;
    uint32_t entry = spec.lookAhead[(bits >> (count - kLookAheadBits)) & 0xFF];
    // Without an entry the highest bit is set.
    if ((entry - 0x10000) & 0x8000FFF0) return false;
    auto& range = kValueRanges.of[entry & 0xF];
    count -= int(entry >> 16);
    count -= int(entry & 0xF);
    if (count < 0) return false;
    uint32_t value = uint32_t(bits >> count) & range.all;
    auto decoded = int16_t(value - (range.all & -uint32_t(value < range.half)));
    memcpy(dst, &decoded, sizeof decoded);
    state->count = count;
    return true;
}

}
