// SPDX-License-Identifier: Apache-2.0
// Simd<16> with SSE2 (and SSSE3, SSE4.1 where the build has them) intrinsics.
#pragma once

#include <immintrin.h>

#include "core/simd_x86_interleave.h"
#include "core/simd_x86_operations.h"

namespace qel::QEL_BUILD {
namespace {

template <> struct Simd<16> : GatheredBits, Interleaved<16, Simd<16>> {
    QEL_X86_OPERATIONS(16, _mm, __m128i, __m128)

    static QEL_INLINE S16<16> runningSum(S16<16> a, S16<16>& total)
    {
        a += (S16<16>)_mm_slli_si128((__m128i)a, 2);
        a += (S16<16>)_mm_slli_si128((__m128i)a, 4);
        a += (S16<16>)_mm_slli_si128((__m128i)a, 8);
        total = (S16<16>)inBlocks<3, 3, 3, 3>((S32<16>)inBlocks<0, 1, 2, 3, 4, 5, 7, 7>(a));
        return a;
    }
    static QEL_INLINE S16<16> mulRoundEven(S16<16> a, S16<16> b)
    {
        S16<16> low = a * b;
#if defined(__SSSE3__)
        return evenTies((S16<16>)_mm_mulhrs_epi16((__m128i)a, (__m128i)b), low);
#else
        // The product's bits 15 to 30, and the 15 below them: up if these and the parity are beyond one half.
        S16<16> parity = (S16<16>)((U16<16>)low >> 15);
        return mulHigh(a, b) * 2 + parity - ((low & 0x7FFF) > 0x4000 - parity);
#endif
    }
    template <int kDivisor> static QEL_INLINE S16<16> divideRounded(S16<16> a)
    {
#if defined(__SSSE3__)
        return (S16<16>)_mm_mulhrs_epi16((__m128i)a, _mm_set1_epi16(32768 / kDivisor));
#else
        return PortableSimd<16>::divideRounded<kDivisor>(a);
#endif
    }
    static QEL_INLINE S16<16> mulAddPairs(U8<16> a, S8<16> weights)
    {
#if defined(__SSSE3__)
        return (S16<16>)_mm_maddubs_epi16((__m128i)a, (__m128i)weights);
#else
        S16<16> even = ((S16<16>)a & 0xFF) * ((S16<16>)weights << 8 >> 8);
        S16<16> odd = (S16<16>)((U16<16>)a >> 8) * ((S16<16>)weights >> 8);
        return addSat(even, odd);
#endif
    }

    template <class V> static QEL_INLINE V shiftIn(V before, V v)
    {
        constexpr int kLane = sizeof(v[0]);
        return (V)_mm_or_si128(_mm_slli_si128((__m128i)v, kLane), _mm_srli_si128((__m128i)before, 16 - kLane));
    }
    static QEL_INLINE S16<16> moveUp(S16<16> before, S16<16> v) { return shiftIn(before, v); }

    template <class V> static QEL_INLINE V inOrder(V v) { return v; }
    static constexpr bool kPermutesFast = false;
    template <const auto& kFrom> static QEL_INLINE void permute(U8<16>* v) { PortableSimd<16>::permute<kFrom>(v); }
    static QEL_INLINE S16<16> widen(const uint8_t* p)
    {
        return (S16<16>)_mm_unpacklo_epi8(_mm_loadl_epi64((const __m128i*)p), _mm_setzero_si128());
    }
    template <class V> static QEL_INLINE bool isZero(V v)
    {
#if defined(__SSE4_1__)
        return _mm_testz_si128((__m128i)v, (__m128i)v);
#else
        return _mm_movemask_epi8(_mm_cmpeq_epi8((__m128i)v, _mm_setzero_si128())) == 0xFFFF;
#endif
    }
    static QEL_INLINE uint64_t signMask(U8<16> a) { return uint32_t(_mm_movemask_epi8((__m128i)a)); }
    static QEL_INLINE void storeHalves(void* lower, void* upper, U8<16> v)
    {
        _mm_storel_epi64((__m128i*)lower, (__m128i)v);
        _mm_storeh_pi((__m64*)upper, (__m128)v);
    }

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        store(p, zipLow(a, b));
        store(p + 16, zipHigh(a, b));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<16> a, U8<16> b, U8<16> c, U8<16> d)
    {
        zip4<16>(a, b, c, d);
        store(p, a);
        store(p + 16, b);
        store(p + 32, c);
        store(p + 48, d);
    }

#if defined(__SSE4_1__)
    static QEL_INLINE U8<16> shuffle(U8<16> v, const uint8_t* from)
    {
        return (U8<16>)_mm_shuffle_epi8((__m128i)v, _mm_load_si128((const __m128i*)from));
    }
    // The bytes of `b` where `mask` has ones, else those of `a`.
    static QEL_INLINE U8<16> blend(U8<16> a, U8<16> b, const uint8_t* mask)
    {
        return (U8<16>)_mm_blendv_epi8((__m128i)a, (__m128i)b, _mm_load_si128((const __m128i*)mask));
    }
#else
    using Interleaved<16, Simd<16>>::zip3, Interleaved<16, Simd<16>>::unzip3;

    // The 48 bytes as two halves of 24, zipped: a perfect shuffle moves byte i to 2i modulo 47. De-interleaving by
    // three moves it to 16i = 2i four times, so four shuffles do it, and their inverses interleave.
    static QEL_INLINE void shuffleHalves(U8<16>& r0, U8<16>& r1, U8<16>& r2)
    {
        U8<16> s0 = zipLow(r0, upperHalf(r1)), s1 = zipLow(upperHalf(r0), r2), s2 = zipLow(r1, upperHalf(r2));
        r0 = s0;
        r1 = s1;
        r2 = s2;
    }
    static QEL_INLINE void unshuffleHalves(U8<16>& r0, U8<16>& r1, U8<16>& r2)
    {
        auto even = [](U8<16> r) { return (S16<16>)r & 0xFF; };
        auto odd = [](U8<16> r) { return (S16<16>)((U16<16>)r >> 8); };
        U8<16> s0 = packUnsigned(even(r0), even(r1)), s1 = packUnsigned(even(r2), odd(r0)),
               s2 = packUnsigned(odd(r1), odd(r2));
        r0 = s0;
        r1 = s1;
        r2 = s2;
    }
    static QEL_INLINE U8<16> upperHalf(U8<16> r) { return (U8<16>)_mm_srli_si128((__m128i)r, 8); }
    static QEL_INLINE void unzip3(U8<16>& a, U8<16>& b, U8<16>& c)
    {
        for (int i = 0; i < 4; ++i) shuffleHalves(a, b, c);
    }
    static QEL_INLINE void zip3(U8<16>& a, U8<16>& b, U8<16>& c)
    {
        for (int i = 0; i < 4; ++i) unshuffleHalves(a, b, c);
    }
#endif
    template <class V> static QEL_INLINE void load3(const uint8_t* p, V& a, V& b, V& c)
    {
        a = load<V>(p);
        b = load<V>(p + 16);
        c = load<V>(p + 32);
        unzip3(a, b, c);
    }
    template <class V> static QEL_INLINE void store3(uint8_t* p, V a, V b, V c)
    {
        zip3(a, b, c);
        store(p, a);
        store(p + 16, b);
        store(p + 32, c);
    }

    template <class V> static QEL_INLINE void stream(void* p, V v) { _mm_stream_si128((__m128i*)p, (__m128i)v); }
    static QEL_INLINE void fence() { _mm_sfence(); }
};

}
}
