// SPDX-License-Identifier: Apache-2.0
// PortableSimd<N>, which defines, lane by lane, each operation on registers of N bytes that the language cannot say.
// Kernels include core/simd.h, where Simd<N> is specialised. Each kernel build has its own copy in its own namespace.
//
// Operations that combine two registers do so in blocks of 16 bytes, as x86 does: packing what was zipped restores the
// order. inOrder() puts the halves of a pack of two registers, each in order, into order.
#pragma once

#include "core/portable_masks.h"

namespace qel::QEL_BUILD {
namespace {

template <class Lane> QEL_INLINE Lane clampTo(int v, int low, int high)
{
    return Lane(v < low ? low : v > high ? high : v);
}

template <int N> struct PortableSimd : PortableMasks<N> {
    using PortableMasks<N>::runningSum;
    static constexpr int kBlock = 16;

    // Sums and differences that saturate (x86: adds, subs; NEON: vqadd, vqsub).
    static QEL_INLINE S16<N> addSat(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = clampTo<int16_t>(a[i] + b[i], -32768, 32767);
        return a;
    }
    static QEL_INLINE S16<N> subSat(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = clampTo<int16_t>(a[i] - b[i], -32768, 32767);
        return a;
    }
    static QEL_INLINE U8<N> addSat(U8<N> a, U8<N> b)
    {
        for (int i = 0; i < N; ++i) a[i] = clampTo<uint8_t>(a[i] + b[i], 0, 255);
        return a;
    }
    static QEL_INLINE U8<N> subSat(U8<N> a, U8<N> b)
    {
        for (int i = 0; i < N; ++i) a[i] = clampTo<uint8_t>(a[i] - b[i], 0, 255);
        return a;
    }

    // (a + b + 1) / 2 (pavg).
    static QEL_INLINE U8<N> average(U8<N> a, U8<N> b)
    {
        for (int i = 0; i < N; ++i) a[i] = uint8_t((a[i] + b[i] + 1) >> 1);
        return a;
    }
    static QEL_INLINE U16<N> average(U16<N> a, U16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = uint16_t((a[i] + b[i] + 1) >> 1);
        return a;
    }

    // Minimum and maximum.
    static QEL_INLINE U8<N> least(U8<N> a, U8<N> b)
    {
        for (int i = 0; i < N; ++i) a[i] = a[i] < b[i] ? a[i] : b[i];
        return a;
    }
    static QEL_INLINE S16<N> least(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = a[i] < b[i] ? a[i] : b[i];
        return a;
    }
    static QEL_INLINE U8<N> greatest(U8<N> a, U8<N> b)
    {
        for (int i = 0; i < N; ++i) a[i] = a[i] > b[i] ? a[i] : b[i];
        return a;
    }
    static QEL_INLINE S16<N> greatest(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = a[i] > b[i] ? a[i] : b[i];
        return a;
    }

    // The upper half of each product (pmulhw, pmulhuw).
    static QEL_INLINE S16<N> mulHigh(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = int16_t((int32_t(a[i]) * b[i]) >> 16);
        return a;
    }
    static QEL_INLINE U16<N> mulHigh(U16<N> a, U16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) a[i] = uint16_t((uint32_t(a[i]) * b[i]) >> 16);
        return a;
    }

    // Inclusive prefix sum: lane i is the sum of lanes 0 to i, every lane of `total` that of all; they wrap.
    static QEL_INLINE S16<N> runningSum(S16<N> a, S16<N>& total)
    {
        for (int i = 1; i < N / 2; ++i) a[i] = int16_t(a[i] + a[i - 1]);
        total = S16<N>{} + a[N / 2 - 1];
        return a;
    }

    // Products in units of 2^-15, rounded to nearest, ties to even (pmulhrsw has them up); -1 times -1 wraps.
    static QEL_INLINE S16<N> mulRoundEven(S16<N> a, S16<N> b)
    {
        for (int i = 0; i < N / 2; ++i) {
            int32_t product = int32_t(a[i]) * b[i];
            a[i] = int16_t((product + 0x3FFF + ((product >> 15) & 1)) >> 15);
        }
        return a;
    }

    // Quotients of up to 2^14 by a power of two or minus one, rounded to nearest, ties up.
    template <int kDivisor> static QEL_INLINE S16<N> divideRounded(S16<N> a)
    {
        constexpr int kBits = __builtin_ctz(kDivisor);
        constexpr int16_t kHalf = 1 << (kBits - 1);
        return (kDivisor < 0 ? kHalf - a : a + kHalf) >> kBits;
    }

