// SPDX-License-Identifier: Apache-2.0
// What the decoder knows of each sample of a code-block and of its neighbours (T.800 D.3).
//
// A sample has a byte that tells which neighbours are significant, and a byte that tells of itself and of the signs of
// neighbours. They are apart because contexts of the former need not wait for a sign to be decoded. A stripe has a row
// of bytes of each kind, both in the order of the scan. Samples beside the block get flags too, which nobody reads.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/inline.h"

namespace qel {

// Significant neighbours.
enum NeighbourFlag : unsigned {
    kLeft = 0x80,
    kRight = 0x40,
    kTop = 0x20,
    kBottom = 0x10,
    kLeftTop = 0x08,
    kRightTop = 0x04,
    kLeftBottom = 0x02,
    kRightBottom = 0x01
};

enum SampleFlag : unsigned {
    kSignificant = 0x80,
    kVisited = 0x40, // by the significance propagation pass of this plane
    kRefined = 0x20, // at least once
    kLeftNegative = 0x08,
    kRightNegative = 0x04,
    kTopNegative = 0x02,
    kBottomNegative = 0x01,
    kNegative = 0x0F
};

constexpr int kStripeHeight = 4;
// Bytes of a stripe column, one for each row.
using FlagColumn = uint8_t[kStripeHeight];

// Columns of a row of flags, with one at least between the rows; multiples of 32 bytes stay aligned.
constexpr size_t flagPitch(int width) { return (size_t(width) + 1 + 7) / 8 * 8; }
// Columns in front of the first row.
constexpr size_t kFlagMargin = 8;
constexpr size_t flagBytes(int width, int height)
{
    size_t stripes = (size_t(height) + kStripeHeight - 1) / kStripeHeight;
    return (kFlagMargin + 2 * stripes * flagPitch(width)) * sizeof(FlagColumn);
}

// What a sample sets in the stripe columns at its left, of its own, and at its right.
struct FlagPattern {
    FlagColumn columns[3];
};
struct FlagPatterns {
    FlagPattern neighbours[kStripeHeight]; // of a significant sample, by row
    FlagPattern signs[kStripeHeight];      // of a negative one
};
constexpr FlagPatterns kFlagPatterns = [] {
    // By row and column of the neighbour, where it sees the sample.
    const uint8_t seen[3][3] = {{kRightBottom, kBottom, kLeftBottom}, {kRight, 0, kLeft}, {kRightTop, kTop, kLeftTop}};
    const uint8_t signs[3][3] = {{0, kBottomNegative, 0}, {kRightNegative, 0, kLeftNegative}, {0, kTopNegative, 0}};
    FlagPatterns patterns = {};
    for (int row = 0; row < kStripeHeight; ++row)
        for (int near = row - 1; near <= row + 1; ++near)
            for (int column = 0; column < 3; ++column)
                if (near >= 0 && near < kStripeHeight) {
                    patterns.neighbours[row].columns[column][near] = seen[near - row + 1][column];
                    patterns.signs[row].columns[column][near] = signs[near - row + 1][column];
                }
    return patterns;
}();

// The rows of a stripe from one of its columns on.
struct FlagStripe {
    FlagColumn *neighbours, *samples;
    // What a sample of each row sets in the next stripe, above or below: in the columns at its left, of its own, at its
    // right, and there for a negative one. Rows that reach nothing set nothing, somewhere.
    ptrdiff_t reach[kStripeHeight]; // bytes from its column to there
    uint8_t beyond[kStripeHeight][4];

    // The distances of the stripes above and below in columns; 0 where there is none, or where causal contexts keep
    // this stripe from it.
    QEL_INLINE void setReach(ptrdiff_t above, ptrdiff_t below)
    {
        ptrdiff_t up = 4 * above + 3, down = 4 * below;
        reach[0] = reach[1] = above ? up : down;
        reach[2] = reach[3] = below ? down : up;
        __builtin_memset(beyond, 0, sizeof beyond);
        if (above) {
            beyond[0][0] = kRightBottom;
            beyond[0][1] = kBottom;
            beyond[0][2] = kLeftBottom;
            beyond[0][3] = kBottomNegative;
        }
        if (below) {
            beyond[3][0] = kRightTop;
            beyond[3][1] = kTop;
            beyond[3][2] = kLeftTop;
            beyond[3][3] = kTopNegative;
        }
    }

    // The sample becomes significant.
    QEL_INLINE void setSignificant(unsigned column, unsigned row) const
    {
        setColumns(neighbours + column, kFlagPatterns.neighbours[row], ~0u);
        auto* there = (uint8_t*)(neighbours + column) + reach[row];
        there[-4] |= beyond[row][0];
        there[0] |= beyond[row][1];
        there[4] |= beyond[row][2];
    }

    // The sign of a sample that has become significant.
    QEL_INLINE void setSign(unsigned column, unsigned row, unsigned isNegative) const
    {
        setColumns(samples + column, kFlagPatterns.signs[row], -isNegative);
        auto* there = (uint8_t*)(samples + column) + reach[row];
        *there |= uint8_t(beyond[row][3] & -isNegative);
    }

private:
    static QEL_INLINE void setColumns(FlagColumn* columns, const FlagPattern& pattern, uint32_t mask)
    {
#pragma GCC unroll 3
        for (int i = 0; i < 3; ++i) {
            uint32_t old, set;
            __builtin_memcpy(&old, columns + i - 1, sizeof old);
            __builtin_memcpy(&set, pattern.columns[i], sizeof set);
            old |= set & mask;
            __builtin_memcpy(columns + i - 1, &old, sizeof old);
        }
    }
};

}
