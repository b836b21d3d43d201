// SPDX-License-Identifier: Apache-2.0
// Kernels of the quantization.
#include "jpeg/block/quantization.h"

#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

constexpr int kLanes = kWidth / 2;

// The floor at 2^-16, then ties upwards: (floor(8c * (T / 2) / 65536) + 1) / 2. 8c wraps beyond the range of the DCT.
void forward(const int16_t* src, int16_t* dst, const uint16_t* encTable)
{
    for (int i = 0; i < 64; i += kLanes) {
        auto reciprocal = (S16<kWidth>)(load<U16<kWidth>>(encTable + i) >> 1);
        auto product = Simd<kWidth>::mulHigh(load<S16<kWidth>>(src + i) << 3, reciprocal);
        store(dst + i, (product + 1) >> 1);
    }
}

void inverse(const int16_t* src, int16_t* dst, const uint16_t* decTable)
{
    for (int i = 0; i < 64; i += kLanes) store(dst + i, load<S16<kWidth>>(src + i) * load<S16<kWidth>>(decTable + i));
}

constexpr QuantizationKernels kKernels = {
    .forward = forward,
    .inverse = inverse,
};

}
}

const qel::QuantizationKernels qel::QuantizationKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
