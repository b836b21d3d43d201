// SPDX-License-Identifier: Apache-2.0
// Column passes of the 8x8 DCT: eight rows, one lane per column. Sums and differences saturate, shifts to the left
// wrap.
#pragma once

#include "core/simd.h"
#include "jpeg/block/dct_tables.h"

namespace qel::QEL_BUILD {
namespace {

using Row = S16<16>;

struct Rows {
    Row at[8];
};

QEL_INLINE Row add(Row a, Row b) { return Simd<16>::addSat(a, b); }
QEL_INLINE Row sub(Row a, Row b) { return Simd<16>::subSat(a, b); }
QEL_INLINE Row mulHigh(const int16_t (&factor)[8], Row a) { return Simd<16>::mulHigh(load<Row>(factor), a); }
// For factors that do not fit: (65536 + factor) * a.
QEL_INLINE Row mulHighPlus1(const int16_t (&factor)[8], Row a) { return add(mulHigh(factor, a), a); }

// The result is 8 times the vertical DCT, with the rows scaled as kCosines says. The products are truncated; setting
// the last bit of some results is what makes up for it on average.
template <bool kInRange> QEL_INLINE void forwardColumns(Row (&r)[8])
{
    auto& factor = columnFactors();
    auto one = load<Row>(factor.one);
    auto plus = [](Row a, Row b) { return kInRange ? a + b : add(a, b); };
    auto minus = [](Row a, Row b) { return kInRange ? a - b : sub(a, b); };
    auto t0 = plus(r[0], r[7]), t7 = minus(r[0], r[7]), t1 = plus(r[1], r[6]), t6 = minus(r[1], r[6]);
    auto t2 = plus(r[2], r[5]), t5 = minus(r[2], r[5]), t3 = plus(r[3], r[4]), t4 = minus(r[3], r[4]);

    auto tp03 = plus(t0, t3) << 3, tm03 = minus(t0, t3) << 3;
    auto tp12 = plus(t1 << 3, t2 << 3), tm12 = minus(t1 << 3, t2 << 3);
    r[0] = plus(tp03, tp12);
    r[4] = minus(tp03, tp12);
    r[2] = plus(tm03, mulHigh(factor.tan2, tm12)) | one;
    r[6] = minus(mulHigh(factor.tan2, tm03), tm12) | one;

    auto tp65 = mulHigh(factor.cos4, plus(t6 << 4, t5 << 4)) | one,
         tm65 = mulHigh(factor.cos4, minus(t6 << 4, t5 << 4));
    auto tp465 = plus(t4 << 3, tm65), tm465 = minus(t4 << 3, tm65);
    auto tp765 = plus(t7 << 3, tp65), tm765 = minus(t7 << 3, tp65);
    r[1] = plus(mulHigh(factor.tan1, tp465), tp765) | one;
    r[7] = minus(mulHigh(factor.tan1, tp765), tp465);
    r[3] = minus(tm765, plus(mulHigh(factor.tan3Minus1, tm465), tm465));
    r[5] = plus(plus(mulHigh(factor.tan3Minus1, tm765), tm765), tm465);
}

QEL_INLINE void inverseColumns(Row (&x)[8])
{
    auto& factor = columnFactors();
    auto a = add(mulHighPlus1(factor.tan3Minus1, x[5]), x[3]), b = sub(x[5], mulHighPlus1(factor.tan3Minus1, x[3]));
    auto d = add(mulHigh(factor.tan1, x[7]), x[1]), c = sub(mulHigh(factor.tan1, x[1]), x[7]);
    auto e0 = add(a, d), e1 = sub(d, a), h0 = sub(c, b), h1 = add(c, b);
    auto f = add(mulHigh(factor.tan2, x[6]), x[2]), g = sub(mulHigh(factor.tan2, x[2]), x[6]);
    auto s = mulHighPlus1(factor.cos4Minus1, add(e1, h0)), m = mulHighPlus1(factor.cos4Minus1, sub(e1, h0));
    auto p = add(x[0], x[4]), q = sub(x[0], x[4]);
    auto p0 = add(p, f), p3 = sub(p, f), q1 = add(q, g), q2 = sub(q, g);
    x[0] = add(e0, p0) >> 5;
    x[7] = sub(p0, e0) >> 5;
    x[1] = add(q1, s) >> 5;
    x[6] = sub(q1, s) >> 5;
    x[2] = add(q2, m) >> 5;
    x[5] = sub(q2, m) >> 5;
    x[3] = add(h1, p3) >> 5;
    x[4] = sub(p3, h1) >> 5;
}

}
}
