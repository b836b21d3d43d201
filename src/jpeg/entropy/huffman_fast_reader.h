// SPDX-License-Identifier: Apache-2.0
// The next bits of a coded segment in one word, taken in several bytes at a time and not up to the end, where a reader
// goes on that goes byte by byte. For kernels.
#pragma once

#include "jpeg/entropy/huffman_plain_reader.h"

namespace qel::QEL_BUILD {
namespace {

struct AllOnes {
    uint32_t of[16]; // by number of bits
};
constexpr AllOnes kAllOnes = [] {
    AllOnes ones = {};
    for (int n = 0; n < 16; ++n) ones.of[n] = (1u << n) - 1;
    return ones;
}();

class FastReader {
public:
    QEL_INLINE FastReader(const uint8_t* src, int srcLen, int pos, uint32_t marker, const QelDecodeHuffmanState* state)
        : next_(src + pos), end_(src + (marker == 0 ? srcLen : 0)), count_(unsigned(state->count & kMostBits))
    {
        bits_ = accumulatorOf(state) << (~state->count & kMostBits) << 1;
    }

    QEL_INLINE void giveBack(const uint8_t* src, int* pos, QelDecodeHuffmanState* state, uint64_t note = 0) const
    {
        *pos = int(next_ - src);
        setAccumulator(state, bits_ >> 1 >> (63 - count_) | note);
        state->count = int(count_);
    }
    // The same with a note on the marker, for takeHeldValue().
    QEL_INLINE void giveBackNoted(const uint8_t* src, int* pos, QelDecodeHuffmanState* state) const
    {
        giveBack(src, pos, state, isMarkerNear() ? 0 : kNoMarkerNear);
    }

    // For the end of a block, whose caller then sees to the marker.
    QEL_INLINE bool isMarkerNear() const { return qel::isMarkerNear(next_, end_); }

    // Whether there are enough bits for every code and the value after it.
    QEL_INLINE bool isReady() const { return count_ >= kLongestStep; }

    // Takes in what fits; whether the window is full then, with 56 bits or more. Markers are left alone, and so is the
    // end of the segment.
    QEL_INLINE bool fill()
    {
        if (__builtin_expect(uintptr_t(next_) + 8 > uintptr_t(end_), 0)) return false;
        uint64_t word = loadBig64(next_);
        if (__builtin_expect(hasFF(word), 0)) {
            Taken taken = takeUnstuffed(bits_, count_, next_, end_);
            bits_ = taken.bits;
            count_ = taken.count;
            next_ += taken.bytes;
            return count_ >= 56;
        }
        // What does not fit is taken in again by the next fill: the same bits in the same place.
        bits_ |= word >> count_;
        next_ += (63 ^ count_) >> 3;
        count_ |= 56;
        return true;
    }

    // Passes over the next code. One that is not in the table is symbol 0.
    QEL_INLINE unsigned symbol(const QelDecodeHuffmanSpec& spec)
    {
        // The parts of the entry are loaded one by one, so that the length is there as soon as the symbol.
        auto entries = (const uint8_t(*)[4])spec.lookAhead;
        uint64_t index = bits_ >> (64 - kLookAheadBits);
        unsigned length = entries[index][kLittleEndian ? 2 : 1], found = entries[index][kLittleEndian ? 0 : 3];
        if (__builtin_expect(length == 0, 0)) {
            uint32_t entry = longCode(spec, bits_);
            length = entry >> 16;
            found = uint8_t(entry);
        }
        skip(length);
        return found;
    }

    // The next `n` bits, at most 63.
    QEL_INLINE uint64_t take(unsigned n)
    {
        uint64_t taken = bits_ >> 1 >> (63 - n);
        skip(n);
        return taken;
    }

    // The value of the next `n` bits, 1 to 15 (T.81 F.2.2.1): those that begin with 0 are negative.
    QEL_INLINE int value(unsigned n)
    {
        auto positive = uint32_t(int64_t(bits_) >> 63);
        auto value = uint32_t(bits_ >> (-n & 63)) - (kAllOnes.of[n] & ~positive);
        skip(n);
        return int(value);
    }

    // The same, or 0 if n is 0: without a branch, for differences of DC coefficients, which are 0 often and
    // unpredictably.
    QEL_INLINE int difference(unsigned n) { return value(n) & -int(n != 0); }

private:
    // A code of 16 bits, and a value of 15.
    static constexpr unsigned kLongestStep = kLongestCode + 15;

    QEL_INLINE void skip(unsigned n)
    {
        bits_ <<= n;
        count_ -= n;
    }

    // The entry that a look-ahead of 16 bits would have. Without branches that depend on the length.
    static __attribute__((noinline)) uint32_t longCode(const QelDecodeHuffmanSpec& spec, uint64_t bits)
    {
        auto next = uint32_t(bits >> 48), fits = 0u;
#pragma GCC unroll 8
        for (int length = kLookAheadBits + 1; length <= kLongestCode; ++length) {
            // Becomes 0 where no code has this length.
            auto limit = uint16_t(spec.largestCode[length] + 1);
            fits |= uint32_t(next >> (kLongestCode - length) < limit) << length;
        }
        if (fits == 0) return kLongestCode << 16;
        int length = __builtin_ctz(fits);
        return uint32_t(length) << 16 | uint32_t(valueOf(spec, next >> (kLongestCode - length), length));
    }

    struct Taken {
        uint64_t bits;
        unsigned count;
        int bytes;
    };
    static __attribute__((noinline)) Taken takeUnstuffed(uint64_t bits, unsigned count, const uint8_t* next,
                                                         const uint8_t* end)
    {
        const uint8_t* start = next;
        while (count < 56 && end - next >= 2) {
            uint8_t byte = next[0];
            if (byte == 0xFF && next[1] != 0) break;
            next += byte == 0xFF ? 2 : 1;
            bits |= uint64_t(byte) << (56 - count);
            count += 8;
        }
        return {bits, count, int(next - start)};
    }

    uint64_t bits_; // from the top; below the first `count_` ones perhaps some of those that follow
    const uint8_t* next_;
    const uint8_t* end_;
    unsigned count_;
};

}
}
