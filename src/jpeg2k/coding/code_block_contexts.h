// SPDX-License-Identifier: Apache-2.0
// Contexts of a sample from the flags of its neighbours (T.800 D.3), as numbers of `Context`.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

template <int kSize> struct ContextTable {
    uint32_t of[kSize];
};

// SignCodingLUT is indexed by the flags of significant neighbours, kLeft to kBottom, shifted down by 4, and by the
// flags kLeftNegative to kBottomNegative shifted up by 5; bit 4 does not matter. An entry has the context in the low
// bits, and bit 31 where that codes the inverted sign.
constexpr int kSignNeighbourShift = 4, kSignNegativeShift = 5;
constexpr uint32_t kSignContext = 0xF;
constexpr uint32_t kSignInverted = 0x80000000;
// MagnRefineLUT is indexed by the flags of significant neighbours, and this for a sample that has been refined.
constexpr uint32_t kRefinedBefore = 0x100;

}

// Zero coding by the flags of significant neighbours: in bands LL and LH, HL, HH.
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_LxHy;
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_HxLy;
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_HxHy;
QEL_TABLE const qel::ContextTable<512> SignCodingLUT;
QEL_TABLE const qel::ContextTable<512> MagnRefineLUT;
