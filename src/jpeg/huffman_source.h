// Where entropy-coded bits are read.
#pragma once

#include <stdint.h>

#include "jpeg/huffman_tables.h"

namespace qel {

// A segment of `len` bytes, or one that only a marker ends.
struct BitSource {
    const uint8_t* src;
    int len;
    int pos;
    uint32_t marker; // 0 until one is met
    uint64_t bits;   // the last `count` ones have not been used; what is above them means nothing
    int count;       // at most 63
};

inline __attribute__((always_inline)) uint64_t bitsOf(const QelDecodeHuffmanState& state)
{
    return (uint64_t)state.accumulator[1] << 32 | state.accumulator[0];
}
inline __attribute__((always_inline)) void setBits(QelDecodeHuffmanState& state, uint64_t bits, int count)
{
    state.accumulator[0] = (uint32_t)bits;
    state.accumulator[1] = (uint32_t)(bits >> 32);
    state.count = count;
}

}