    // Lane i is a[2i] * b[2i] + a[2i + 1] * b[2i + 1], wrapping (pmaddwd).
    static QEL_INLINE S32<N> mulAddPairs(S16<N> a, S16<N> b)
    {
        S32<N> sum = {};
        for (int i = 0; i < N / 4; ++i)
            sum[i] = int32_t(uint32_t(a[2 * i] * b[2 * i]) + uint32_t(a[2 * i + 1] * b[2 * i + 1]));
        return sum;
    }

    // The same on bytes by signed weights, with a saturating sum (pmaddubsw).
    static QEL_INLINE S16<N> mulAddPairs(U8<N> a, S8<N> weights)
    {
        S16<N> sum = {};
        for (int i = 0; i < N / 2; ++i)
            sum[i] = clampTo<int16_t>(a[2 * i] * weights[2 * i] + a[2 * i + 1] * weights[2 * i + 1], -32768, 32767);
        return sum;
    }

    // Per block: the lanes of `a`, then those of `b`, narrowed with saturation (packssdw, packuswb).
    static QEL_INLINE S16<N> pack(S32<N> a, S32<N> b)
    {
        S16<N> packed = {};
        for (int i = 0; i < N / 2; ++i) {
            S32<N>& from = i % 8 < 4 ? a : b;
            packed[i] = clampTo<int16_t>(from[i / 8 * 4 + i % 4], -32768, 32767);
        }
        return packed;
    }
    static QEL_INLINE U8<N> packUnsigned(S16<N> a, S16<N> b)
    {
        U8<N> packed = {};
        for (int i = 0; i < N; ++i) {
            S16<N>& from = i % 16 < 8 ? a : b;
            packed[i] = clampTo<uint8_t>(from[i / 16 * 8 + i % 8], 0, 255);
        }
        return packed;
    }

    // The same to signed bytes.
    static QEL_INLINE U8<N> packSigned(S16<N> a, S16<N> b)
    {
        U8<N> packed = {};
        for (int i = 0; i < N; ++i) {
            S16<N>& from = i % 16 < 8 ? a : b;
            packed[i] = uint8_t(clampTo<int8_t>(from[i / 16 * 8 + i % 8], -128, 127));
        }
        return packed;
    }

    // From a pack of two registers that are each in order to one register in order.
    template <class V> static QEL_INLINE V inOrder(V v)
    {
        U64<N> from = (U64<N>)v, to = {};
        for (int i = 0; i < N / 8; ++i) to[i] = from[i < N / 16 ? 2 * i : 2 * (i - N / 16) + 1];
        return (V)to;
    }

    // Interleave (punpckl, punpckh). Per block: lanes of the lower (upper) halves of `a` and `b`, one of each in turn.
    template <class V> static QEL_INLINE V zipLow(V a, V b) { return zip<0>(a, b); }
    template <class V> static QEL_INLINE V zipHigh(V a, V b) { return zip<1>(a, b); }

    // Interleave by three, and deinterleave. Per block: the bytes of a, b and c in turns, as three registers; and back.
    static QEL_INLINE void zip3(U8<N>& a, U8<N>& b, U8<N>& c)
    {
        U8<N> from[3] = {a, b, c}, *to[3] = {&a, &b, &c};
        for (int i = 0; i < 3 * N; ++i)
            (*to[i % 48 / 16])[i / 48 * 16 + i % 16] = from[i % 3][i / 48 * 16 + i % 48 / 3];
    }
    static QEL_INLINE void unzip3(U8<N>& a, U8<N>& b, U8<N>& c)
    {
        U8<N> from[3] = {a, b, c}, *to[3] = {&a, &b, &c};
        for (int i = 0; i < 3 * N; ++i)
            (*to[i % 3])[i / 48 * 16 + i % 48 / 3] = from[i % 48 / 16][i / 48 * 16 + i % 16];
    }

    // 64 bytes, in 64 / N registers, by index (vpermb): byte i becomes what byte kFrom.index[i] was. Not fast
    // everywhere.
    static constexpr bool kPermutesFast = true;
    template <const auto& kFrom> static QEL_INLINE void permute(U8<N>* v)
    {
        uint8_t from[64], to[64];
        __builtin_memcpy(from, v, 64);
        for (int i = 0; i < 64; ++i) to[i] = from[kFrom.index[i]];
        __builtin_memcpy(v, to, 64);
    }

