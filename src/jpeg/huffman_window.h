// The next bits of a coded segment in one word, so that a symbol and the bits behind it are found together. For
// kernels: made of a source, used while it fills, and given back just as the reader that goes byte by byte leaves it.
#pragma once

#include "core/big_endian.h"
#include "jpeg/huffman_source.h"
#include "jpeg/huffman_tables.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// How many bits a reader holds that goes byte by byte: before it uses some, and has fewer, it takes in bytes until
// there are 25. after[h][length][n]: h bits are held, then a symbol is looked up in eight bits, its code of `length`
// bits is used, and then the `n` bits behind it.
struct HeldBits {
    uint8_t after[33][kLookAheadBits + 1][16];
};
constexpr int heldFor(int held, int needed) { return held < needed ? held + ((32 - held) & ~7) : held; }
constexpr HeldBits makeHeldBits()
{
    HeldBits held = {};
    for (int h = 0; h <= 32; ++h)
        for (int length = 0; length <= kLookAheadBits; ++length)
            for (int n = 0; n < 16; ++n)
                held.after[h][length][n] = uint8_t(heldFor(heldFor(h, kLookAheadBits) - length, n) - n);
    return held;
}
constexpr HeldBits kHeldBits = makeHeldBits();

class Window {
public:
    QEL_INLINE explicit Window(const BitSource& source)
        : bits_(source.bits << (63 - source.count) << 1), src_(source.src), count_(source.count), pos_(source.pos),
          end_(source.marker == 0 ? source.len : 0), held_(source.count)
    {}

    // Returns the bytes that the source would not have taken in yet; its position is still the one at the start. Bits
    // that were used up are zero.
    QEL_INLINE void giveBack(BitSource& source) const
    {
        int start = source.pos, returned = (count_ - held_) >> 3;
        source.bits = bits_ >> 1 >> (63 - held_);
        source.count = held_;
        source.pos = pos_ - returned;
        if (__builtin_expect(isStuffed_, 0)) source.pos = positionBefore(src_ + start, pos_ - start, returned) + start;
    }

    // Takes in what fits. False if then there are too few bits for the longest step; markers are left alone, and so is
    // the end of the segment. Done for every symbol beside its look-up: that costs less than to guess when it is
    // needed.
    QEL_INLINE bool fill()
    {
        if (__builtin_expect(end_ - pos_ < 8, 0)) return false;
        uint64_t word = loadBig64(src_ + pos_);
        if (__builtin_expect(hasFF(word), 0)) {
            // A copy, so that this window can stay in registers.
            Window copy = *this;
            fillUnstuffed(&copy);
            *this = copy;
            return count_ >= kLongestStep;
        }
        // What does not fit is taken in again by the next fill: the same bits in the same place.
        bits_ |= word >> count_;
        pos_ += (63 - count_) >> 3;
        count_ |= 56;
        return true;
    }

    // The next symbol; `length` bits are its code. A code that is not in the table is symbol 0. After skip() this may
    // come before fill().
    QEL_INLINE int symbol(const QelDecodeHuffmanSpec& spec, int& length) const
    {
        uint32_t entry = spec.lookAhead[bits_ >> 56];
        if (__builtin_expect(entry == 0, 0)) return longCode(spec, length);
        length = int(entry >> 16);
        return int(entry & 0xFFFF);
    }

    // The value of the `n` bits behind the next `length` ones (T.81 F.2.2.1), n from 1 to 15: those that begin with 0
    // are negative.
    QEL_INLINE int valueBehind(int length, int n) const
    {
        uint64_t value = bits_ << length;
        int below = int(value >> 63) - 1;
        return int(value >> (64 - n)) + (below & (1 - (1 << n)));
    }

    // Passes over a code and the `n` bits behind it.
    QEL_INLINE void skip(int length, int n)
    {
        bits_ <<= length + n;
        count_ -= length + n;
        held_ = __builtin_expect(length > kLookAheadBits, 0) ? heldBehindLongCode(length, n)
                                                             : kHeldBits.after[held_][length][n];
    }

private:
    // A code of 16 bits, and then a refill to 32.
    static constexpr int kLongestStep = kLongestCode + 32;

    QEL_INLINE int longCode(const QelDecodeHuffmanSpec& spec, int& length) const
    {
        for (length = kLookAheadBits + 1; length <= kLongestCode; ++length) {
            uint32_t code = uint32_t(bits_ >> (64 - length)), largest = spec.largestCode[length];
            if (code <= largest && largest != kNoCodeOfLength) return valueOf(spec, code, length);
        }
        length = kLongestCode;
        return 0;
    }

    // The reader takes the first nine bits of a longer code together, and the others one by one.
    QEL_INLINE int heldBehindLongCode(int length, int n) const
    {
        int held = heldFor(held_, kLookAheadBits + 1) - length;
        if (held < 0) held += 32;
        return heldFor(held, n) - n;
    }

    static __attribute__((noinline)) void fillUnstuffed(Window* window)
    {
        Window w = *window;
        while (w.count_ < 56 && w.end_ - w.pos_ >= 2) {
            uint8_t byte = w.src_[w.pos_];
            if (byte == 0xFF && w.src_[w.pos_ + 1] != 0) break;
            w.isStuffed_ |= byte == 0xFF;
            w.pos_ += byte == 0xFF ? 2 : 1;
            w.bits_ |= uint64_t(byte) << (56 - w.count_);
            w.count_ += 8;
        }
        *window = w;
    }

    // Where the last `n` data bytes before `pos` begin; all of them lie within `src`.
    static __attribute__((noinline)) int positionBefore(const uint8_t* src, int pos, int n)
    {
        for (; n > 0; --n) pos -= pos >= 2 && src[pos - 1] == 0 && src[pos - 2] == 0xFF ? 2 : 1;
        return pos;
    }

    uint64_t bits_; // from the top; below the first `count_` ones perhaps some of those that follow
    const uint8_t* src_;
    int count_;
    int pos_;
    int end_;
    int held_;               // bits that the source would hold, at most count_
    bool isStuffed_ = false; // whether a stuffed byte has been passed
};

}
}
}
