// One value from the bits that a decoder's state holds already, for the caller that decodes value by value: then
// nothing but their number changes, which is all that the next call has to wait for.
#pragma once

#include <string.h>

#include "jpeg/huffman_tables.h"

namespace qel {

// The values of n bits, 0 to 15: from `half` to `all` as they stand, and `all` less below that (T.81 F.2.2.1).
struct ValueRanges {
    struct {
        uint32_t all, half;
    } of[16];
};
constexpr ValueRanges makeValueRanges()
{
    ValueRanges ranges = {};
    for (int n = 1; n < 16; ++n) ranges.of[n] = {(1u << n) - 1, 1u << (n - 1)};
    return ranges;
}
constexpr ValueRanges kValueRanges = makeValueRanges();

// Stores the difference and returns true if the state has all its bits, and its code is a short one for a value of up
// to 15 bits.
inline __attribute__((always_inline)) bool takeHeldValue(const QelDecodeHuffmanSpec& spec, QelDecodeHuffmanState* state,
                                                         int16_t* dst)
{
    int count = state->count;
    if (count < kLookAheadBits || count > 63) return false;
    uint64_t bits;
    memcpy(&bits, state->accumulator, sizeof bits);
    if (__BYTE_ORDER__ == __ORDER_BIG_ENDIAN__) bits = bits << 32 | bits >> 32;
    uint32_t entry = spec.lookAhead[(bits >> (count - kLookAheadBits)) & 0xFF];
    // Without an entry the highest bit is set.
    if ((entry - 0x10000) & 0x8000FFF0) return false;
    auto& range = kValueRanges.of[entry & 0xF];
    count -= int(entry >> 16);
    count -= int(entry & 0xF);
    if (count < 0) return false;
    uint32_t value = uint32_t(bits >> count) & range.all;
    *dst = int16_t(value - (range.all & -uint32_t(value < range.half)));
    state->count = count;
    return true;
}

}
