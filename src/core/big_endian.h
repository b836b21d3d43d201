// SPDX-License-Identifier: Apache-2.0
// Words of a byte stream, the first byte highest, at any address. For kernels.
#pragma once

#include "core/byte_order.h"
#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

QEL_INLINE uint32_t loadBig32(const uint8_t* p)
{
    auto word = load<uint32_t>(p);
    return kLittleEndian ? __builtin_bswap32(word) : word;
}
QEL_INLINE uint64_t loadBig64(const uint8_t* p)
{
    auto word = load<uint64_t>(p);
    return kLittleEndian ? __builtin_bswap64(word) : word;
}
QEL_INLINE void storeBig64(uint8_t* p, uint64_t word) { store(p, kLittleEndian ? __builtin_bswap64(word) : word); }

// Whether a byte of the word is 0xFF.
QEL_INLINE bool hasFF(uint64_t word) { return (word & ~(word + 0x0101010101010101) & 0x8080808080808080) != 0; }

}
}
