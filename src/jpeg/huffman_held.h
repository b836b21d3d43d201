// One value from the bits that a decoder's state holds already, for the caller that decodes value by value: then
// nothing but their number changes, which is all that the next call has to wait for.
#pragma once

#include <string.h>

#include "jpeg/huffman_tables.h"

namespace qel {

// The low `n` bits, n from 0 to 31.
inline uint32_t lowBits(uint64_t bits, unsigned n) { return uint32_t(bits) & ((1u << n) - 1); }

// Stores the difference (T.81 F.2.2.1) and returns true if the state has bits for every short code with its value, and
// the next code is a short one with a value of up to 15 bits.
inline __attribute__((always_inline)) bool takeHeldValue(const QelDecodeHuffmanSpec& spec, QelDecodeHuffmanState* state,
                                                         int16_t* dst)
{
    constexpr int kShortStep = kLookAheadBits + 15;
    int count = state->count;
    if (count < kShortStep || count > 63) return false;
    uint64_t bits = uint64_t(state->accumulator[1]) << 32 | state->accumulator[0];
    uint32_t entry = spec.lookAhead[(bits >> (count - kLookAheadBits)) & 0xFF];
    unsigned n = entry & 0xFFFF;
    if (entry < 0x10000 || n > 15) return false;
    count -= int(entry >> 16);
    // A value that begins with 0 is negative; without bits it is 0.
    uint32_t negative = ~uint32_t(bits >> (count - 1)) & 1;
    count -= int(n);
    *dst = int16_t(lowBits(bits >> count, n) - (lowBits(~0u, n) & -negative));
    state->count = count;
    return true;
}

}
