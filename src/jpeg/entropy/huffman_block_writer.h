// SPDX-License-Identifier: Apache-2.0
// A block's AC symbols found, coded and written all together, in registers of 64 bytes: sixteen symbols a step,
// whatever they are. For kernels; S is Simd<64>.
#pragma once

#include "core/simd.h"
#include "jpeg/entropy/huffman_tables.h"
#include "jpeg/entropy/scan_coefficients.h"

namespace qel::QEL_BUILD {
namespace {

// In the order of the scan: where the bytes of coefficients are.
struct BytesInScan {
    alignas(64) uint8_t low[64], high[64];
};
constexpr BytesInScan kBytesInScan = [] {
    BytesInScan bytes = {};
    for (int i = 0; i < 64; ++i) {
        bytes.low[i] = uint8_t(2 * kScanOrder.index[i]);
        bytes.high[i] = uint8_t(2 * kScanOrder.index[i] + 1);
    }
    return bytes;
}();

// The symbols of a block: lane i of the registers is the symbol i.
template <class S> struct AcSymbols {
    U8<64> runs;      // of zeros before the value
    U8<64> low, high; // bytes of the value: 0 after sixteen zeros, and at the end of the block
    int values;       // how many there are, without the end of the block
    int all;

    // `set` has the positions of the coefficients that are not zero.
    QEL_INLINE AcSymbols(const int16_t* block, uint64_t set)
    {
        auto first = load<U8<64>>(block), second = load<U8<64>>(block + 32);
        runs = runsOf<S>(set, 1);
        low = S::compress(S::pick(first, second, load<U8<64>>(kBytesInScan.low)), set);
        high = S::compress(S::pick(first, second, load<U8<64>>(kBytesInScan.high)), set);
        values = __builtin_popcountll(set);
        all = values + !(set >> 63);
    }

    // On to the next sixteen.
    QEL_INLINE void advance()
    {
        runs = behindBlock(runs), low = behindBlock(low), high = behindBlock(high);
        values = values > 16 ? values - 16 : 0;
        all -= 16;
    }

private:
    static QEL_INLINE U8<64> behindBlock(U8<64> v)
    {
        return (U8<64>)__builtin_shufflevector((U64<64>)v, U64<64>{}, 2, 3, 4, 5, 6, 7, 8, 8);
    }
};

// The first sixteen symbols as bits: each code with the bits that follow it, and their number.
template <class S> struct SymbolBits {
    U32<64> bits, lengths;
    bool areCodes; // every symbol has one

    QEL_INLINE SymbolBits(const AcSymbols<S>& symbols, const QelEncodeHuffmanSpec& spec)
    {
        constexpr uint32_t kOneBit = 1 << 16, kLongest = kLongestCode << 16;
        auto value = (S32<64>)S::firstBytes(symbols.low) | S::firstBytes((S8<64>)symbols.high) << 8;
        S32<64> sign = value >> 31, following = value + sign;
        U32<64> category = 32 - S::leadingZeros((U32<64>)(following ^ sign));
        // Category 16 takes a bit of the run.
        auto index = S::keep(S::firstBytes(symbols.runs) << 4 | category, lanes(symbols.values));
        U32<64> entry = S::lookUp(spec.entries, index);
        areCodes = (S::greater(entry - kOneBit, U32<64>{} + (kLongest - kOneBit + 0xFFFF)) & lanes(symbols.all)) == 0;
        entry = S::keep(entry, lanes(symbols.all));
        lengths = (entry >> 16) + category;
        bits = (entry & 0xFFFF) << category | ((U32<64>)following & ~(~U32<64>{} << category));
    }

private:
    static QEL_INLINE uint64_t lanes(int count) { return onesBelow(count) & 0xFFFF; }
};

// A stream between two steps.
struct BlockWriter {
    uint8_t* next;
    uint64_t bits; // from the top: those that are not written yet
    int count;
    uint8_t last; // that was written

