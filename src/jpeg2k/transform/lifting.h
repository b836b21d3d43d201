// SPDX-License-Identifier: Apache-2.0
// The lifting steps of both wavelet filters, stated once for single samples and registers, for rows and columns.
// A filter has samples Sample in memory and Value<N> in registers of N bytes; N = 1 is one sample.
#pragma once

#include "core/simd.h"

namespace qel::QEL_BUILD {
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

// body(0), body(1), ... without a loop: arrays that it indexes stay in registers.
template <int kTimes, class Body> QEL_INLINE void repeat(Body body)
{
    if constexpr (kTimes > 0) {
        repeat<kTimes - 1>(body);
        body(kTimes - 1);
    }
}

// Every step of every filter has the same form: of a pair (first, second) it lifts the first sample, which lies between
// the second ones of this pair and of the one before, and the next step's pair is (second before, lifted first). The
// last step leaves (lifted first, second).
//
// Lifts kPairs pairs, one after the other. Each step is taken by all before the next one is by any: as few operations
// as possible wait for the one before them.
template <class Lift, int kPairs, class V, class Before> QEL_INLINE void lift(Before& before, V* first, V* second)
{
    repeat<kPairs>([&](int k) QEL_INLINE_BODY { Lift::enter(first[k], second[k]); });
    repeat<Lift::kSteps>([&](int step) QEL_INLINE_BODY {
        repeat<kPairs>([&](int k) QEL_INLINE_BODY {
            V secondBefore = before(step, second[k]), lifted = Lift::lifted(step, first[k], secondBefore, second[k]);
            if (step == Lift::kSteps - 1)
                first[k] = lifted;
            else
                first[k] = secondBefore, second[k] = lifted;
        });
    });
    repeat<kPairs>([&](int k) QEL_INLINE_BODY { Lift::leave(first[k], second[k]); });
}

// 5/3 (T.800 F.3.8.2.1.1, F.4.8.1). Sums wrap.
template <class T> struct Filter53 {
    using Sample = T;
    template <int N> using Value = typename LanesOf<T, N>::Type;
    static constexpr int kLag = 0, kSteps = 2;

    template <class V> static QEL_INLINE V half(V before, V now) { return V(V(before + now) >> 1); }
    template <class V> static QEL_INLINE V quarter(V before, V now) { return V(V(before + now + 2) >> 2); }

    template <int N> static QEL_INLINE Value<N> fromMemory(Value<N> samples) { return samples; }
    template <int N> static QEL_INLINE Value<N> toMemory(Value<N> values) { return values; }
};
template <class T> struct Forward53 : Filter53<T> { // step 0 makes high-pass samples, step 1 low-pass ones
    template <class V> static QEL_INLINE V lifted(int step, V v, V before, V now)
    {
        return step == 0 ? V(v - Forward53::half(before, now)) : V(v + Forward53::quarter(before, now));
    }
    template <class V> static QEL_INLINE void enter(V&, V&) {}
    template <class V> static QEL_INLINE void leave(V&, V&) {}
};
template <class T> struct Inverse53 : Filter53<T> {
    template <class V> static QEL_INLINE V lifted(int step, V v, V before, V now)
    {
        return step == 0 ? V(v - Inverse53::quarter(before, now)) : V(v + Inverse53::half(before, now));
    }
    template <class V> static QEL_INLINE void enter(V&, V&) {}
    template <class V> static QEL_INLINE void leave(V&, V&) {}
};

// 9/7 (T.800 F.3.8.2.1.2, F.4.8.2) over the arithmetic A: A::times(c, v), A::times(c, v, w) = c (v + w), and constants.
template <class A> struct Forward97 : A {
    static constexpr int kLag = 1, kSteps = 4;

    template <class V> static QEL_INLINE V lifted(int step, V v, V before, V now)
    {
        return V(v + A::times(A::kFactors[step], before, now));
    }
    template <class V> static QEL_INLINE void enter(V&, V&) {}
    template <class V> static QEL_INLINE void leave(V& low, V& high)
    {
        low = A::times(A::kLow, low), high = A::times(A::kHigh, high);
    }
};
template <class A> struct Inverse97 : A {
    static constexpr int kLag = 1, kSteps = 4;

    template <class V> static QEL_INLINE V lifted(int step, V v, V before, V now)
    {
        return V(v - A::times(A::kFactors[3 - step], before, now));
    }
    template <class V> static QEL_INLINE void enter(V& low, V& high)
    {
        low = A::times(A::kHigh, low), high = A::times(A::kLow, high);
    }
    template <class V> static QEL_INLINE void leave(V&, V&) {}
};

// Constants with 14 fraction bits; products are rounded, ties up, and kept to 16 bits.
struct Fixed97 {
    using Sample = int16_t;
    template <int N> using Value = typename LanesOf<int16_t, N>::Type;
    // Of the four steps forward, and of the two halves.
    static constexpr int16_t kFactors[] = {-25987, -868, 14466, 7266}, kLow = 13318, kHigh = 20155;

    static QEL_INLINE int16_t times(int16_t c, int16_t v) { return int16_t((c * v + 8192) >> 14); }
    static QEL_INLINE int16_t times(int16_t c, int16_t v, int16_t w) { return int16_t((c * (v + w) + 8192) >> 14); }

    // The second factor of v is 1, and that of c the rounding term.
    template <class V> static QEL_INLINE V times(int16_t c, V v) { return sumOfProducts(c, v, 8192, V{} + 1, 0); }
    template <class V> static QEL_INLINE V times(int16_t c, V v, V w) { return sumOfProducts(c, v, c, w, 8192); }
    // Bits 14 to 29 of c v + d w + rounding.
    template <class V> static QEL_INLINE V sumOfProducts(int16_t c, V v, int16_t d, V w, int32_t rounding)
    {
        using S = Simd<sizeof(V)>;
        auto factors = (V)wordPairsOf<sizeof(V)>(c, d);
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
    static constexpr float kFactors[] = {-1.5861343145370483f, -0.05298011749982834f, 0.8829110860824585f,
                                         0.4435068666934967f},
                           kLow = 0.8128930926322937f, kHigh = 1.2301740646362305f;

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
        // Single samples as well go without branches, which steep data would mispredict.
        if constexpr (N == 1)
            return toMemory<16>(F32<16>{values})[0];
        else
            return Simd<N>::truncate(values) ^ (values > 2147483648.0f);
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

}
}
