// SPDX-License-Identifier: Apache-2.0
// Tables of the colour conversion between RGB and YCbCr (JFIF), 16 fraction bits, for single pixels without products.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

// A C array that a rule can fill at compile time.
template <int kEntries> struct Table {
    int32_t entries[kEntries];

    constexpr const int32_t& operator[](int i) const { return entries[i]; }
};

// Where the eight tables of cc_table begin, by factor. B to Cb and R to Cr have the same factor and share one.
enum ColourTerm {
    kRedToY,
    kGreenToY = 256,
    kBlueToY = 512,
    kRedToCb = 768,
    kGreenToCb = 1024,
    kBlueToCb = 1280,
    kRedToCr = kBlueToCb,
    kGreenToCr = 1536,
    kBlueToCr = 1792
};

}

// R = Y + cr_r_tbl[Cr], B = Y + cb_b_tbl[Cb], G = Y + ((cb_g_tbl[Cb] + cr_g_tbl[Cr]) >> 16).
QEL_TABLE const qel::Table<256> cr_r_tbl;
QEL_TABLE const qel::Table<256> cb_b_tbl;
QEL_TABLE const qel::Table<256> cr_g_tbl;
QEL_TABLE const qel::Table<256> cb_g_tbl;
// Y = (cc_table[kRedToY + R] + cc_table[kGreenToY + G] + cc_table[kBlueToY + B]) >> 16, Cb and Cr alike.
QEL_TABLE const qel::Table<2048> cc_table;
