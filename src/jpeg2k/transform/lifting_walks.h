// SPDX-License-Identifier: Apache-2.0
// The walk of the lifting steps down columns, by pairs of rows; and the table of all walks.
#pragma once

#include "core/walk.h"
#include "jpeg2k/transform/lifting_rows.h"

namespace qel::QEL_BUILD {
namespace {

template <class F, int kPairs, class T>
QEL_INLINE void liftRows(const T* const* src, T* const* dst, T* kept, ptrdiff_t width)
{
    walk<T>(width, [&](auto lanes, ptrdiff_t i) QEL_INLINE_BODY {
        constexpr int N = lanes.kBytes;
        using V = ValueOf<F, N>;
        AboveLanes<V, F::kSteps> before;
        V first[kPairs], second[kPairs];
        repeat<F::kSteps>([&](int slot) QEL_INLINE_BODY { before.slots[slot] = load<V>(kept + slot * width + i); });
        repeat<kPairs>([&](int k) QEL_INLINE_BODY {
            first[k] = read<F, N>(src[2 * k] + i), second[k] = read<F, N>(src[2 * k + 1] + i);
        });
        lift<F, kPairs>(before, first, second);
        repeat<kPairs>([&](int k) QEL_INLINE_BODY {
            write<F, N>(dst[2 * k] + i, first[k]), write<F, N>(dst[2 * k + 1] + i, second[k]);
        });
        repeat<F::kSteps>([&](int slot) QEL_INLINE_BODY { store(kept + slot * width + i, before.slots[slot]); });
    });
}

template <class Step, class T> void liftPairs(const T* const* src, T* const* dst, int pairs, T* kept, ptrdiff_t width)
{
    if (pairs == kMostPairs) return liftRows<Step, kMostPairs>(src, dst, kept, width);
    for (int k = 0; k < pairs; ++k) liftRows<Step, 1>(src + 2 * k, dst + 2 * k, kept, width);
}

template <class F, class I, class T = typename F::Sample> constexpr LiftingKernels<T> kLifting = {
    .lag = F::kLag,
    .forwardRow = forwardRow<F>,
    .inverseRow = inverseRow<I>,
    .forwardPairs = liftPairs<F, T>,
    .inversePairs = liftPairs<I, T>,
};

}
}
