// SPDX-License-Identifier: Apache-2.0
// Simd<32> with AVX2 intrinsics.
#pragma once

#include <immintrin.h>

#include "core/simd_x86_interleave.h"
#include "core/simd_x86_operations.h"

namespace qel::QEL_BUILD {
namespace {

// A permutation of 64 bytes as shuffles within blocks of 16: where the bytes of result r come from in source s whose
// blocks are in order (s = 0, 2 for the registers) or exchanged (s = 1, 3); 0x80 where they do not.
struct BlockShuffles {
    alignas(32) uint8_t of[2][4][32];
};
constexpr BlockShuffles makeBlockShuffles(const uint8_t (&from)[64])
{
    BlockShuffles shuffles = {};
    for (int i = 0; i < 64; ++i)
        for (int s = 0; s < 4; ++s) {
            int block = s / 2 * 2 + ((i / 16 + s) & 1);
            shuffles.of[i / 32][s][i % 32] = from[i] / 16 == block ? from[i] % 16 : 0x80;
        }
    return shuffles;
}
template <const auto& kFrom> constexpr BlockShuffles kBlockShuffles = makeBlockShuffles(kFrom.index);

template <> struct Simd<32> : GatheredBits, Interleaved<32, Simd<32>> {
    QEL_X86_OPERATIONS(32, _mm256, __m256i, __m256)

    // Sums of four lanes, of eight, of each block; then the sum of the lower block joins the upper one.
    static QEL_INLINE S16<32> runningSum(S16<32> a, S16<32>& total)
    {
        a += (S16<32>)((U64<32>)a << 16);
        a += (S16<32>)((U64<32>)a << 32);
        a +=
            (S16<32>)_mm256_shuffle_epi8((__m256i)a, _mm256_set_epi64x(0x0706070607060706, -1, 0x0706070607060706, -1));
        S16<32> sums = inBlocks<7, 7, 7, 7, 7, 7, 7, 7>(a);
        auto others = _mm256_permute2x128_si256((__m256i)sums, (__m256i)sums, 0x01);
        total = sums + (S16<32>)others;
        return a + (S16<32>)_mm256_blend_epi32(_mm256_setzero_si256(), others, 0xF0);
    }
    static QEL_INLINE S16<32> mulRoundEven(S16<32> a, S16<32> b)
    {
        return evenTies((S16<32>)_mm256_mulhrs_epi16((__m256i)a, (__m256i)b), a * b);
    }
    template <int kDivisor> static QEL_INLINE S16<32> divideRounded(S16<32> a)
    {
        return (S16<32>)_mm256_mulhrs_epi16((__m256i)a, _mm256_set1_epi16(32768 / kDivisor));
    }
    static QEL_INLINE S16<32> mulAddPairs(U8<32> a, S8<32> weights)
    {
        return (S16<32>)_mm256_maddubs_epi16((__m256i)a, (__m256i)weights);
    }

    template <class V> static QEL_INLINE V shiftIn(V before, V v)
    {
        return (V)_mm256_alignr_epi8((__m256i)v, (__m256i)before, 16 - int(sizeof(v[0])));
    }
    static QEL_INLINE S16<32> moveUp(S16<32> before, S16<32> v)
    {
        return shiftIn((S16<32>)_mm256_permute2x128_si256((__m256i)before, (__m256i)v, 0x21), v);
    }

    template <class V> static QEL_INLINE V inOrder(V v) { return (V)_mm256_permute4x64_epi64((__m256i)v, 0xD8); }
    static QEL_INLINE S16<32> widen(const uint8_t* p)
    {
        return (S16<32>)_mm256_cvtepu8_epi16(_mm_loadu_si128((const __m128i*)p));
    }
    static QEL_INLINE S16<32> join(S16<16> lower, S16<16> upper)
    {
        return (S16<32>)_mm256_inserti128_si256(_mm256_castsi128_si256((__m128i)lower), (__m128i)upper, 1);
    }
    static QEL_INLINE S16<16> lowerHalf(S16<32> a) { return (S16<16>)_mm256_castsi256_si128((__m256i)a); }
    static QEL_INLINE S16<16> upperHalf(S16<32> a) { return (S16<16>)_mm256_extracti128_si256((__m256i)a, 1); }
    template <class V> static QEL_INLINE bool isZero(V v) { return _mm256_testz_si256((__m256i)v, (__m256i)v); }
    static QEL_INLINE uint64_t signMask(U8<32> a) { return uint32_t(_mm256_movemask_epi8((__m256i)a)); }

    // The lower (upper) blocks of `a` and `b`, and the lower block of `a` beside the upper one of `b`.
    template <class V> static QEL_INLINE V lowBlocks(V a, V b)
    {
        return (V)_mm256_permute2x128_si256((__m256i)a, (__m256i)b, 0x20);
    }
    template <class V> static QEL_INLINE V highBlocks(V a, V b)
    {
        return (V)_mm256_permute2x128_si256((__m256i)a, (__m256i)b, 0x31);
    }
    template <class V> static QEL_INLINE V lowAndHigh(V a, V b)
    {
        return (V)_mm256_blend_epi32((__m256i)a, (__m256i)b, 0xF0);
    }
    static QEL_INLINE void storeHalves(void* lower, void* upper, U8<32> v)
    {
        _mm_storeu_si128((__m128i*)lower, _mm256_castsi256_si128((__m256i)v));
        _mm_storeu_si128((__m128i*)upper, _mm256_extracti128_si256((__m256i)v, 1));
    }

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        V low = zipLow(a, b), high = zipHigh(a, b);
        store(p, lowBlocks(low, high));
        store(p + 32, highBlocks(low, high));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<32> a, U8<32> b, U8<32> c, U8<32> d)
    {
        zip4<32>(a, b, c, d);
        store(p, lowBlocks(a, b));
        store(p + 32, lowBlocks(c, d));
        store(p + 64, highBlocks(a, b));
        store(p + 96, highBlocks(c, d));
    }

