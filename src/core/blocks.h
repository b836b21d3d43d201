// SPDX-License-Identifier: Apache-2.0
// Wide registers from blocks of 16 bytes.
#pragma once

#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

// Registers of 16 bytes side by side as one, and the other way round.
template <int N, class Block> QEL_INLINE auto joinBlocks(const Block* blocks)
{
    if constexpr (N == 16)
        return (S16<16>)blocks[0];
    else
        return Simd<N>::join(joinBlocks<N / 2>(blocks), joinBlocks<N / 2>(blocks + N / 32));
}
template <int N, class Block> QEL_INLINE void splitBlocks(S16<N> joined, Block* blocks)
{
    if constexpr (N == 16) {
        blocks[0] = (Block)joined;
    } else {
        splitBlocks<N / 2>(Simd<N>::lowerHalf(joined), blocks);
        splitBlocks<N / 2>(Simd<N>::upperHalf(joined), blocks + N / 32);
    }
}

}
}
