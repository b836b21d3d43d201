// Contexts of a sample from the flags of its neighbours (T.800 D.3), as numbers of `Context`.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

template <int kSize> struct ContextTable {
    uint32_t of[kSize];
};

// The entries of SignCodingLUT: the context in the low bits, and a one where it codes the inverted sign.
constexpr uint32_t kSignContext = 0xF;
constexpr uint32_t kSignInverted = 0x80000000;

}

// Zero coding by the flags of significant neighbours, kLeft to kRightBottom: in bands LL and LH, HL, HH.
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_LxHy;
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_HxLy;
QEL_TABLE const qel::ContextTable<256> ZeroCodingLUT_HxHy;
// By the flags kLeftNegative to kBottom, shifted down; kRefined among them does not matter.
QEL_TABLE const qel::ContextTable<512> SignCodingLUT;
// By the flags kRefined to kRightBottom.
QEL_TABLE const qel::ContextTable<512> MagnRefineLUT;
