// SPDX-License-Identifier: Apache-2.0
// Sets of coefficients of a block, a bit for each. For kernels.
#pragma once

#include "jpeg/entropy/scan_order.h"

namespace qel::QEL_BUILD {
namespace {

// of[i][m] is the set, by position in the scan, of those coefficients from natural index 6i on that `m` has.
struct ScanSets {
    uint64_t of[11][64];
};
constexpr ScanSets kScanSets = [] {
    ScanSets sets = {};
    for (int position = 0; position < 64; ++position) {
        int index = kScanOrder.index[position];
        for (int m = 0; m < 64; ++m)
            if ((m >> (index % 6)) & 1) sets.of[index / 6][m] |= uint64_t(1) << position;
    }
    return sets;
}();

// The coefficients that are not zero after `transform`, by position in the scan.
template <class Transform> QEL_INLINE uint64_t nonZero(const int16_t* block, Transform transform)
{
    constexpr int N = kWidth;
    uint64_t zeros = 0;
    for (int i = 0; i < 64; i += N) {
        auto low = (S16<N>)(transform(load<S16<N>>(block + i)) == 0),
             high = (S16<N>)(transform(load<S16<N>>(block + i + N / 2)) == 0);
        zeros |= Simd<N>::signMask(Simd<N>::inOrder(Simd<N>::packUnsigned(low & 0xFF, high & 0xFF))) << (i % 64);
    }
    uint64_t natural = ~zeros, scan = 0;
#pragma GCC unroll 11
    for (int i = 0; i < 11; ++i) scan |= kScanSets.of[i][(natural >> (6 * i)) & 63];
    return scan;
}

}
}