    // Appends sixteen symbols. False, with nothing done, if it is more than a register holds.
    template <class S> QEL_INLINE bool put(const SymbolBits<S>& symbols)
    {
        int total;
        U8<64> bytes = joined<S>(symbols, total);
        uint64_t stuffed = S::equal(bytes, U8<64>{} + 0xFF) & ~(uint64_t(1) << 63);
        int whole = total >> 3, written = whole + __builtin_popcountll(stuffed);
        if (__builtin_expect(total + 8 * (written - whole) >= 63 * 8, 0)) return false;
        S::storeSome(next, S::expand(bytes, ~after(stuffed)), onesBelow(written));
        next += written;
        count = total & 7;
        // The byte that is not whole, and the last one of those that are: before the first it is byte 63.
        auto ends = (U32<64>)S::pick(bytes, load<U8<64>>(kEnds.offset) + uint8_t(whole), 3);
        bits = uint64_t(ends[0] & 0xFF) << 56, last = uint8_t(ends[0] >> 8);
        return true;
    }

private:
    struct Ends {
        uint8_t offset[64];
    };
    static constexpr Ends kEnds = {{0, 0xFF}};

    // The places of the zeros that follow bytes of 0xFF, which each of them moves on.
    static QEL_INLINE uint64_t after(uint64_t bytes)
    {
        if (__builtin_expect((bytes & (bytes - 1)) == 0, 1)) return bytes << 1;
        uint64_t zeros = 0;
        for (int i = 1; bytes != 0; bytes &= bytes - 1, ++i) zeros |= uint64_t(1) << (__builtin_ctzll(bytes) + i);
        return zeros;
    }

    // The bits of the stream and of the symbols, in bytes; the last byte written before as byte 63. `total` is their
    // number; with more than 504 the bytes are not all there.
    template <class S> QEL_INLINE U8<64> joined(const SymbolBits<S>& symbols, int& total) const
    {
        // Pairs of symbols: the second one stands in the upper half of a lane of 64 bits, and is to be the lower.
        auto lengths = (U64<64>)symbols.lengths, parts = (U64<64>)symbols.bits;
        U64<64> secondLength = lengths >> 32, length = (lengths & 0xFF) + secondLength;
        U64<64> pair = (parts & 0xFFFFFFFF) << secondLength | parts >> 32;
        // Where each begins: sums of the lengths before it. Lane 0 gets the sum of all.
        U64<64> sums = S::sumOfBytes(S::pick((U8<64>)length, load<U8<64>>(kBefore.lane), kLanesBefore));
        total = count + int(sums[0]);
        U64<64> start = S::keep(sums, 0xFE) + uint64_t(count);
        // In words of 64 bits: what of a pair goes to the word where it starts, and what to the next one.
        U64<64> top = S::shiftLeft(pair, 64 - length), shift = start & 63;
        U64<64> here = top >> shift, there = S::shiftLeft(top, 64 - shift);
        uint64_t crossing = S::nonZero((shift + length) & 64);
        // No two have a bit in common, so a word is the sum of its parts: a difference of running sums.
        U64<64> all, sum = S::runningSum(here, all);
        U64<64> upTo = S::compress(sum, crossing, all), from = S::compress(sum - there, crossing, all);
        U64<64> words = upTo - __builtin_shufflevector(from, U64<64>{}, 8, 0, 1, 2, 3, 4, 5, 6);
        words |= S::keep(U64<64>{} + bits, 1) | S::keep(U64<64>{} + last, 0x80);
        return inBlocks<7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8>((U8<64>)words);
    }

    struct Before {
        alignas(64) uint8_t lane[64];
    };
    static constexpr Before makeBefore()
    {
        Before before = {};
        for (int i = 0; i < 64; ++i) before.lane[i] = uint8_t(i % 8 * 8);
        return before;
    }
    static const Before kBefore;
    static constexpr uint64_t kLanesBefore = 0x7F3F1F0F070301FF;
};
constexpr BlockWriter::Before BlockWriter::kBefore = BlockWriter::makeBefore();

}
}
