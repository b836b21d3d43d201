// SPDX-License-Identifier: Apache-2.0
// The zig-zag tables, and blocks in their order.
#include "jpeg/block/zigzag.h"

#include <string.h>

#include "core/checks.h"
#include "qeljx/support.h"

// clang-format off
#define ZIGZAG_SEQUENCE                 \
     0,  1,  8, 16,  9,  2,  3, 10,     \
    17, 24, 32, 25, 18, 11,  4,  5,     \
    12, 19, 26, 33, 40, 48, 41, 34,     \
    27, 20, 13,  6,  7, 14, 21, 28,     \
    35, 42, 49, 56, 57, 50, 43, 36,     \
    29, 22, 15, 23, 30, 37, 44, 51,     \
    58, 59, 52, 45, 38, 31, 39, 46,     \
    53, 60, 61, 54, 47, 55, 62, 63

const int32_t zigzag_index_Inv[64] = {ZIGZAG_SEQUENCE};

const int32_t own_qj_izigzag_index[72] = {ZIGZAG_SEQUENCE, 63, 63, 63, 63, 63, 63, 63, 63};

const int32_t zigzag_index_Fwd[64] = {
     0,  1,  5,  6, 14, 15, 27, 28,
     2,  4,  7, 13, 16, 26, 29, 42,
     3,  8, 12, 17, 25, 30, 41, 43,
     9, 11, 18, 24, 31, 40, 44, 53,
    10, 19, 23, 32, 39, 45, 52, 54,
    20, 22, 33, 38, 46, 51, 55, 60,
    21, 34, 37, 47, 50, 56, 59, 61,
    35, 36, 48, 49, 57, 58, 62, 63};
// clang-format on

using namespace qel;

QelStatus qeliZigzagInv8x8_16s_C1(const int16_t* pSrc, int16_t* pDst)
{
    if (QelStatus bad = pointers(pSrc, pDst)) return bad;
    for (int n = 0; n < 64; ++n) memcpy(pDst + n, pSrc + zigzag_index_Fwd[n], sizeof *pDst);
    return qelStsNoErr;
}
