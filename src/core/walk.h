// SPDX-License-Identifier: Apache-2.0
// How kernels walk a row, and how they store what they make of it.
#pragma once

#include "core/lanes.h"

namespace qel::QEL_BUILD {
namespace {

// The two ways to store: into the caches, or non-temporally, for output that no cache can hold.
struct Cached {
    template <class V> static QEL_INLINE void store(void* p, V v) { qel::QEL_BUILD::store(p, v); }
};
struct Streamed {
    template <class V> static QEL_INLINE void store(void* p, V v)
    {
        constexpr int kBytes = int(sizeof(V));
        if (uintptr_t(p) % kBytes == 0)
            Simd<kBytes>::stream(p, v);
        else
            qel::QEL_BUILD::store(p, v);
    }
};

// Where a step stores its samples T, one register after the other.
template <class Store, class T, int N> struct Output {
    T* to;

    template <class... V> QEL_INLINE void put(V... registers) const
    {
        using Register = typename LanesOf<T, N>::Type;
        auto p = (uint8_t*)to;
        ((Store::store(p, (Register)registers), p += sizeof(Register)), ...);
    }
    // The lanes of two registers interleaved, or two samples.
    template <class V> QEL_INLINE void putInterleaved(V a, V b) const
    {
        if constexpr (N == 1) {
            put(a, b);
        } else {
            uint8_t room[2 * N]; // which compilers keep in registers
            Simd<N>::store2(room, a, b);
            put(load<V>(room), load<V>(room + N));
        }
    }
};

// Walks a row of n elements T: body(Lanes<N>(), i) is to do Lanes<N>::kCount<T> of them. The widest registers that fit
// come first, then those of 16 bytes (without them a short row takes as long as several hundred elements), then one
// element at a time.
template <class T, class Body> QEL_INLINE void walk(ptrdiff_t n, Body body)
{
    ptrdiff_t i = 0;
    auto run = [&](auto lanes) QEL_INLINE_BODY {
        constexpr ptrdiff_t kStep = lanes.template kCount<T>;
        for (; n - i >= kStep; i += kStep) body(lanes, i);
    };
    if constexpr (QEL_WIDTH > 16) run(Lanes<QEL_WIDTH>());
    if constexpr (QEL_WIDTH >= 16) run(Lanes<16>());
    run(Lanes<1>());
}

constexpr ptrdiff_t kCacheLine = 64;

template <int kOutputs, class T, class Body> QEL_INLINE void walkLines(T* dst, ptrdiff_t n, Body body);

// The same for elements each of which becomes kOutputs samples T from `dst` on: body(Lanes<N>(), i, out) is to put
// them. In whole cache lines, if Streamed.
template <class Store = Cached, int kOutputs = 1, class T, class Body>
QEL_INLINE void walkInto(T* dst, ptrdiff_t n, Body body)
{
    if constexpr (QEL_WIDTH >= 16 && __is_same(Store, Streamed)) return walkLines<kOutputs>(dst, n, body);
    walk<T>(n, [=](auto lanes, ptrdiff_t i)
                   QEL_INLINE_BODY { body(lanes, i, Output<Cached, T, lanes.kBytes>{dst + kOutputs * i}); });
}

// The same for rows that are streamed: whole lines by non-temporal stores, parts of lines at both ends as usual. A line
// that is stored both ways costs more than a row gains, and so does waiting for the line at the end, which has to be
// read.
template <int kOutputs, class T, class Body> QEL_INLINE void walkLines(T* dst, ptrdiff_t n, Body body)
{
    using Wide = Lanes<QEL_WIDTH>;
    constexpr ptrdiff_t kBytes = kOutputs * sizeof(T), kStep = Wide::template kCount<T>, kPerLine = kCacheLine / kBytes,
                        kUnit = kStep < kPerLine ? kPerLine : kStep;
    if (n < kStep) return walkInto<Cached, kOutputs>(dst, n, body);

    __builtin_prefetch(dst + kOutputs * n, 1);
    auto partOfLine = [=](ptrdiff_t i, ptrdiff_t end) {
        for (; end - i >= kStep; i += kStep) body(Wide(), i, Output<Cached, T, QEL_WIDTH>{dst + kOutputs * i});
        ptrdiff_t from = i < n - kStep ? i : n - kStep;
        T room[kOutputs * kStep];
        body(Wide(), from, Output<Cached, T, QEL_WIDTH>{room});
        __builtin_memcpy(dst + kOutputs * i, room + kOutputs * (i - from), size_t(kBytes * (end - i)));
    };
    auto before = ptrdiff_t(-uintptr_t(dst) % kCacheLine);
    ptrdiff_t first = before % kBytes != 0 || before / kBytes > n ? n : before / kBytes;
    ptrdiff_t last = first + (n - first) / kUnit * kUnit;
    partOfLine(0, first);
    for (ptrdiff_t i = first; i < last; i += kStep) body(Wide(), i, Output<Streamed, T, QEL_WIDTH>{dst + kOutputs * i});
    partOfLine(last, n);
}

// Walks the elements from `begin` to `end` for a body that may do elements twice: body(Lanes<N>(), i) is to do
// Lanes<N>::kCount<T> of them. What is left of the row is done by a step that ends with it, so that only rows shorter
// than 16 bytes go one by one. All steps between the first and the last start where i + phase is a multiple of theirs.
// kWidest: the bytes of the largest registers to take.
template <class T, int kWidest = QEL_WIDTH, class Body>
QEL_INLINE void walkOverlapping(ptrdiff_t begin, ptrdiff_t end, ptrdiff_t phase, Body body)
{
    auto run = [=](auto lanes) QEL_INLINE_BODY {
        constexpr ptrdiff_t kStep = lanes.template kCount<T>;
        ptrdiff_t i = begin, stride = kStep - ((begin + phase) & (kStep - 1)), last = end - kStep;
        for (; i < last; i += stride, stride = kStep) body(lanes, i);
        body(lanes, last);
    };
    if constexpr (kWidest > 16)
        if (end - begin >= Lanes<kWidest>::template kCount<T>) return run(Lanes<kWidest>());
    if constexpr (kWidest >= 16)
        if (end - begin >= Lanes<16>::template kCount<T>) return run(Lanes<16>());
    for (ptrdiff_t i = begin; i < end; ++i) body(Lanes<1>(), i);
}

}
}
