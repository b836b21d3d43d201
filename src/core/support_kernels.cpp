// SPDX-License-Identifier: Apache-2.0
// Kernels of the support primitives.
#include "core/support.h"

#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

void copy(const uint8_t* src, uint8_t* dst, size_t len) { __builtin_memcpy(dst, src, len); }
void copyStreamed(const uint8_t* src, uint8_t* dst, size_t len)
{
    walkInto<Streamed>(dst, ptrdiff_t(len),
                       [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY { out.put(lanes.load(src + i)); });
}

template <class Store> void convert8u16u(const uint8_t* src, uint16_t* dst, size_t len)
{
    walkInto<Store>(dst, ptrdiff_t(len),
                    [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY { out.put(lanes.widen(src + i)); });
}

void fence() { Simd<kWidth>::fence(); }

void and32s(const int32_t* src, int32_t value, int32_t* dst, int len)
{
    walkInto(dst, len,
             [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY { out.put(lanes.load(src + i) & value); });
}

void set32s(int32_t value, int32_t* dst, int len)
{
    for (int i = 0; i < len; ++i) store(dst + i, value);
}

// A product divided by 2^scale, ties to even. What is left of it, and what is added to round, need all 32 bits at scale
// 31; at scale 0 nothing is left and nothing added.
template <class U, class S> QEL_INLINE S roundToEven(S product, int scale)
{
    uint32_t one = scale != 0, rests = (1u << scale) - 1, belowHalf = rests >> 1;
    S quotient = product >> scale;
    return quotient + (S)((((U)product & rests) + ((U)quotient & one) + belowHalf) >> scale);
}
template <int N> QEL_INLINE auto mulRounded(Lanes<N> lanes, const uint16_t* table, const int16_t* src, int scale)
{
    auto entry = lanes.load(table);
    auto value = lanes.load(src);
    if constexpr (N == 1) {
        return clampTo<int16_t>(roundToEven<uint32_t>(int32_t(entry * value), scale), -32768, 32767);
    } else {
        // The unsigned product counts a negative value as 65536 too many.
        S16<N> high = (S16<N>)Simd<N>::mulHigh(entry, (U16<N>)value) - ((S16<N>)entry & (value >> 15));
        S16<N> low = (S16<N>)entry * value;
        return Simd<N>::pack(roundToEven<U32<N>>((S32<N>)Simd<N>::zipLow(low, high), scale),
                             roundToEven<U32<N>>((S32<N>)Simd<N>::zipHigh(low, high), scale));
    }
}

void mulScaled(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale)
{
    walkInto(dst, len, [=](auto lanes, ptrdiff_t i, auto out) QEL_INLINE_BODY {
        out.put(mulRounded(lanes, table + i, src + i, scale));
    });
}

constexpr SupportKernels kKernels = {
    .copy = {copy, copyStreamed},
    .convert8u16u = {convert8u16u<Cached>, convert8u16u<Streamed>},
    .fence = fence,
    .and32s = and32s,
    .set32s = set32s,
    .mulScaled = mulScaled,
};

}
}

const qel::SupportKernels qel::SupportKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
