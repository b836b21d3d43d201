// SPDX-License-Identifier: Apache-2.0
// What both wavelet filters share: a line of samples with what lies beyond its ends, and the table of kernels that lift
// lines of one sample type.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/inline.h"

namespace qel {

// A line of `length` samples, low and high interleaved, or its two halves. The first sample is high if `phase` is 1.
// Beyond its ends lie the samples of the symmetric extension: mirrored ones, or those that the caller put there.
//
// Lifting goes along the even positions (the low samples) of the reference grid: position p is sample p - phase, low
// sample n lies at 2n, high sample n at 2n + 1. So the low half of a line that starts high holds low samples 1, 2, ...
struct Line {
    ptrdiff_t length;
    int phase;
    bool mirrored = true;

    QEL_INLINE ptrdiff_t lows() const { return (length + 1 - phase) / 2; }
    QEL_INLINE ptrdiff_t highs() const { return (length + phase) / 2; }

    // The sample that stands for sample i, which may lie beyond the ends.
    QEL_INLINE ptrdiff_t inside(ptrdiff_t i) const
    {
        if (!mirrored) return i;
        do {
            i = i < 0 ? -i : i;
            ptrdiff_t reflected = 2 * (length - 1) - i;
            i = i < reflected ? i : reflected;
        } while (i < 0);
        return i;
    }
    // The same for places in the two halves.
    QEL_INLINE ptrdiff_t lowPlace(ptrdiff_t n) const
    {
        return mirrored ? (inside(2 * n - phase) + phase) / 2 - phase : n - phase;
    }
    QEL_INLINE ptrdiff_t highPlace(ptrdiff_t n) const { return mirrored ? (inside(2 * n + 1 - phase) + phase) / 2 : n; }
};

// Lifting takes a line in pairs, one after the other. Forward, pair k is the samples at 2k + 1 and 2k + 2, and gives
// low and high sample k - lag; inverse, it is low and high sample k, and gives the samples at 2(k - lag) - 1 and
// 2(k - lag). The first pair only starts the lifting; of it only the sample at 2k + 2 or the high sample counts.
// Pairs from `first` to `last` read no more than the line's samples depend on.
struct Pairs {
    ptrdiff_t first, last;
};
QEL_INLINE Pairs forwardPairs(Line line, int lag)
{
    ptrdiff_t highs = line.highs(), lows = line.lows() + line.phase;
    return {line.phase - 2 - lag, (highs > lows ? highs : lows) - 1 + lag};
}
QEL_INLINE Pairs inversePairs(Line line, int lag) { return {-1 - lag, (line.length + line.phase) / 2 + lag}; }

// So many pairs of rows at most go through the lifting at once.
constexpr int kMostPairs = 4;

// Rows are lines themselves. Columns go side by side, by pairs of the rows that lie across them: src[0] and src[1] are
// the rows of a pair, dst[0] and dst[1] those it gives, src[2] the next pair's, and so on. Between pairs, `kept` holds
// what the next one needs: 2 + 2 * lag rows of `width` samples, at first zeros.
template <class T> struct LiftingKernels {
    int lag; // 0 for 5/3, 1 for 9/7
    void (*forwardRow)(const T* src, Line line, T* low, T* high);
    void (*inverseRow)(const T* low, const T* high, Line line, T* dst);
    void (*forwardPairs)(const T* const* src, T* const* dst, int pairs, T* kept, ptrdiff_t width);
    void (*inversePairs)(const T* const* src, T* const* dst, int pairs, T* kept, ptrdiff_t width);
};

}