    // Per block: the lanes of `v` moved up by one, after the last lane of `before` (palignr).
    template <class V> static QEL_INLINE V shiftIn(V before, V v)
    {
        constexpr int kPerBlock = kBlock / sizeof(v[0]);
        V shifted = v;
        for (int i = 0; i < int(N / sizeof(v[0])); ++i)
            shifted[i] = i % kPerBlock == 0 ? before[i + kPerBlock - 1] : v[i - 1];
        return shifted;
    }

    // The same over the whole register (NEON: vext).
    static QEL_INLINE S16<N> moveUp(S16<N> before, S16<N> v)
    {
        S16<N> moved = v;
        for (int i = 0; i < N / 2; ++i) moved[i] = i == 0 ? before[N / 2 - 1] : v[i - 1];
        return moved;
    }

    // Towards zero; what an int32_t cannot hold gives its least value (cvttps2dq).
    static QEL_INLINE S32<N> truncate(F32<N> v)
    {
        S32<N> whole = {};
        for (int i = 0; i < N / 4; ++i)
            whole[i] = v[i] >= -2147483648.0f && v[i] < 2147483648.0f ? int32_t(v[i]) : INT32_MIN;
        return whole;
    }

    // N / 2 bytes as 16-bit lanes, in order.
    static QEL_INLINE S16<N> widen(const uint8_t* p)
    {
        S16<N> wide = {};
        for (int i = 0; i < N / 2; ++i) wide[i] = p[i];
        return wide;
    }

    // A register of twice the width from two, and its halves.
    static QEL_INLINE S16<N> join(S16<N / 2> lower, S16<N / 2> upper)
    {
        S16<N> joined = {};
        for (int i = 0; i < N / 4; ++i) {
            joined[i] = lower[i];
            joined[i + N / 4] = upper[i];
        }
        return joined;
    }
    static QEL_INLINE S16<N / 2> lowerHalf(S16<N> a) { return half<0>(a); }
    static QEL_INLINE S16<N / 2> upperHalf(S16<N> a) { return half<1>(a); }

    // Whether all bits are 0 (ptest).
    template <class V> static QEL_INLINE bool isZero(V v)
    {
        U64<N> lanes = (U64<N>)v;
        for (int i = 0; i < N / 8; ++i)
            if (lanes[i] != 0) return false;
        return true;
    }

    // Bit i is the highest bit of lane i (pmovmskb).
    static QEL_INLINE uint64_t signMask(U8<N> a)
    {
        uint64_t mask = 0;
        for (int i = 0; i < N; ++i) mask |= uint64_t(a[i] >> 7) << i;
        return mask;
    }

    // The lower and the upper half, to two addresses.
    static QEL_INLINE void storeHalves(void* lower, void* upper, U8<N> v)
    {
        __builtin_memcpy(lower, &v, N / 2);
        __builtin_memcpy(upper, (const uint8_t*)&v + N / 2, N / 2);
    }

    // The bits of `bits` where `from` has ones, moved together to the low end (pext). Not fast everywhere.
    static constexpr bool kGathersFast = false;
    static QEL_INLINE uint64_t gatherBits(uint64_t bits, uint64_t from)
    {
        uint64_t gathered = 0;
        for (int i = 0; from != 0; from &= from - 1, ++i)
            if (bits & from & -from) gathered |= uint64_t(1) << i;
        return gathered;
    }

    // Deinterleave. Per block of lanes wider than a byte: the even lanes of `a`, then those of `b`; and the odd ones.
    template <class V> static QEL_INLINE void unzip2(V& a, V& b)
    {
        constexpr int kPerBlock = kBlock / sizeof(a[0]), kHalf = kPerBlock / 2;
        V from[2] = {a, b};
        for (int i = 0; i < int(N / sizeof(a[0])); ++i) {
            int lane = i / kPerBlock * kPerBlock + i % kHalf * 2;
            a[i] = from[i % kPerBlock / kHalf][lane];
            b[i] = from[i % kPerBlock / kHalf][lane + 1];
        }
    }

