// SPDX-License-Identifier: Apache-2.0
// The order of coefficients in a scan (T.81 Figure A.6), for kernels.
#pragma once

#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

struct ScanOrder {
    uint8_t index[64 + 16]; // by position: 8 * row + column; 63 also after the end, as far as a run of zeros leads
};
constexpr ScanOrder kScanOrder = [] {
    ScanOrder order = {};
    for (int position = 0, row = 0, column = 0; position < 64; ++position) {
        order.index[position] = uint8_t(8 * row + column);
        // Along an even diagonal up and to the right, along an odd one down and to the left; at an edge to the next.
        bool up = (row + column) % 2 == 0;
        if (up && column == 7)
            ++row;
        else if (up && row == 0)
            ++column;
        else if (!up && row == 7)
            ++column;
        else if (!up && column == 0)
            ++row;
        else {
            row += up ? -1 : 1;
            column += up ? 1 : -1;
        }
    }
    for (int position = 64; position < 80; ++position) order.index[position] = 63;
    return order;
}();

}
}
