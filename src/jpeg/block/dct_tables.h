// SPDX-License-Identifier: Apache-2.0
// Constants of the 8x8 DCT kernels.
#pragma once

#include <stdint.h>

#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

// Factors of the column passes, one for each lane, in units of 2^-16; cos4 in units of 2^-15.
struct ColumnFactors {
    alignas(16) int16_t tan1[8], tan2[8], tan3Minus1[8], cos4[8], cos4Minus1[8];
    alignas(16) int16_t one[8], levelShift[8];
    alignas(16) uint8_t middle[16];
    // What is added to four times a mean: 16 and the values of the other rows.
    alignas(16) int16_t meanUpper[8], meanMiddle[8], meanLower[8];
};
constexpr ColumnFactors kColumnFactors = [] {
    ColumnFactors f = {};
    for (int i = 0; i < 8; ++i) {
        f.tan1[i] = 13036;
        f.tan2[i] = 27146;
        f.tan3Minus1[i] = -21746;
        f.cos4[i] = 23170;
        f.cos4Minus1[i] = -19195;
        f.one[i] = 1;
        f.levelShift[i] = -128 * 64;
        f.middle[i] = f.middle[i + 8] = 128;
        f.meanUpper[i] = 16 + 1 + 1;
        f.meanMiddle[i] = 16;
        f.meanLower[i] = 16 - 1;
    }
    return f;
}();

// 16384 * c * sqrt(2) * cos(k * pi/16) for k = 1 to 7, rounded. The column passes leave rows v and 8 - v divided by
// c = sqrt(2) * cos(v * pi/16), and rows 0 and 4 as they are.
constexpr int16_t kCosines[4][7] = {{22725, 21407, 19266, 16384, 12873, 8867, 4520},
                                    {31521, 29692, 26722, 22725, 17855, 12299, 6270},
                                    {29692, 27969, 25172, 21407, 16819, 11585, 5906},
                                    {26722, 25172, 22654, 19266, 15137, 10426, 5315}};

// Horizontal frequency u at position x, in the table of the given row.
constexpr int16_t basis(int row, int u, int x)
{
    const int16_t* cosines = kCosines[row == 4 ? 0 : row > 4 ? 8 - row : row];
    int angle = u == 0 ? 4 : (2 * x + 1) * u % 32;
    if (angle > 16) angle = 32 - angle;
    return angle > 8 ? int16_t(-cosines[16 - angle - 1]) : cosines[angle - 1];
}

// Factors of mulAddPairs, [part][row], and what goes with them.
struct RowTables {
    // Parts 0 and 1 give frequencies 0 to 3, parts 2 and 3 frequencies 4 to 7. Values 0 to 3 of a row meet even
    // frequencies in the order 0, 1 | 2, 3 (first part | second) and odd ones in the order 3, 2 | 1, 0.
    alignas(64) int16_t forward[4][8][8];
    // Positions 0 to 3 from frequencies 0 and 2, 4 and 6, 1 and 3, 5 and 7.
    alignas(64) int16_t inverse[4][8][8];
    // One half of the final shift by 20; for odd frequencies and the sum of their factors.
    alignas(64) int32_t forwardRounding[2][8][4];
    alignas(64) int32_t inverseRounding[8][4];
    alignas(64) int16_t upperHalf[4][8]; // all ones for positions 4 to 7
    alignas(64) int32_t isOdd[8][4];     // all ones for odd frequencies
};

// The first row's 2^16 carries one half of the final shift by 5 to every sample.
constexpr int32_t kInverseRounding[8] = {65536, 5802, 4520, 3408, 2048, 910, 1024, 746};

constexpr int32_t forwardRounding(int row, int u)
{
    int32_t rounding = 1 << 19;
    for (int x = 0; x < 4; ++x) rounding += u % 2 == 0 ? 0 : basis(row, u, x);
    return rounding;
}

constexpr RowTables kRowTables = [] {
    RowTables t = {};
    for (int row = 0; row < 8; ++row)
        for (int lane = 0; lane < 8; ++lane) {
            int i = lane / 2, odd = lane % 2;
            for (int part = 0; part < 4; ++part) {
                int u = part / 2 * 4 + i, x = part % 2 * 2 + odd;
                t.forward[part][row][lane] = basis(row, u, u % 2 == 0 ? x : 3 - x);
                t.inverse[part][row][lane] = basis(row, part % 2 * 4 + part / 2 + 2 * odd, i);
            }
            t.inverseRounding[row][i] = kInverseRounding[row];
            t.forwardRounding[lane / 4][row][lane % 4] = forwardRounding(row, lane);
            t.upperHalf[row / 2][lane] = lane < 4 ? 0 : -1;
            t.isOdd[row][i] = -(i % 2);
        }
    return t;
}();

// The compiler is not to see the values: it would load each into a register of its own, or make it from an integer,
// where an instruction can take it from memory.
template <class Tables> QEL_INLINE const Tables& opaque(const Tables& tables)
{
    const Tables* address = &tables;
    asm("" : "+r"(address));
    return *address;
}
QEL_INLINE const ColumnFactors& columnFactors() { return opaque(kColumnFactors); }
QEL_INLINE const RowTables& rowTables() { return opaque(kRowTables); }

}
}
