// The lifting steps of both wavelet filters, stated once for single samples and registers, for rows and columns.
// A filter F has samples F::Sample in memory and F::Value<N> in registers of N bytes; N = 1 is one sample.
#pragma once

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// What the pair before had. Down columns that is what was put into the slot last, lane by lane.
template <class V, int kSlots> struct AboveLanes {
    V slots[kSlots] = {};

    QEL_INLINE V operator()(int slot, V now)
    {
        V before = slots[slot];
        slots[slot] = now;
        return before;
    }
};
// Along a row the pairs are lanes: the one before is the neighbour in the block.
template <class V, int kSlots> struct BesideLanes {
    V slots[kSlots];

    QEL_INLINE V operator()(int slot, V now)
    {
        V before = slots[slot];
        if constexpr (sizeof(V) >= 16) before = Simd<sizeof(V)>::shiftIn(before, now);
        slots[slot] = now;
        return before;
    }
};

// Lifting has two halves, so that those of successive pairs can go side by side. All of 5/3 is in the first one.

// 5/3 (T.800 F.3.8.2.1.1, F.4.8.1). Sums wrap.
template <class T> struct Filter53 {
    using Sample = T;
    template <int N> using Value = typename LanesOf<T, N>::Type;
    static constexpr int kLag = 0, kDelays = 2;

    template <class V, class Before> static QEL_INLINE void forwardFirst(Before& before, V odd, V even, V& low, V& high)
    {
        V evenBefore = before(0, even);
        high = V(odd - V(V(evenBefore + even) >> 1));
        low = V(evenBefore + V(V(before(1, high) + high + 2) >> 2));
    }
    template <class V, class Before> static QEL_INLINE void inverseFirst(Before& before, V low, V high, V& odd, V& even)
    {
        V highBefore = before(0, high);
        even = V(low - V(V(highBefore + high + 2) >> 2));
        odd = V(highBefore + V(V(before(1, even) + even) >> 1));
    }
    template <class V, class Before> static QEL_INLINE void forwardSecond(Before&, V low1, V high1, V& low, V& high)
    {
        low = low1, high = high1;
    }
    template <class V, class Before> static QEL_INLINE void inverseSecond(Before&, V odd1, V even1, V& odd, V& even)
    {
        odd = odd1, even = even1;
    }

    template <int N> static QEL_INLINE Value<N> fromMemory(Value<N> samples) { return samples; }
    template <int N> static QEL_INLINE Value<N> toMemory(Value<N> values) { return values; }
};

// 9/7 (T.800 F.3.8.2.1.2, F.4.8.2) over the arithmetic A: A::times(c, v), A::times(c, v, w) = c (v + w), and constants.
template <class A> struct Filter97 : A {
    static constexpr int kLag = 1, kDelays = 4;

    template <class V, class Before>
    static QEL_INLINE void forwardFirst(Before& before, V odd, V even, V& low1, V& high1Before)
    {
        V evenBefore = before(0, even);
        V high1 = V(odd + A::times(A::kAlpha, evenBefore, even));
        high1Before = before(1, high1);
        low1 = V(evenBefore + A::times(A::kBeta, high1Before, high1));
    }
    template <class V, class Before>
    static QEL_INLINE void forwardSecond(Before& before, V low1, V high1Before, V& low, V& high)
    {
        V low1Before = before(2, low1);
        V high2 = V(high1Before + A::times(A::kGamma, low1Before, low1));
        V low2 = V(low1Before + A::times(A::kDelta, before(3, high2), high2));
        low = A::times(A::kLow, low2);
        high = A::times(A::kHigh, high2);
    }
    template <class V, class Before>
    static QEL_INLINE void inverseFirst(Before& before, V low, V high, V& low1Before, V& high1)
    {
        V low2 = A::times(A::kHigh, low), high2 = A::times(A::kLow, high);
        V high2Before = before(0, high2);
        V low1 = V(low2 - A::times(A::kDelta, high2Before, high2));
        low1Before = before(1, low1);
        high1 = V(high2Before - A::times(A::kGamma, low1Before, low1));
    }
    template <class V, class Before>
    static QEL_INLINE void inverseSecond(Before& before, V low1Before, V high1, V& odd, V& even)
    {
        V high1Before = before(2, high1);
        even = V(low1Before - A::times(A::kBeta, high1Before, high1));
        odd = V(high1Before - A::times(A::kAlpha, before(3, even), even));
    }
};

