// The bits of a coded segment, read symbol by symbol. For kernels: the source is copied into a local reader, used, and
// copied back. When a reader takes in bytes, and how many, is part of the result: callers see the position and the
// state.
#pragma once

#include "core/big_endian.h"
#include "jpeg/huffman_source.h"
#include "jpeg/huffman_tables.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// What symbol() returns instead of a symbol.
constexpr int kNoBits = -256;
constexpr int kNoSuchCode = -1;

// kBounded: the segment ends at `len`, and a code that is not in the table is symbol 0. Otherwise the segment ends at
// a marker only, and no byte behind one is touched.
template <bool kBounded> struct BitReader : BitSource {
    // Takes in bytes until 25 bits are there, unstuffed, up to a marker or the end of the segment.
    QelStatus fillBytewise(int needed)
    {
        if (marker != 0) return count < needed ? qelStsJPEGOutOfBufErr : qelStsNoErr;
        while (count < 25) {
            if (atEnd()) return count < needed ? qelStsJPEGOutOfBufErr : qelStsNoErr;
            uint8_t byte = src[pos++];
            if (byte == 0xFF) {
                // More of the same are fill bytes.
                do {
                    if (atEnd()) return qelStsJPEGOutOfBufErr;
                    byte = src[pos++];
                } while (byte == 0xFF);
                if (byte != 0) {
                    marker = byte;
                    return qelStsJPEGMarkerWarn;
                }
                byte = 0xFF;
            }
            bits = bits << 8 | byte;
            count += 8;
        }
        return qelStsNoErr;
    }

    // The same; called with less than 25 bits.
    QEL_INLINE QelStatus fill(int needed)
    {
        if (kBounded && marker == 0 && len - pos >= 4) {
            uint32_t word = loadBig32(src + pos);
            int bytes = (32 - count) >> 3;
            word >>= 32 - 8 * bytes;
            if (!hasFF(word)) {
                bits = bits << (8 * bytes) | word;
                count += 8 * bytes;
                pos += bytes;
                return qelStsNoErr;
            }
        }
        // A copy, so that this reader can stay in registers.
        BitReader copy = *this;
        QelStatus status = fillOutOfLine(&copy, needed);
        *this = copy;
        return status;
    }

    // False if `needed` bits cannot be had. A segment that ends within fill bytes still gives what it holds.
    QEL_INLINE bool has(int needed) { return count >= needed || (fill(needed), count >= needed); }

    // The next `n` bits, up to 16; they are there.
    QEL_INLINE uint32_t take(int n)
    {
        count -= n;
        return uint32_t(bits >> count) & ((1u << n) - 1);
    }

    // The value that the next `n` bits stand for, 1 to 15 (T.81 F.2.2.1): those that begin with 0 are negative.
    QEL_INLINE int takeValue(int n)
    {
        uint32_t value = take(n);
        int below = int(value >> (n - 1)) - 1;
        return int(value) + (below & (1 - (1 << n)));
    }

    // The next symbol, or a failure.
    QEL_INLINE int symbol(const QelDecodeHuffmanSpec& spec)
    {
        if (count < kLookAheadBits) fill(0);
        if (count < kLookAheadBits) return longCode(spec, 1);
        uint32_t entry = spec.lookAhead[(bits >> (count - kLookAheadBits)) & 0xFF];
        if (entry == 0) return longCode(spec, kLookAheadBits + 1);
        count -= int(entry >> 16);
        return int(entry & 0xFFFF);
    }

    // The same for a code of `length` bits or more.
    int longCodeBitwise(const QelDecodeHuffmanSpec& spec, int length)
    {
        if (!has(length)) return kNoBits;
        uint32_t code = take(length);
        while (code > spec.largestCode[length] || spec.largestCode[length] == kNoCodeOfLength) {
            if (length == kLongestCode) return kBounded ? 0 : kNoSuchCode;
            if (!has(1)) return kNoBits;
            code = code << 1 | take(1);
            ++length;
        }
        return valueOf(spec, code, length);
    }

    QEL_INLINE int longCode(const QelDecodeHuffmanSpec& spec, int length)
    {
        BitReader copy = *this;
        int found = longCodeOutOfLine(&copy, spec, length);
        *this = copy;
        return found;
    }

private:
    QEL_INLINE bool atEnd() const { return kBounded && pos >= len; }

    static __attribute__((noinline)) QelStatus fillOutOfLine(BitReader* reader, int needed)
    {
        return reader->fillBytewise(needed);
    }
    static __attribute__((noinline)) int longCodeOutOfLine(BitReader* reader, const QelDecodeHuffmanSpec& spec,
                                                           int length)
    {
        return reader->longCodeBitwise(spec, length);
    }
};

}
}
}
