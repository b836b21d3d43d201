// SPDX-License-Identifier: Apache-2.0
// Loops that move bytes and do nothing else.
#include "traffic_kernels.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

using Width = Simd<QEL_WIDTH>;
using Register = U64<QEL_WIDTH>;

template <int In, int Out, bool kStreamed> QEL_INLINE Register step(const uint8_t* src, uint8_t* dst)
{
    Register read = load<Register>(src);
#pragma GCC unroll 4
    for (int i = 1; i < In; ++i) read |= load<Register>(src + i * QEL_WIDTH);
#pragma GCC unroll 4
    for (int i = 0; i < Out; ++i) {
        if (kStreamed)
            Width::stream(dst + i * QEL_WIDTH, read);
        else
            store(dst + i * QEL_WIDTH, read);
    }
    return read;
}

template <int In, int Out, bool kStreamed> uint64_t move(const uint8_t* src, uint8_t* dst, size_t steps)
{
    Register seen = {};
#pragma GCC unroll 4
    for (size_t i = 0; i < steps; ++i)
        seen |= step<In, Out, kStreamed>(src + i * In * QEL_WIDTH, dst + i * Out * QEL_WIDTH);
    if (kStreamed) Width::fence();
    return seen[0];
}

template <int In, int Out> constexpr TrafficKernels::Ratio ratio()
{
    return {In, Out, move<In, Out, false>, move<In, Out, true>};
}

}
}

const TrafficKernels TrafficKernels::QEL_BUILD = {
    QEL_WIDTH,
    {QEL_BUILD::ratio<1, 1>(), QEL_BUILD::ratio<1, 2>(), QEL_BUILD::ratio<1, 4>(), QEL_BUILD::ratio<2, 1>(),
     QEL_BUILD::ratio<2, 3>(), QEL_BUILD::ratio<3, 1>(), QEL_BUILD::ratio<3, 2>(), QEL_BUILD::ratio<4, 1>()}};

}
