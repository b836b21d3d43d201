// SPDX-License-Identifier: Apache-2.0
// What the formulas of rows are written over: as many samples as a register of N bytes has lanes, or a single one. So a
// formula stands once, and the end of a row cannot differ from its middle by accident.
#pragma once

#include "core/simd.h"

namespace qel::QEL_BUILD {
namespace {

// Samples of several channels, or registers of them.
template <class V> struct Pair {
    V a, b;
};
template <class V> struct Triple {
    V a, b, c;
};
template <class V> struct Quad {
    V a, b, c, d;
};

template <class V> Pair(V, V) -> Pair<V>;
template <class V> Triple(V, V, V) -> Triple<V>;
template <class V> Quad(V, V, V, V) -> Quad<V>;

// Bytes from 255. As a difference, because GCC lets a NOT of 64 bytes wait for what its register held before.
template <class V> QEL_INLINE V inverted(V v)
{
    if constexpr (sizeof(V) == 1)
        return V(~v);
    else
        return Simd<sizeof(V)>::subSat(V{} + 255, v);
}

// Passed by value, for its type: body(Lanes<32>(), i), body(Lanes<1>(), i).
template <int N> struct Lanes {
    static constexpr int kBytes = N;
    template <class T> using Of = typename LanesOf<T, N>::Type;
    template <class T> static constexpr ptrdiff_t kCount = N == 1 ? 1 : N / sizeof(T);
    using Bytes = Of<uint8_t>;
    static constexpr int kSamples = N; // of a byte each

    // Any address is valid.
    template <class T> static QEL_INLINE Of<T> load(const T* p) { return qel::QEL_BUILD::load<Of<T>>(p); }
    template <class T> static QEL_INLINE void store(T* p, Of<T> v) { qel::QEL_BUILD::store(p, v); }

    // Interleaved samples.
    static QEL_INLINE Pair<Bytes> load2(const uint8_t* p)
    {
        Pair<Bytes> v = {};
        if constexpr (N == 1)
            v = {p[0], p[1]};
        else
            Simd<N>::load2(p, v.a, v.b);
        return v;
    }
    static QEL_INLINE void store2(uint8_t* p, Pair<Bytes> v)
    {
        if constexpr (N == 1) {
            p[0] = v.a;
            p[1] = v.b;
        } else {
            Simd<N>::store2(p, v.a, v.b);
        }
    }
    template <class T> static QEL_INLINE Triple<Of<T>> load3(const T* p)
    {
        Triple<Of<T>> v = {};
        if constexpr (N == 1)
            v = {load(p), load(p + 1), load(p + 2)};
        else
            Simd<N>::load3((const uint8_t*)p, v.a, v.b, v.c);
        return v;
    }
    template <class T> static QEL_INLINE void store3(T* p, Triple<Of<T>> v)
    {
        if constexpr (N == 1) {
            store(p, v.a);
            store(p + 1, v.b);
            store(p + 2, v.c);
        } else {
            Simd<N>::store3((uint8_t*)p, v.a, v.b, v.c);
        }
    }
    static QEL_INLINE Quad<Bytes> load4(const uint8_t* p)
    {
        Quad<Bytes> v = {};
        if constexpr (N == 1)
            v = {p[0], p[1], p[2], p[3]};
        else
            Simd<N>::load4(p, v.a, v.b, v.c, v.d);
        return v;
    }
    static QEL_INLINE void store4(uint8_t* p, Quad<Bytes> v)
    {
        if constexpr (N == 1) {
            p[0] = v.a;
            p[1] = v.b;
            p[2] = v.c;
            p[3] = v.d;
        } else {
            Simd<N>::store4(p, v.a, v.b, v.c, v.d);
        }
    }

    // Samples of 8 bits as 16.
    static QEL_INLINE Of<int16_t> widen(const uint8_t* p)
    {
        if constexpr (N == 1)
            return *p;
        else
            return Simd<N>::widen(p);
    }
    // Samples of 16 bits as 8, saturated. They come as half(k), from sample k of the step on, a register full each
    // time.
    template <class Half> static QEL_INLINE Of<uint8_t> narrow(Half half)
    {
        if constexpr (N == 1)
            return clampTo<uint8_t>(half(0), 0, 255);
        else
            return Simd<N>::inOrder(Simd<N>::packUnsigned(half(0), half(N / 2)));
    }

    // p[2 i] + p[2 i + 1].
    static QEL_INLINE Of<int16_t> sumPairs(const uint8_t* p)
    {
        if constexpr (N == 1)
            return int16_t(p[0] + p[1]);
        else
            return Simd<N>::mulAddPairs(qel::QEL_BUILD::load<U8<N>>(p), pairsOf<N>(1, 1));
    }
    // Means, rounded up and down.
    static QEL_INLINE Bytes average(Bytes a, Bytes b)
    {
        if constexpr (N == 1)
            return uint8_t((a + b + 1) >> 1);
        else
            return Simd<N>::average(a, b);
    }
    static QEL_INLINE Bytes averageDown(Bytes a, Bytes b) { return inverted(average(inverted(a), inverted(b))); }

    // A sum that saturates.
    static QEL_INLINE Of<int16_t> addSat(Of<int16_t> v, int16_t term)
    {
        if constexpr (N == 1)
            return clampTo<int16_t>(v + term, -32768, 32767);
        else
            return Simd<N>::addSat(v, Of<int16_t>{} + term);
    }
};

// Lanes of a single sample, and of more.
template <class L>
concept Single = L::kSamples == 1;
template <class L>
concept Several = !Single<L>;

}
}
