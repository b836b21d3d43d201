// SPDX-License-Identifier: Apache-2.0
// The bits of a coded segment, read symbol by symbol and taken in byte by byte. For kernels.
#pragma once

#include <limits.h>

#include "core/big_endian.h"
#include "jpeg/entropy/huffman_reading.h"
#include "jpeg/entropy/huffman_tables.h"

namespace qel::QEL_BUILD {
namespace {

// The accumulator of a state, loaded and stored as one word: what has been stored in halves is loaded late.
QEL_INLINE uint64_t accumulatorOf(const QelDecodeHuffmanState* state)
{
    auto words = load<uint64_t>(state->accumulator);
    return kLittleEndian ? words : words << 32 | words >> 32;
}
QEL_INLINE void setAccumulator(QelDecodeHuffmanState* state, uint64_t bits)
{
    store(state->accumulator, kLittleEndian ? bits : bits << 32 | bits >> 32);
}

// What symbol() returns instead of a symbol.
constexpr int kNoBits = -256;
constexpr int kNoSuchCode = -1;

// kBounded: the segment ends at `len`, and a code that is not in the table is symbol 0. Otherwise the segment ends at
// a marker only, and no byte after one is touched.
template <bool kBounded> struct PlainReader {
    const uint8_t* src;
    int len;
    int pos;
    uint32_t marker; // 0 until one is met
    uint64_t bits;   // the last `count` ones have not been used; what is above them means nothing
    int count;       // at most kMostBits

    // Takes in bytes until kEnoughBits are there, unstuffed, up to a marker or the end of the segment. An 0xFF that the
    // segment ends with is left alone: what it means comes with the bytes after it.
    QelStatus fillBytewise(int needed)
    {
        if (marker != 0) return count < needed ? qelStsJPEGOutOfBufErr : qelStsNoErr;
        while (count < kEnoughBits) {
            if (isEnd(pos)) return count < needed ? qelStsJPEGOutOfBufErr : qelStsNoErr;
            int next = pos;
            uint8_t byte = src[next++];
            if (byte == 0xFF) {
                // More of the same are fill bytes.
                do {
                    if (isEnd(next)) return qelStsJPEGOutOfBufErr;
                    byte = src[next++];
                } while (byte == 0xFF);
                marker = byte;
                byte = 0xFF;
            }
            pos = next;
            if (marker != 0) return qelStsJPEGMarkerWarn;
            bits = bits << 8 | byte;
            count += 8;
        }
        return qelStsNoErr;
    }

    // At the end of a block or value: takes in what follows, if a marker may be among it.
    QEL_INLINE void meetMarker()
    {
        if (isMarkerNear(src + pos, src + len) && count < kEnoughBits) fill(0);
    }

    // False if `needed` bits cannot be had. A segment that ends within fill bytes still gives what it holds.
    QEL_INLINE bool has(int needed)
    {
        if (count < needed) fill(needed);
        return count >= needed;
    }

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

    // Copies are handed to what is out of line, so that this reader can stay in registers.
    QEL_INLINE int longCode(const QelDecodeHuffmanSpec& spec, int length)
    {
        PlainReader copy = *this;
        int found = longCodeOutOfLine(&copy, spec, length);
        *this = copy;
        return found;
    }
    QEL_INLINE void fill(int needed)
    {
        PlainReader copy = *this;
        fillOutOfLine(&copy, needed);
        *this = copy;
    }

private:
    QEL_INLINE bool isEnd(int at) const { return kBounded && at >= len; }

    static __attribute__((noinline)) void fillOutOfLine(PlainReader* reader, int needed)
    {
        reader->fillBytewise(needed);
    }
    static __attribute__((noinline)) int longCodeOutOfLine(PlainReader* reader, const QelDecodeHuffmanSpec& spec,
                                                           int length)
    {
        return reader->longCodeBitwise(spec, length);
    }
};

// The caller's variables in a reader, for the duration of a call.
struct StateReader : PlainReader<true> {
    QEL_INLINE StateReader(const uint8_t* source, int sourceLen, int* callersPos, uint32_t* callersMarker,
                           QelDecodeHuffmanState* callersState)
        : PlainReader<true>{source,
                            sourceLen,
                            *callersPos,
                            *callersMarker,
                            accumulatorOf(callersState),
                            callersState->count & kMostBits},
          pos_(callersPos), marker_(callersMarker), state_(callersState)
    {}
    QEL_INLINE ~StateReader()
    {
        *pos_ = pos;
        *marker_ = marker;
        setAccumulator(state_, bits & ~kNoMarkerNear);
        state_->count = count;
    }

private:
    int* pos_;
    uint32_t* marker_;
    QelDecodeHuffmanState* state_;
};

// body(reader), and if it succeeds the marker that may follow.
template <class Body> QEL_INLINE QelStatus readBytewise(const uint8_t* src, int srcLen, int* pos, uint32_t* marker,
                                                        QelDecodeHuffmanState* state, Body body)
{
    StateReader in(src, srcLen, pos, marker, state);
    QelStatus status = body(in);
    if (status == qelStsNoErr) in.meetMarker();
    return status;
}
QelStatus meetMarker(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, QelDecodeHuffmanState* state)
{
    return readBytewise(src, srcLen, pos, marker, state, [](StateReader&) { return qelStsNoErr; });
}

// The same without a length and without a state.
struct DirectReader : PlainReader<false> {
    QEL_INLINE DirectReader(const uint8_t* source, int* callersPos, uint32_t* callersMarker, uint32_t* callersBits,
                            int* callersCount)
        : PlainReader<false>{source, INT_MAX, *callersPos, *callersMarker, *callersBits, *callersCount},
          pos_(callersPos), marker_(callersMarker), bits_(callersBits), count_(callersCount)
    {}
    QEL_INLINE ~DirectReader()
    {
        *pos_ = pos;
        *marker_ = marker;
        *bits_ = uint32_t(bits);
        *count_ = count;
    }

private:
    int* pos_;
    uint32_t* marker_;
    uint32_t* bits_;
    int* count_;
};

}
}