// Constants with 14 fraction bits; products are rounded, ties up, and kept to 16 bits.
struct Fixed97 {
    using Sample = int16_t;
    template <int N> using Value = typename LanesOf<int16_t, N>::Type;
    static constexpr int16_t kAlpha = -25987, kBeta = -868, kGamma = 14466, kDelta = 7266, kLow = 13318, kHigh = 20155;

    static QEL_INLINE int16_t times(int16_t c, int16_t v) { return int16_t((c * v + 8192) >> 14); }
    static QEL_INLINE int16_t times(int16_t c, int16_t v, int16_t w) { return int16_t((c * (v + w) + 8192) >> 14); }

    // The second factor of v is 1, and that of c the rounding term.
    template <class V> static QEL_INLINE V times(int16_t c, V v) { return sumOfProducts(c, v, 8192, V{} + 1, 0); }
    template <class V> static QEL_INLINE V times(int16_t c, V v, V w) { return sumOfProducts(c, v, c, w, 8192); }
    // Bits 14 to 29 of c v + d w + rounding.
    template <class V> static QEL_INLINE V sumOfProducts(int16_t c, V v, int16_t d, V w, int32_t rounding)
    {
        using S = Simd<sizeof(V)>;
        auto factors = (V)(S32<sizeof(V)>{} + int32_t(uint16_t(c) | uint32_t(uint16_t(d)) << 16));
        auto low = S::mulAddPairs(S::zipLow(v, w), factors) + rounding;
        auto high = S::mulAddPairs(S::zipHigh(v, w), factors) + rounding;
        return S::pack(low << 2 >> 16, high << 2 >> 16);
    }

    template <int N> static QEL_INLINE Value<N> fromMemory(Value<N> samples) { return samples; }
    template <int N> static QEL_INLINE Value<N> toMemory(Value<N> values) { return values; }
};

// Single precision, each operation rounded by itself.
struct Float97 {
    using Sample = float;
    template <int N> using Value = typename LanesOf<float, N>::Type;
    static constexpr float kAlpha = -1.5861343145370483f, kBeta = -0.05298011749982834f, kGamma = 0.8829110860824585f,
                           kDelta = 0.4435068666934967f, kLow = 0.8128930926322937f, kHigh = 1.2301740646362305f;

    template <class V> static QEL_INLINE V times(float c, V v) { return c * v; }
    template <class V> static QEL_INLINE V times(float c, V v, V w) { return c * (v + w); }

    template <int N> static QEL_INLINE Value<N> fromMemory(Value<N> samples) { return samples; }
    template <int N> static QEL_INLINE Value<N> toMemory(Value<N> values) { return values; }
};

// The same from integers and to integers, towards zero. Above 2^31 lies the largest integer; 2^31 itself is what the
// conversion makes of it, the least one.
struct Rounded97 : Float97 {
    using Sample = int32_t;

    template <int N> static QEL_INLINE Value<N> fromMemory(typename LanesOf<int32_t, N>::Type samples)
    {
        if constexpr (N == 1)
            return float(samples);
        else
            return __builtin_convertvector(samples, F32<N>);
    }
    template <int N> static QEL_INLINE typename LanesOf<int32_t, N>::Type toMemory(Value<N> values)
    {
        constexpr float kBound = 2147483648.0f;
        if constexpr (N == 1)
            return values > kBound ? INT32_MAX : values >= -kBound && values < kBound ? int32_t(values) : INT32_MIN;
        else
            return Simd<N>::truncate(values) ^ (values > kBound);
    }
};

template <class F, int N> using SamplesOf = typename LanesOf<typename F::Sample, N>::Type;
template <class F, int N> using ValueOf = typename F::template Value<N>;

template <class F, int N> QEL_INLINE ValueOf<F, N> read(const typename F::Sample* p)
{
    return F::template fromMemory<N>(load<SamplesOf<F, N>>(p));
}
template <class F, int N> QEL_INLINE void write(typename F::Sample* p, ValueOf<F, N> v)
{
    store(p, SamplesOf<F, N>(F::template toMemory<N>(v)));
}

// One of the two directions of a filter.
template <class F> struct Forward : F {
    template <class... Args> static QEL_INLINE void first(Args&... args) { F::forwardFirst(args...); }
    template <class... Args> static QEL_INLINE void second(Args&... args) { F::forwardSecond(args...); }
};
template <class F> struct Inverse : F {
    template <class... Args> static QEL_INLINE void first(Args&... args) { F::inverseFirst(args...); }
    template <class... Args> static QEL_INLINE void second(Args&... args) { F::inverseSecond(args...); }
};

}
}
}
