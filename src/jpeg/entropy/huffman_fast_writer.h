// SPDX-License-Identifier: Apache-2.0
// Bits of a coded segment on their way to memory. For kernels.
#pragma once

#include "core/big_endian.h"
#include "jpeg/entropy/huffman_tables.h"
#include "jpeg/entropy/scan_coefficients.h"

namespace qel::QEL_BUILD {
namespace {

// Bits on their way to memory, 64 at a time: from the top of `bits`, the `free` lowest of which are zero.
struct FastWriter {
    static constexpr int kLargestStep = 16; // a word, each byte stuffed

    uint64_t bits;
    int64_t free;
    uint8_t last; // that was written
    uint8_t* next;
    const uint8_t* lastStart; // a step may start here, but not after

    // The low word of a state has the pending bits from bit 23 down, and the last written byte above them.
    static QEL_INLINE FastWriter of(const QelEncodeHuffmanState& state, uint8_t* dst, int dstLen, int pos)
    {
        uint32_t pending = state.accumulator[0];
        return {uint64_t(pending) << 40, 64 - (state.count & 63), uint8_t(pending >> 24), dst + pos,
                dst + dstLen - kLargestStep};
    }
    QEL_INLINE bool hasRoom() const { return next <= lastStart; }
    // To the next call; whole bytes have been written.
    QEL_INLINE void storeTo(QelEncodeHuffmanState& state) const
    {
        state.accumulator[0] = uint32_t(last) << 24 | uint32_t(bits >> 40);
        state.accumulator[1] = 0;
        state.count = int(64 - free);
    }

    QEL_INLINE void putByte(uint8_t byte)
    {
        *next++ = last = byte;
        if (byte == 0xFF) *next++ = 0;
    }

    QEL_INLINE void putWord(uint64_t word)
    {
        if (__builtin_expect(hasFF(word), 0)) {
            for (int i = 0; i < 8; ++i) putByte(uint8_t(word >> (56 - 8 * i)));
        } else {
            storeBig64(next, word);
            last = uint8_t(word);
            next += 8;
        }
    }

    // Appends `length` bits, 1 to 32; none of `value` lies above them. False near the end of the buffer.
    QEL_INLINE bool put(uint64_t value, uint64_t length)
    {
        free -= int64_t(length);
        if (__builtin_expect(free >= 0, 1)) {
            bits |= value << free;
            return true;
        }
        if (!hasRoom()) return false;
        putWord(bits | value >> -free);
        free += 64;
        bits = value << free;
        return true;
    }

    // Writes the whole bytes that are left, singly, so that no other byte is touched.
    QEL_INLINE void finish()
    {
        for (; free <= 56; free += 8, bits <<= 8) putByte(uint8_t(bits >> 56));
    }

    // The same at once, where there is room for a step. Bytes after the last one are written as they are.
    QEL_INLINE void finishAtOnce()
    {
        if (__builtin_expect(hasFF(bits) || free == 0, 0)) return finish();
        uint64_t used = uint64_t(64 - free) & 56, after = ~uint64_t(0) >> used;
        storeBig64(next, (bits & ~after) | (loadBig64(next) & after));
        next += used >> 3;
        free += int64_t(used);
        if (used != 0) last = uint8_t(bits >> (64 - used));
        bits <<= used;
    }
};

// Writes symbols, and the bits after their codes.
struct SymbolWriter {
    const QelEncodeHuffmanSpec& spec;
    FastWriter out;
    QelStatus status; // of the symbol that could not be written

    QEL_INLINE bool symbolOf(const QelEncodeHuffmanSpec& table, uint64_t index, Magnitude value)
    {
        uint64_t entry = table.entries[index], code = entry & 0xFFFF, length = entry >> 16;
        if (__builtin_expect(length == 0, 0)) return fail(qelStsJPEGHuffSpecErr);
        return out.put(code << value.category | value.bits, length + value.category) || fail(qelStsJPEGOutOfBufErr);
    }
    QEL_INLINE bool symbol(uint64_t index, Magnitude value) { return symbolOf(spec, index, value); }
    QEL_INLINE bool fail(QelStatus why) { return status = why, false; }
};

// Counts them.
struct SymbolCounter {
    uint32_t* counts;
    QelStatus status;

    QEL_INLINE bool symbol(uint64_t index, Magnitude) { return ++counts[index], true; }
    QEL_INLINE bool fail(QelStatus why) { return status = why, false; }
};

}
}
