// SPDX-License-Identifier: Apache-2.0
// Sets of samples and their neighbours, 64 at a time, and the contexts that follow (T.800 D.3). For kernels.
#pragma once

#include "core/simd.h"
#include "jpeg2k/coding/code_block_encode.h"

namespace qel::QEL_BUILD {
namespace {

constexpr uint64_t kTopRow = 0x1111111111111111, kBottomRow = kTopRow << 3;

// All samples of the columns that the set has a sample in.
QEL_INLINE uint64_t wholeColumns(uint64_t set)
{
    set |= set >> 2;
    set |= set >> 1;
    return (set & kTopRow) * 15;
}

// Each sample's neighbour in its own column.
QEL_INLINE uint64_t upper(uint64_t above, uint64_t here) { return (here << 1 & ~kTopRow) | (above >> 3 & kTopRow); }
QEL_INLINE uint64_t lower(uint64_t here, uint64_t below)
{
    return (here >> 1 & ~kBottomRow) | (below << 3 & kBottomRow);
}
// Each sample's neighbour in the column to the left and to the right.
QEL_INLINE uint64_t fromLeft(uint64_t before, uint64_t here) { return here << 4 | before >> 60; }
QEL_INLINE uint64_t fromRight(uint64_t here, uint64_t after) { return here >> 4 | after << 60; }

// Which samples have a neighbour in a set.
struct Neighbours {
    uint64_t left, right, up, down, upLeft, upRight, downLeft, downRight;

    QEL_INLINE uint64_t any() const { return left | right | up | down | upLeft | upRight | downLeft | downRight; }
};

// The words of a map around one of them.
struct Surroundings {
    uint64_t aboveBefore, above, aboveAfter, before, here, after, belowBefore, below, belowAfter;

    // Of the stripe below only the samples of `seen` count.
    static QEL_INLINE Surroundings of(const uint64_t* word, ptrdiff_t stride, uint64_t seen)
    {
        const uint64_t *above = word - stride, *below = word + stride;
        return {above[-1], above[0],         above[1],        word[-1],       word[0],
                word[1],   below[-1] & seen, below[0] & seen, below[1] & seen};
    }

    QEL_INLINE bool isEmpty() const
    {
        return (aboveBefore | above | aboveAfter | before | here | after | belowBefore | below | belowAfter) == 0;
    }

    // The scan has passed the words above and before, and not yet those after and below. Of this word, samples have
    // `now` when they are neighbours of later ones, and had `here` for earlier ones.
    QEL_INLINE Neighbours neighbours(uint64_t now) const
    {
        uint64_t overNow = upper(above, now), underNow = lower(now, below);
        uint64_t over = upper(above, here), under = lower(here, below);
        return {fromLeft(before, now),
                fromRight(here, after),
                overNow,
                under,
                fromLeft(upper(aboveBefore, before), overNow),
                fromRight(over, upper(aboveAfter, after)),
                fromLeft(lower(before, belowBefore), underNow),
                fromRight(under, lower(after, belowAfter))};
    }
};

// Decisions of the samples of a word, as sets: bit k of what is recorded.
struct Decisions {
    uint64_t bit[5];

    QEL_INLINE void replace(uint64_t set, uint64_t decision, int context)
    {
        bit[0] = (bit[0] & ~set) | (decision & set);
        for (int k = 0; k < 4; ++k) bit[k + 1] = context >> k & 1 ? bit[k + 1] | set : bit[k + 1] & ~set;
    }
};

QEL_INLINE Decisions decisionsOf(uint64_t decision, uint64_t context0, uint64_t context1, uint64_t context2,
                                 uint64_t context3)
{
    return {{decision, context0, context1, context2, context3}};
}

// How samples are coded: raw, or by the zero coding contexts of a band.
enum class Coding { raw, ll, hl, hh };

// T.800 Table D.1; contexts 2 to 10.
template <Coding kCoding> QEL_INLINE Decisions zeroCoding(const Neighbours& n, uint64_t decision)
{
    uint64_t h1 = n.left | n.right, h2 = n.left & n.right, v1 = n.up | n.down, v2 = n.up & n.down;
    uint64_t a1 = n.upLeft | n.upRight, a2 = n.upLeft & n.upRight, b1 = n.downLeft | n.downRight,
             b2 = n.downLeft & n.downRight;
    // At least so many on the diagonals.
    uint64_t d1 = a1 | b1, d2 = a2 | b2 | (a1 & b1);
    if constexpr (kCoding == Coding::hh) {
        uint64_t d3 = (a2 & b1) | (a1 & b2), s1 = h1 | v1, s2 = h2 | v2 | (h1 & v1);
        uint64_t is10 = d3, is9 = d2 & ~d3 & s1, is8 = d2 & ~d3 & ~s1, d = d1 & ~d2;
        uint64_t is7 = d & s2, is6 = d & s1 & ~s2, is5 = d & ~s1, is4 = ~d1 & s2, is3 = ~d1 & s1 & ~s2;
        uint64_t is2 = ~(d1 | s1);
        return decisionsOf(decision, is9 | is7 | is5 | is3, is10 | is7 | is6 | is3 | is2, is7 | is6 | is5 | is4,
                           is10 | is9 | is8);
    }
    if constexpr (kCoding == Coding::hl) {
        uint64_t h = h1;
        h1 = v1;
        v1 = h;
        h = h2;
        h2 = v2;
        v2 = h;
    }
    uint64_t h = h1 & ~h2, none = ~(h1 | v1);
    uint64_t is10 = h2, is9 = h & v1, is8 = h & ~v1 & d1, is7 = h & ~v1 & ~d1, is6 = ~h1 & v2, is5 = ~h1 & v1 & ~v2;
    uint64_t is4 = none & d2, is3 = none & d1 & ~d2, is2 = none & ~d1;
    return decisionsOf(decision, is9 | is7 | is5 | is3, is10 | is7 | is6 | is3 | is2, is7 | is6 | is5 | is4,
                       is10 | is9 | is8);
}

// T.800 Tables D.2 and D.3, contexts 11 to 15: from the neighbours that are significant, and those of them that are
// negative.
QEL_INLINE Decisions signCoding(const Neighbours& n, const Neighbours& negative, uint64_t sign)
{
    auto sum = [](uint64_t a, uint64_t b, uint64_t negativeA, uint64_t negativeB) {
        uint64_t plus = (a & ~negativeA) | (b & ~negativeB), minus = (a & negativeA) | (b & negativeB);
        struct {
            uint64_t plus, minus;
        } contribution = {plus & ~minus, minus & ~plus};
        return contribution;
    };
    auto h = sum(n.left, n.right, negative.left, negative.right);
    auto v = sum(n.up, n.down, negative.up, negative.down);
    uint64_t hAny = h.plus | h.minus, vAny = v.plus | v.minus, differ = (h.plus & v.minus) | (h.minus & v.plus);
    uint64_t swapped = h.minus | (~hAny & v.minus), none = ~(hAny | vAny);
    return decisionsOf(sign ^ swapped, none | (hAny & vAny), none | (hAny & ~differ), ~none, ~uint64_t(0));
}

// T.800 Table D.4, contexts 16 to 18, but for bit 4 of the context, which is always 1.
QEL_INLINE Decisions refinementCoding(uint64_t hasNeighbour, uint64_t isRefined, uint64_t decision)
{
    return decisionsOf(decision, hasNeighbour & ~isRefined, isRefined, 0, 0);
}

}
}