    static QEL_INLINE U8<32> shuffle(U8<32> v, const uint8_t* from)
    {
        return (U8<32>)_mm256_shuffle_epi8((__m256i)v, _mm256_load_si256((const __m256i*)from));
    }
    static QEL_INLINE U8<32> blend(U8<32> a, U8<32> b, const uint8_t* mask)
    {
        return (U8<32>)_mm256_blendv_epi8((__m256i)a, (__m256i)b, _mm256_load_si256((const __m256i*)mask));
    }
    static constexpr bool kPermutesFast = true;
    template <const auto& kFrom> static QEL_INLINE void permute(U8<32>* v)
    {
        U8<32> sources[4] = {v[0], exchanged(v[0]), v[1], exchanged(v[1])};
        for (int r = 0; r < 2; ++r) {
            auto& from = kBlockShuffles<kFrom>.of[r];
            v[r] = (shuffle(sources[0], from[0]) | shuffle(sources[1], from[1])) |
                   (shuffle(sources[2], from[2]) | shuffle(sources[3], from[3]));
        }
    }
    static QEL_INLINE U8<32> exchanged(U8<32> v)
    {
        return (U8<32>)_mm256_permute2x128_si256((__m256i)v, (__m256i)v, 1);
    }

    // As in Simd<16>, with the first 48 bytes in the lower blocks and the second 48 in the upper ones.
    template <class V> static QEL_INLINE void load3(const uint8_t* p, V& a, V& b, V& c)
    {
        V m0 = load<V>(p), m1 = load<V>(p + 32), m2 = load<V>(p + 64);
        a = lowAndHigh(m0, m1);
        b = (V)_mm256_permute2x128_si256((__m256i)m0, (__m256i)m2, 0x21);
        c = lowAndHigh(m1, m2);
        unzip3(a, b, c);
    }
    // Four triples for each block: their pairs (a, b) in its lower half, pairs (c, 0) in its upper one.
    template <int kSkip> static QEL_INLINE U64<32> fourTriples(const uint8_t* p)
    {
        auto low = _mm_loadu_si128((const __m128i*)(p - kSkip)),
             high = _mm_loadu_si128((const __m128i*)(p - kSkip + 48));
        auto both = (U8<32>)_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
        return (U64<32>)shuffle(both, kTriples.pairs[kSkip / 4]);
    }
    // The last load starts four bytes early, so as not to read beyond the triples.
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<32>* ab, U8<32>* c1)
    {
        auto one = (U8<32>)(U16<32>{} + 256);
        U64<32> t0 = fourTriples<0>(p), t1 = fourTriples<0>(p + 12);
        U64<32> t2 = fourTriples<0>(p + 24), t3 = fourTriples<4>(p + 36);
        ab[0] = (U8<32>)zipLow(t0, t1);
        ab[1] = (U8<32>)zipLow(t2, t3);
        c1[0] = (U8<32>)zipHigh(t0, t1) | one;
        c1[1] = (U8<32>)zipHigh(t2, t3) | one;
    }
    // Four quadruples for each block: their pairs (a, b) in its lower half, pairs (c, d) in its upper one.
    static QEL_INLINE U64<32> fourQuadruples(const uint8_t* p)
    {
        auto low = _mm_loadu_si128((const __m128i*)p), high = _mm_loadu_si128((const __m128i*)(p + 64));
        auto both = (U8<32>)_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
        return (U64<32>)shuffle(both, kTriples.fours);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, U8<32>* ab, U8<32>* c1, U8<32>& d)
    {
        U64<32> q0 = fourQuadruples(p), q1 = fourQuadruples(p + 16);
        U64<32> q2 = fourQuadruples(p + 32), q3 = fourQuadruples(p + 48);
        ab[0] = (U8<32>)zipLow(q0, q1);
        ab[1] = (U8<32>)zipLow(q2, q3);
        splitPairs((U16<32>)zipHigh(q0, q1), (U16<32>)zipHigh(q2, q3), c1, d);
    }
    template <class V> static QEL_INLINE void store3(uint8_t* p, V a, V b, V c)
    {
        zip3(a, b, c);
        store(p, lowBlocks(a, b));
        store(p + 32, lowAndHigh(c, a));
        store(p + 64, highBlocks(b, c));
    }

    template <class V> static QEL_INLINE void stream(void* p, V v) { _mm256_stream_si256((__m256i*)p, (__m256i)v); }
    static QEL_INLINE void fence() { _mm_sfence(); }
};

}
}
