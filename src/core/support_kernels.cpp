// Kernels of the support primitives.
#include "core/support.h"

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Streaming stores want whole aligned registers; tests without registers of their own use the width of one block.
constexpr int kStream = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;

// body(i) for the elements before dst + i is aligned, `past(i)` for whole aligned registers, then body(i) again.
template <class T, class Body, class Past> QEL_INLINE void streamed(T* dst, size_t len, Body body, Past past)
{
    constexpr size_t kStep = kStream / sizeof(T);
    size_t i = 0;
    for (; i < len && (uintptr_t)(dst + i) % kStream != 0; ++i) body(i);
    for (; i + kStep <= len; i += kStep) past(i);
    for (; i < len; ++i) body(i);
}

void finishStores() { Simd<kStream>::finishStores(); }

void copyPast(const uint8_t* src, uint8_t* dst, size_t len)
{
    streamed(
        dst, len, [=](size_t i) { dst[i] = src[i]; },
        [=](size_t i) { Simd<kStream>::storePast(dst + i, load<U8<kStream>>(src + i)); });
}

QEL_INLINE void widen(Bytes<1>, const uint8_t* src, uint16_t* dst) { store(dst, uint16_t(*src)); }
template <int N> QEL_INLINE void widen(Bytes<N>, const uint8_t* src, uint16_t* dst)
{
    store(dst, Simd<N>::widen(src));
    store(dst + N / 2, Simd<N>::widen(src + N / 2));
}

void convert8u16u(const uint8_t* src, uint16_t* dst, size_t len)
{
    inSteps(len, [=](auto width, size_t i) { widen(width, src + i, dst + i); });
}

void convert8u16uPast(const uint8_t* src, uint16_t* dst, size_t len)
{
    // At an odd address no store is ever aligned.
    if ((uintptr_t)dst % sizeof *dst != 0) return convert8u16u(src, dst, len);
    streamed(
        dst, len, [=](size_t i) { widen(Bytes<1>(), src + i, dst + i); },
        [=](size_t i) { Simd<kStream>::storePast(dst + i, Simd<kStream>::widen(src + i)); });
}

QEL_INLINE void andStep(Bytes<1>, const int32_t* src, int32_t value, int32_t* dst)
{
    store(dst, load<int32_t>(src) & value);
}
template <int N> QEL_INLINE void andStep(Bytes<N>, const int32_t* src, int32_t value, int32_t* dst)
{
    for (int k = 0; k < N; k += N / 4) store(dst + k, load<S32<N>>(src + k) & value);
}

void and32s(const int32_t* src, int32_t value, int32_t* dst, int len)
{
    inSteps(len, [=](auto width, int i) { andStep(width, src + i, value, dst + i); });
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

QEL_INLINE void mulStep(Bytes<1>, const uint16_t* table, const int16_t* src, int16_t* dst, int scale)
{
    int32_t product = load<uint16_t>(table) * load<int16_t>(src);
    store(dst, clampTo<int16_t>(roundToEven<uint32_t>(product, scale), -32768, 32767));
}
template <int N> QEL_INLINE void mulStep(Bytes<N>, const uint16_t* table, const int16_t* src, int16_t* dst, int scale)
{
    for (int k = 0; k < N; k += N / 2) {
        auto entry = load<S16<N>>(table + k), value = load<S16<N>>(src + k);
        // The unsigned product counts a negative value as 65536 too many.
        S16<N> high = (S16<N>)Simd<N>::mulHigh((U16<N>)entry, (U16<N>)value) - (entry & (value >> 15));
        S16<N> low = entry * value;
        auto first = roundToEven<U32<N>>((S32<N>)Simd<N>::zipLow(low, high), scale);
        auto second = roundToEven<U32<N>>((S32<N>)Simd<N>::zipHigh(low, high), scale);
        store(dst + k, Simd<N>::pack(first, second));
    }
}

void mulScaled(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale)
{
    inSteps(len, [=](auto width, int i) { mulStep(width, table + i, src + i, dst + i, scale); });
}

}
}

const SupportKernels SupportKernels::QEL_BUILD = {qel::QEL_BUILD::copyPast,     qel::QEL_BUILD::finishStores,
                                                  qel::QEL_BUILD::convert8u16u, qel::QEL_BUILD::convert8u16uPast,
                                                  qel::QEL_BUILD::and32s,       qel::QEL_BUILD::set32s,
                                                  qel::QEL_BUILD::mulScaled};

}
