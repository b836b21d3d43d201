// SPDX-License-Identifier: Apache-2.0
// The tables of contexts for zero coding, sign coding and refinement, by the rules of T.800 Tables D.1 to D.4.
#include "jpeg2k/coding/code_block_contexts.h"

#include "jpeg2k/coding/mq_tables.h"
#include "jpeg2k/coding/sample_flags.h"

namespace qel {
namespace {

constexpr int has(unsigned flags, unsigned flag) { return (flags & flag) != 0; }

// T.800 Table D.1, for bands where the horizontal neighbours count more.
constexpr uint32_t zeroCodingContext(int horizontal, int vertical, int diagonal)
{
    if (horizontal == 2) return 8;
    if (horizontal == 1) return vertical > 0 ? 7 : diagonal > 0 ? 6 : 5;
    if (vertical > 0) return vertical == 2 ? 4 : 3;
    return diagonal > 1 ? 2 : uint32_t(diagonal);
}

// T.800 Table D.1, column HH.
constexpr uint32_t diagonalContext(int direct, int diagonal)
{
    if (diagonal > 2) return 8;
    if (diagonal == 2) return direct > 0 ? 7 : 6;
    return uint32_t(3 * diagonal + (direct > 2 ? 2 : direct));
}

enum class Counts { horizontalFirst, verticalFirst, diagonalFirst };

constexpr ContextTable<256> makeZeroCoding(Counts order)
{
    ContextTable<256> table = {};
    for (unsigned flags = 0; flags < 256; ++flags) {
        int horizontal = has(flags, kLeft) + has(flags, kRight), vertical = has(flags, kTop) + has(flags, kBottom);
        int diagonal =
            has(flags, kLeftTop) + has(flags, kRightTop) + has(flags, kLeftBottom) + has(flags, kRightBottom);
        table.of[flags] =
            kContextZeroCoding + (order == Counts::horizontalFirst ? zeroCodingContext(horizontal, vertical, diagonal)
                                  : order == Counts::verticalFirst ? zeroCodingContext(vertical, horizontal, diagonal)
                                                                   : diagonalContext(horizontal + vertical, diagonal));
    }
    return table;
}

// What a neighbour says about a sign.
constexpr int contribution(unsigned neighbours, unsigned one, unsigned signs, unsigned isNegative)
{
    return has(neighbours, one) * (1 - 2 * has(signs, isNegative));
}

// T.800 Table D.2.
constexpr int sign(int sum) { return (sum > 0) - (sum < 0); }

// T.800 Table D.3.
constexpr ContextTable<512> makeSignCoding()
{
    ContextTable<512> table = {};
    for (unsigned i = 0; i < 512; ++i) {
        unsigned neighbours = i << kSignNeighbourShift, signs = i >> kSignNegativeShift;
        int horizontal = sign(contribution(neighbours, kLeft, signs, kLeftNegative) +
                              contribution(neighbours, kRight, signs, kRightNegative));
        int vertical = sign(contribution(neighbours, kTop, signs, kTopNegative) +
                            contribution(neighbours, kBottom, signs, kBottomNegative));
        bool isInverted = horizontal < 0 || (horizontal == 0 && vertical < 0);
        int context = horizontal == 0 ? vertical * vertical : 3 + horizontal * vertical;
        table.of[i] = uint32_t(kContextSign + context) | (isInverted ? kSignInverted : 0);
    }
    return table;
}

// T.800 Table D.4.
constexpr ContextTable<512> makeRefinement()
{
    ContextTable<512> table = {};
    for (unsigned flags = 0; flags < 512; ++flags)
        table.of[flags] = kContextRefinement + (has(flags, kRefinedBefore) ? 2u : flags != 0 ? 1u : 0u);
    return table;
}

}
}

constexpr qel::ContextTable<256> ZeroCodingLUT_LxHy = qel::makeZeroCoding(qel::Counts::horizontalFirst);
constexpr qel::ContextTable<256> ZeroCodingLUT_HxLy = qel::makeZeroCoding(qel::Counts::verticalFirst);
constexpr qel::ContextTable<256> ZeroCodingLUT_HxHy = qel::makeZeroCoding(qel::Counts::diagonalFirst);
constexpr qel::ContextTable<512> SignCodingLUT = qel::makeSignCoding();
constexpr qel::ContextTable<512> MagnRefineLUT = qel::makeRefinement();
