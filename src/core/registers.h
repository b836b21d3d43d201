// SPDX-License-Identifier: Apache-2.0
// Registers of N bytes for the kernels, as the compiler's vectors, and what the language can say about them: loading,
// storing, lanes by index. Each kernel build has its own copy in its own namespace.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/byte_order.h"
#include "core/inline.h"

namespace qel::QEL_BUILD {
namespace {

template <class T, int N> struct VectorOf {
    typedef T Type __attribute__((vector_size(N)));
};
template <class T, int N> using Vec = typename VectorOf<T, N>::Type;
template <int N> using U8 = Vec<uint8_t, N>;
template <int N> using S8 = Vec<int8_t, N>;
template <int N> using S16 = Vec<int16_t, N>;
template <int N> using U16 = Vec<uint16_t, N>;
template <int N> using S32 = Vec<int32_t, N>;
template <int N> using U32 = Vec<uint32_t, N>;
template <int N> using U64 = Vec<uint64_t, N>;
template <int N> using F32 = Vec<float, N>;

// Where elements one by one are no choice, builds without intrinsics take registers as well.
constexpr int kWidth = QEL_WIDTH < 16 ? 16 : QEL_WIDTH;

// A register of N bytes, or one element for N = 1.
template <class T, int N> struct LanesOf {
    using Type = Vec<T, N>;
};
template <class T> struct LanesOf<T, 1> {
    using Type = T;
};

// Any address is valid.
template <class V> QEL_INLINE V load(const void* p)
{
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
template <class V> QEL_INLINE void store(void* p, V v) { __builtin_memcpy(p, &v, sizeof v); }

// Hardware prefetchers stop at the page of 4 KB, so ask one page ahead. Prefetching an address that is not mapped is
// harmless.
template <int kBytes> QEL_INLINE void prefetchPageAhead(const uint8_t* p)
{
#pragma GCC unroll 8
    for (int i = 0; i < kBytes; i += 64) __builtin_prefetch((const uint8_t*)(uintptr_t(p) + 4096 + i));
}

// Shuffle: lanes by index, the same in each block of 16 bytes. inBlocks<1, 0, 3, 2>(v) swaps neighbours of 32 bits.
template <int... kFrom, class V> QEL_INLINE V inBlocks(V v)
{
    constexpr int kLanes = sizeof...(kFrom);
    static_assert(kLanes * sizeof(v[0]) == 16);
    if constexpr (sizeof v == 16) return __builtin_shufflevector(v, v, kFrom...);
    if constexpr (sizeof v == 32) return __builtin_shufflevector(v, v, kFrom..., (kFrom + kLanes)...);
    if constexpr (sizeof v == 64)
        return __builtin_shufflevector(v, v, kFrom..., (kFrom + kLanes)..., (kFrom + 2 * kLanes)...,
                                       (kFrom + 3 * kLanes)...);
}

// The same from two registers: the lanes of `b` go on after those of `a`.
template <int... kFrom, class V> QEL_INLINE V inBlocks(V a, V b)
{
    constexpr int kLanes = sizeof...(kFrom), kAll = sizeof a / sizeof(a[0]);
    static_assert(kLanes * sizeof(a[0]) == 16);
#define QEL_FROM(BLOCK) (kFrom % kLanes + kFrom / kLanes * kAll + BLOCK * kLanes)...
    if constexpr (sizeof a == 16) return __builtin_shufflevector(a, b, QEL_FROM(0));
    if constexpr (sizeof a == 32) return __builtin_shufflevector(a, b, QEL_FROM(0), QEL_FROM(1));
    if constexpr (sizeof a == 64)
        return __builtin_shufflevector(a, b, QEL_FROM(0), QEL_FROM(1), QEL_FROM(2), QEL_FROM(3));
#undef QEL_FROM
}

// Pairs (first, second) all along a register: of bytes, and of lanes of 16 bits.
template <int N> QEL_INLINE S8<N> pairsOf(int first, int second)
{
    int low = kLittleEndian ? first : second, high = kLittleEndian ? second : first;
    return (S8<N>)(U16<N>{} + uint16_t((low & 0xFF) | high << 8));
}
template <int N> QEL_INLINE S16<N> wordPairsOf(int first, int second)
{
    int low = kLittleEndian ? first : second, high = kLittleEndian ? second : first;
    return (S16<N>)(U32<N>{} + (uint32_t(low & 0xFFFF) | uint32_t(high) << 16));
}

}
}
