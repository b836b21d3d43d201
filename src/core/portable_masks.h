// SPDX-License-Identifier: Apache-2.0
// PortableMasks<N>, the operations of PortableSimd<N> on lanes that a mask chooses: bit i of a mask stands for lane i.
// Masks that are arguments may have ones after the last lane. Only processors with registers of 64 bytes have them.
#pragma once

#include "core/registers.h"

namespace qel::QEL_BUILD {
namespace {

template <int N> struct PortableMasks {
    // Where lanes are not zero, where they are equal, and where those of `a` are greater.
    template <class V> static QEL_INLINE uint64_t nonZero(V v)
    {
        return maskOf<V>([&](int i) { return v[i] != 0; });
    }
    template <class V> static QEL_INLINE uint64_t equal(V a, V b)
    {
        return maskOf<V>([&](int i) { return a[i] == b[i]; });
    }
    template <class V> static QEL_INLINE uint64_t greater(V a, V b)
    {
        return maskOf<V>([&](int i) { return a[i] > b[i]; });
    }

    // Zeros where the mask has none.
    template <class V> static QEL_INLINE V keep(V v, uint64_t mask)
    {
        for (int i = 0; i < kLanes<V>; ++i) v[i] = mask >> i & 1 ? v[i] : 0;
        return v;
    }

    // The chosen lanes moved together to the low end (compress); after them those of `fill`. And back (expand), with
    // zeros between them.
    template <class V> static QEL_INLINE V compress(V v, uint64_t mask) { return compress(v, mask, V{}); }
    template <class V> static QEL_INLINE V compress(V v, uint64_t mask, V fill)
    {
        for (int i = 0, to = 0; i < kLanes<V>; ++i)
            if (mask >> i & 1) fill[to++] = v[i];
        return fill;
    }
    static QEL_INLINE U8<N> expand(U8<N> v, uint64_t mask)
    {
        U8<N> apart = {};
        for (int i = 0, from = 0; i < N; ++i)
            if (mask >> i & 1) apart[i] = v[from++];
        return apart;
    }

    // Bytes by index, modulo the number of bytes that there are; zeros where the mask has none.
    static QEL_INLINE U8<N> pick(U8<N> from, U8<N> index, uint64_t mask)
    {
        for (int i = 0; i < N; ++i) index[i] = mask >> i & 1 ? from[index[i] % N] : 0;
        return index;
    }
    static QEL_INLINE U8<N> pick(U8<N> a, U8<N> b, U8<N> index)
    {
        for (int i = 0; i < N; ++i) index[i] = index[i] & N ? b[index[i] % N] : a[index[i] % N];
        return index;
    }

    // Entries of a table of 256, by indices below that.
    static QEL_INLINE U32<N> lookUp(const void* table, U32<N> index)
    {
        for (int i = 0; i < N / 4; ++i) index[i] = load<uint32_t>((const uint8_t*)table + 4 * index[i]);
        return index;
    }

    // The lowest N / 4 bytes, widened.
    static QEL_INLINE S32<N> firstBytes(S8<N> v) { return firstAs<S32<N>>(v); }
    static QEL_INLINE U32<N> firstBytes(U8<N> v) { return firstAs<U32<N>>(v); }

    // The number of zeros above the highest one; 32 for 0.
    static QEL_INLINE U32<N> leadingZeros(U32<N> v)
    {
        for (int i = 0; i < N / 4; ++i) v[i] = v[i] == 0 ? 32 : uint32_t(__builtin_clz(v[i]));
        return v;
    }

    // By any number of bits; 64 and more leave nothing.
    static QEL_INLINE U64<N> shiftLeft(U64<N> v, U64<N> bits)
    {
        for (int i = 0; i < N / 8; ++i) v[i] = bits[i] < 64 ? v[i] << bits[i] : 0;
        return v;
    }

    // Each lane is the sum of its bytes.
    static QEL_INLINE U64<N> sumOfBytes(U8<N> v)
    {
        U64<N> sums = {};
        for (int i = 0; i < N; ++i) sums[i / 8] += v[i];
        return sums;
    }

    // Lane i is the sum of lanes 0 to i, every lane of `total` that of all; they wrap.
    static QEL_INLINE U64<N> runningSum(U64<N> v, U64<N>& total)
    {
        for (int i = 1; i < N / 8; ++i) v[i] += v[i - 1];
        total = U64<N>{} + v[N / 8 - 1];
        return v;
    }

    // Leaves the other bytes as they are.
    static QEL_INLINE void storeSome(uint8_t* p, U8<N> v, uint64_t mask)
    {
        for (int i = 0; i < N; ++i)
            if (mask >> i & 1) p[i] = v[i];
    }

private:
    template <class V> static constexpr int kLanes = sizeof(V) / sizeof(V{}[0]);

    template <class V, class IsChosen> static QEL_INLINE uint64_t maskOf(IsChosen isChosen)
    {
        uint64_t mask = 0;
        for (int i = 0; i < kLanes<V>; ++i) mask |= uint64_t(isChosen(i)) << i;
        return mask;
    }
    template <class Wide, class V> static QEL_INLINE Wide firstAs(V v)
    {
        Wide wide = {};
        for (int i = 0; i < N / 4; ++i) wide[i] = v[i];
        return wide;
    }
};

}
}