    // k * N bytes of interleaved elements to and from k registers, in order (NEON: vld2, vst3 and their like).
    static QEL_INLINE void load2(const uint8_t* p, U8<N>& a, U8<N>& b) { loadEach<2>(p, {&a, &b}); }
    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b) { storeEach<2, V>(p, {a, b}); }
    template <class V> static QEL_INLINE void load3(const uint8_t* p, V& a, V& b, V& c)
    {
        loadEach<3, V>(p, {&a, &b, &c});
    }
    template <class V> static QEL_INLINE void store3(uint8_t* p, V a, V b, V c) { storeEach<3, V>(p, {a, b, c}); }
    // 3 * N bytes of triples (a, b, c) as pairs: ab[0] and c1[0] hold (a, b) and (c, 1) of the lower eight triples of
    // each block of 16, ab[1] and c1[1] those of the upper eight.
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<N>* ab, U8<N>* c1) { loadPairs<3>(p, ab, c1); }
    // 4 * N bytes of (a, b, c, d) as pairs in the same order, and d.
    static QEL_INLINE void loadPairs4(const uint8_t* p, U8<N>* ab, U8<N>* c1, U8<N>& d)
    {
        loadPairs<4>(p, ab, c1);
        for (int i = 0; i < N; ++i) d[i] = p[4 * i + 3];
    }
    static QEL_INLINE void load4(const uint8_t* p, U8<N>& a, U8<N>& b, U8<N>& c, U8<N>& d)
    {
        loadEach<4>(p, {&a, &b, &c, &d});
    }
    static QEL_INLINE void store4(uint8_t* p, U8<N> a, U8<N> b, U8<N> c, U8<N> d)
    {
        storeEach<4, U8<N>>(p, {a, b, c, d});
    }

    // A non-temporal store, which bypasses the caches, where the machine has one; `p` is a multiple of N.
    template <class V> static QEL_INLINE void stream(void* p, V v) { store(p, v); }
    // Orders the stores of stream() before all later ones (sfence).
    static QEL_INLINE void fence() {}

private:
    template <int kHalf> static QEL_INLINE S16<N / 2> half(S16<N> a)
    {
        S16<N / 2> lanes = {};
        for (int i = 0; i < N / 4; ++i) lanes[i] = a[kHalf * N / 4 + i];
        return lanes;
    }
    template <int kChannels, class V> static QEL_INLINE void loadEach(const uint8_t* p, V* const (&to)[kChannels])
    {
        constexpr int kLane = sizeof((*to[0])[0]);
        for (int i = 0; i < kChannels * N / kLane; ++i)
            __builtin_memcpy((uint8_t*)to[i % kChannels] + i / kChannels * kLane, p + i * kLane, kLane);
    }
    template <int kChannels, class V> static QEL_INLINE void storeEach(uint8_t* p, const V (&from)[kChannels])
    {
        constexpr int kLane = sizeof(from[0][0]);
        for (int i = 0; i < kChannels * N / kLane; ++i) store(p + i * kLane, from[i % kChannels][i / kChannels]);
    }
    template <int kChannels> static QEL_INLINE void loadPairs(const uint8_t* p, U8<N>* ab, U8<N>* c1)
    {
        for (int i = 0; i < N; ++i, p += kChannels) {
            int half = i % 16 / 8, at = i / 16 * 16 + 2 * (i % 8);
            ab[half][at] = p[0];
            ab[half][at + 1] = p[1];
            c1[half][at] = p[2];
            c1[half][at + 1] = 1;
        }
    }
    template <int kHalf, class V> static QEL_INLINE V zip(V a, V b)
    {
        constexpr int kLane = sizeof(a[0]), kPerBlock = kBlock / kLane;
        V zipped = {};
        for (int i = 0; i < N / kLane; ++i) {
            int from = i / kPerBlock * kPerBlock + kHalf * kPerBlock / 2 + i % kPerBlock / 2;
            zipped[i] = i % 2 == 0 ? a[from] : b[from];
        }
        return zipped;
    }
};

template <int N> struct Simd : PortableSimd<N> {};

// Interleave by four. Per block: the bytes of a, b, c and d in turns, as four registers.
template <int N> QEL_INLINE void zip4(U8<N>& a, U8<N>& b, U8<N>& c, U8<N>& d)
{
    auto abLow = (U16<N>)Simd<N>::zipLow(a, b), abHigh = (U16<N>)Simd<N>::zipHigh(a, b);
    auto cdLow = (U16<N>)Simd<N>::zipLow(c, d), cdHigh = (U16<N>)Simd<N>::zipHigh(c, d);
    a = (U8<N>)Simd<N>::zipLow(abLow, cdLow);
    b = (U8<N>)Simd<N>::zipHigh(abLow, cdLow);
    c = (U8<N>)Simd<N>::zipLow(abHigh, cdHigh);
    d = (U8<N>)Simd<N>::zipHigh(abHigh, cdHigh);
}

}
}
