// SPDX-License-Identifier: Apache-2.0
// Kernels of the level shift.
#include "jpeg/block/level_shift.h"

#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

template <class Store> void sub128(const uint8_t* src, int16_t* dst, int len)
{
    walkInto<Store>(dst, len,
                    [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY { out.put(lanes.widen(src + i) - 128); });
}
template <class Store> void add128(const int16_t* src, uint8_t* dst, int len)
{
    walkInto<Store>(dst, len, [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY {
        out.put(lanes.narrow([=](ptrdiff_t k) QEL_INLINE_BODY { return lanes.addSat(lanes.load(src + i + k), 128); }));
    });
}

void sub128Block(const uint8_t* src, int srcStep, int16_t* dst)
{
    for (int r = 0; r < 8; ++r, src += srcStep, dst += 8) store(dst, Simd<16>::widen(src) - 128);
}
void add128Block(const int16_t* src, uint8_t* dst, int dstStep)
{
    for (int r = 0; r < 8; ++r, src += 8, dst += dstStep) {
        auto row = Simd<16>::addSat(load<S16<16>>(src), S16<16>{} + 128);
        store(dst, ((U64<16>)Simd<16>::packUnsigned(row, row))[0]);
    }
}

constexpr LevelShiftKernels kKernels = {
    .sub128 = {sub128<Cached>, sub128<Streamed>},
    .add128 = {add128<Cached>, add128<Streamed>},
    .sub128Block = sub128Block,
    .add128Block = add128Block,
};

}
}

const qel::LevelShiftKernels qel::LevelShiftKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
