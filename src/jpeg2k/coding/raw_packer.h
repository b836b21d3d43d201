// SPDX-License-Identifier: Apache-2.0
// Packs the bits of coding passes that bypass the arithmetic coder (T.800 D.6).
#pragma once

#include <stdint.h>

#include "core/inline.h"

namespace qel {

struct RawPacker {
    uint32_t bits;  // of the byte being filled, at the low end
    int32_t free;   // how many it still lacks
    bool isAfterFF; // the last byte was 0xFF: this one has 7 bits below a 0

    QEL_INLINE bool isPending() const { return free != 8 - isAfterFF; }
};

QEL_INLINE void startSegment(RawPacker& raw) { raw = {0, 8, false}; }

// Each decision's lowest bit.
QEL_INLINE uint8_t* packBit(RawPacker& raw, uint32_t decision, uint8_t* next)
{
    raw.bits = raw.bits << 1 | (decision & 1);
    if (--raw.free > 0) return next;
    raw.isAfterFF = raw.bits == 0xFF;
    *next = uint8_t(raw.bits);
    raw.bits = 0;
    raw.free = 8 - raw.isAfterFF;
    return next + 1;
}

// Fills the last byte with 0101...; one without a bit is not written.
QEL_INLINE uint8_t* terminate(RawPacker& raw, uint8_t* next)
{
    for (uint32_t fill = 0; raw.isPending(); fill ^= 1) next = packBit(raw, fill, next);
    return next;
}

}
