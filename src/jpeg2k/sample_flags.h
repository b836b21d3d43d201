// What the coding passes know of each sample of a code-block and of its neighbours (T.800 D.3).
//
// The flags of the four samples of a stripe column stand together, from the top; the columns of a stripe follow each
// other with a column between the stripes, so that the flags of a stripe lie in the order of the scan. Samples beside
// the block get flags too, which nobody reads.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/inline.h"

namespace qel {

enum SampleFlag : unsigned {
    kSignificant = 0x8000,
    kVisited = 0x4000,    // by the significance propagation pass of this plane
    kHasContext = 0x2000, // a neighbour is significant
    kLeftNegative = 0x1000,
    kRightNegative = 0x0800,
    kTopNegative = 0x0400,
    kBottomNegative = 0x0200,
    kRefined = 0x0100, // at least once
    // Significant neighbours.
    kLeft = 0x0080,
    kRight = 0x0040,
    kTop = 0x0020,
    kBottom = 0x0010,
    kLeftTop = 0x0008,
    kRightTop = 0x0004,
    kLeftBottom = 0x0002,
    kRightBottom = 0x0001,
    kNeighbours = 0x00FF
};
constexpr int kSignShift = 4; // flags from kBottom up to kLeftNegative make an index
constexpr unsigned kSignFlags = 0x1FF;
constexpr unsigned kRefinementFlags = kRefined | kNeighbours;

constexpr int kStripeHeight = 4;
using FlagColumn = uint16_t[kStripeHeight];

// Columns from one stripe to the next. Rows of 32 bytes keep aligned what begins so.
constexpr size_t flagPitch(int width) { return ((size_t)width + 1 + 3) / 4 * 4; }
// Columns in front of the first one.
constexpr size_t kFlagMargin = 4;
constexpr size_t flagBytes(int width, int height)
{
    size_t stripes = ((size_t)height + kStripeHeight - 1) / kStripeHeight;
    return (kFlagMargin + stripes * flagPitch(width)) * sizeof(FlagColumn);
}

// What a sample that becomes significant sets in the stripe columns at its left, of its own, and at its right.
struct StripeFlags {
    FlagColumn columns[3];
};
struct SignificanceFlags {
    StripeFlags inStripe[2][kStripeHeight]; // by sign, row in the stripe
    uint16_t above[2][3], below[2][3];      // by sign, column: what the top and the bottom row set beyond the stripe
};
constexpr SignificanceFlags makeSignificanceFlags()
{
    SignificanceFlags flags = {};
    for (unsigned negative = 0; negative < 2; ++negative) {
        // By row and column of the neighbour, where it sees the sample.
        const unsigned seen[3][3] = {
            {kRightBottom, kBottom | negative * kBottomNegative, kLeftBottom},
            {kRight | negative * kRightNegative, kSignificant, kLeft | negative * kLeftNegative},
            {kRightTop, kTop | negative * kTopNegative, kLeftTop}};
        for (int dy = -1; dy <= 1; ++dy)
            for (int column = 0; column < 3; ++column) {
                bool isSelf = dy == 0 && column == 1;
                auto set = uint16_t(seen[dy + 1][column] | (isSelf ? 0u : unsigned(kHasContext)));
                if (dy < 0) flags.above[negative][column] = set;
                if (dy > 0) flags.below[negative][column] = set;
                for (int row = 0; row < kStripeHeight; ++row)
                    if (row + dy >= 0 && row + dy < kStripeHeight)
                        flags.inStripe[negative][row].columns[column][row + dy] = set;
            }
    }
    return flags;
}
constexpr SignificanceFlags kSignificanceFlags = makeSignificanceFlags();

QEL_INLINE void setFlags(FlagColumn* column, const FlagColumn& flags)
{
    uint64_t old, set;
    __builtin_memcpy(&old, column, sizeof old);
    __builtin_memcpy(&set, flags, sizeof set);
    old |= set;
    __builtin_memcpy(column, &old, sizeof old);
}

// A stripe of the flags, and the stripes that its edges reach into.
struct FlagStripe {
    FlagColumn* columns;
    FlagColumn* above; // null for the first stripe, and where contexts are vertically causal
    FlagColumn* below; // null for the last stripe

    // The sample becomes significant.
    QEL_INLINE void setSignificant(ptrdiff_t column, int row, bool isNegative) const
    {
        const StripeFlags& set = kSignificanceFlags.inStripe[isNegative][row];
        for (int i = 0; i < 3; ++i) setFlags(columns + column - 1 + i, set.columns[i]);
        if (row == 0 && above != nullptr)
            for (int i = 0; i < 3; ++i)
                above[column - 1 + i][kStripeHeight - 1] |= kSignificanceFlags.above[isNegative][i];
        if (row == kStripeHeight - 1 && below != nullptr)
            for (int i = 0; i < 3; ++i) below[column - 1 + i][0] |= kSignificanceFlags.below[isNegative][i];
    }
};

}
