// SPDX-License-Identifier: Apache-2.0
// The fixed-point DCT one value at a time, and the exact DCT in double precision (T.81 A.3.3).
#pragma once

#include <math.h>
#include <stdint.h>

namespace qel::test {

inline int16_t saturated(int v) { return int16_t(v < -32768 ? -32768 : v > 32767 ? 32767 : v); }

// Integer lanes of 16 bits: + and - saturate, << wraps, upper() is the upper half of a product.
struct Fixed {
    int16_t v = 0;
    Fixed operator+(Fixed b) const { return {saturated(v + b.v)}; }
    Fixed operator-(Fixed b) const { return {saturated(v - b.v)}; }
    Fixed operator<<(int n) const { return {int16_t(uint32_t(v) << n)}; }
    Fixed operator>>(int n) const { return {int16_t(v >> n)}; }
    Fixed odd() const { return {int16_t(v | 1)}; }
};
inline Fixed upper(int factor, Fixed a) { return {int16_t((factor * a.v) >> 16)}; }

// Entry of the row table of row `row`, from its definition.
inline int32_t rowEntry(int row, int u, int x)
{
    int angle = row > 4 ? 8 - row : row % 4;
    double scale = angle == 0 ? 1 : sqrt(2) * cos(angle * M_PI / 16);
    return int32_t(lround(16384 * scale * (u == 0 ? 1 : sqrt(2) * cos((2 * x + 1) * u * M_PI / 16))));
}
struct RowEntries {
    int32_t at[8][8][8]; // [row][u][x]
    RowEntries()
    {
        for (int i = 0; i < 512; ++i) at[i / 64][i / 8 % 8][i % 8] = rowEntry(i / 64, i / 8 % 8, i % 8);
    }
};
inline const RowEntries kRowEntries;

inline void referenceForward(const int16_t* src, int16_t* dst)
{
    Fixed column[8][8];
    for (int i = 0; i < 8; ++i) {
        Fixed r[8];
        for (int y = 0; y < 8; ++y) r[y] = {src[8 * y + i]};
        Fixed t0 = r[0] + r[7], t7 = r[0] - r[7], t1 = r[1] + r[6], t6 = r[1] - r[6];
        Fixed t2 = r[2] + r[5], t5 = r[2] - r[5], t3 = r[3] + r[4], t4 = r[3] - r[4];
        Fixed tp03 = (t0 + t3) << 3, tm03 = (t0 - t3) << 3;
        Fixed tp12 = (t1 << 3) + (t2 << 3), tm12 = (t1 << 3) - (t2 << 3);
        Fixed tp65 = upper(23170, (t6 << 4) + (t5 << 4)).odd(), tm65 = upper(23170, (t6 << 4) - (t5 << 4));
        Fixed tp465 = (t4 << 3) + tm65, tm465 = (t4 << 3) - tm65;
        Fixed tp765 = (t7 << 3) + tp65, tm765 = (t7 << 3) - tp65;
        column[0][i] = tp03 + tp12;
        column[1][i] = (upper(13036, tp465) + tp765).odd();
        column[2][i] = (tm03 + upper(27146, tm12)).odd();
        column[3][i] = tm765 - (upper(-21746, tm465) + tm465);
        column[4][i] = tp03 - tp12;
        column[5][i] = (upper(-21746, tm765) + tm765) + tm465;
        column[6][i] = (upper(27146, tm03) - tm12).odd();
        column[7][i] = upper(13036, tp765) - tp465;
    }
    for (int row = 0; row < 8; ++row)
        for (int u = 0; u < 8; ++u) {
            int64_t sum = 524288;
            for (int x = 0; x < 8; ++x) sum += kRowEntries.at[row][u][x] * column[row][x].v;
            dst[8 * row + u] = saturated(int32_t(uint32_t(sum)) >> 20);
        }
}

inline void referenceInverse(const int16_t* src, int16_t* dst)
{
    const int32_t rounding[8] = {65536, 5802, 4520, 3408, 2048, 910, 1024, 746};
    Fixed value[8][8];
    for (int row = 0; row < 8; ++row)
        for (int x = 0; x < 8; ++x) {
            int64_t sum = rounding[row];
            for (int u = 0; u < 8; ++u) sum += kRowEntries.at[row][u][x] * src[8 * row + u];
            value[row][x] = {saturated(int32_t(uint32_t(sum)) >> 12)};
        }
    for (int i = 0; i < 8; ++i) {
        Fixed x0 = value[0][i], x1 = value[1][i], x2 = value[2][i], x3 = value[3][i];
        Fixed x4 = value[4][i], x5 = value[5][i], x6 = value[6][i], x7 = value[7][i];
        Fixed a = (upper(-21746, x5) + x5) + x3, b = x5 - (upper(-21746, x3) + x3);
        Fixed d = upper(13036, x7) + x1, c = upper(13036, x1) - x7;
        Fixed e0 = a + d, e1 = d - a, h0 = c - b, h1 = c + b;
        Fixed f = upper(27146, x6) + x2, g = upper(27146, x2) - x6;
        Fixed s = e1 + h0, S = s + upper(-19195, s), m = e1 - h0, M = m + upper(-19195, m);
        Fixed p = x0 + x4, q = x0 - x4, P0 = p + f, P3 = p - f, Q1 = q + g, Q2 = q - g;
        const Fixed out[8] = {e0 + P0, Q1 + S, Q2 + M, h1 + P3, P3 - h1, Q2 - M, Q1 - S, P0 - e0};
        for (int y = 0; y < 8; ++y) dst[8 * y + i] = (out[y] >> 5).v;
    }
}

// c * T / 2^15, ties to even, saturated.
inline int16_t referenceQuantized(int c, int table)
{
    int64_t product = (int64_t)c * table, floored = product >> 15, rest = product & 32767;
    return saturated(int(floored + (rest > 16384 || (rest == 16384 && floored % 2 != 0))));
}

inline uint8_t referenceClipped(int16_t value, int16_t shift, uint8_t min, uint8_t max)
{
    bool whole = min == 0 && max == 255;
    int sum = whole ? int16_t(uint16_t(value + shift)) : value + shift;
    return uint8_t(sum < min ? min : sum > max ? max : sum);
}

struct ExactDct {
    double cosine[8][8]; // [frequency][position], orthonormal
    ExactDct()
    {
        for (int u = 0; u < 8; ++u)
            for (int x = 0; x < 8; ++x) cosine[u][x] = (u == 0 ? sqrt(0.5) : 1) / 2 * cos((2 * x + 1) * u * M_PI / 16);
    }
    template <class T> void forward(const T* src, double* dst) const
    {
        for (int n = 0; n < 64; ++n) {
            dst[n] = 0;
            for (int k = 0; k < 64; ++k) dst[n] += cosine[n / 8][k / 8] * cosine[n % 8][k % 8] * src[k];
        }
    }
    template <class T> void inverse(const T* src, double* dst) const
    {
        for (int n = 0; n < 64; ++n) {
            dst[n] = 0;
            for (int k = 0; k < 64; ++k) dst[n] += cosine[k / 8][n / 8] * cosine[k % 8][n % 8] * src[k];
        }
    }
};

}
