// SPDX-License-Identifier: Apache-2.0
// Simd<64> with AVX-512 intrinsics.
#pragma once

#include <immintrin.h>

#include "core/simd_x86_interleave.h"
#include "core/simd_x86_masks.h"
#include "core/simd_x86_operations.h"

namespace qel::QEL_BUILD {
namespace {

// Where the lanes of interleaved triples come from, as indices into two registers of kLanes or into the third.
template <class Index> struct WideTriples {
    static constexpr int kLanes = 64 / sizeof(Index);

    alignas(64) Index load[3][kLanes];  // load[c][i]: lane 3i + c of the three registers, modulo 2 kLanes
    alignas(64) Index store[3][kLanes]; // store[k][j]: lane j of register k: pixel, plus kLanes for the second channel
    uint64_t loadThird[3];              // where load takes the third register
    uint64_t storeThird[3];             // where store takes the third channel
};
template <class Index> constexpr WideTriples<Index> makeWideTriples()
{
    WideTriples<Index> t = {};
    constexpr int kLanes = t.kLanes;
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < kLanes; ++i) {
            int from = 3 * i + k, to = kLanes * k + i;
            t.load[k][i] = Index(from % (2 * kLanes));
            t.loadThird[k] |= uint64_t(from >= 2 * kLanes) << i;
            t.store[k][i] = Index(to / 3 + (to % 3 == 1 ? kLanes : 0));
            t.storeThird[k] |= uint64_t(to % 3 == 2) << i;
        }
    return t;
}
constexpr auto kTriplesOfBytes = makeWideTriples<uint8_t>();
constexpr auto kTriplesOfWords = makeWideTriples<uint32_t>();

struct EveryOtherWord {
    alignas(64) uint16_t from[2][32]; // 0, 2, 4 .. and 1, 3, 5 ..
};
constexpr EveryOtherWord kEveryOtherWord = [] {
    EveryOtherWord words = {};
    for (int i = 0; i < 64; ++i) words.from[i % 2][i / 2] = uint16_t(i);
    return words;
}();

template <> struct Simd<64> : GatheredBits, Interleaved<64, Simd<64>>, Masks512 {
    using Masks512::runningSum;
    QEL_X86_OPERATIONS(64, _mm512, __m512i, __m512)

    // Sums of four lanes, of eight, of each block; then sums of blocks join those after them.
    static QEL_INLINE S16<64> runningSum(S16<64> a, S16<64>& total)
    {
        a += (S16<64>)((U64<64>)a << 16);
        a += (S16<64>)((U64<64>)a << 32);
        a +=
            (S16<64>)_mm512_shuffle_epi8((__m512i)a, _mm512_set4_epi64(0x0706070607060706, -1, 0x0706070607060706, -1));
        S16<64> own = inBlocks<7, 7, 7, 7, 7, 7, 7, 7>(a), all = own;
        all += (S16<64>)_mm512_maskz_shuffle_i64x2(0xFC, (__m512i)all, (__m512i)all, 0x90);
        all += (S16<64>)_mm512_maskz_shuffle_i64x2(0xF0, (__m512i)all, (__m512i)all, 0x40);
        total = (S16<64>)_mm512_shuffle_i64x2((__m512i)all, (__m512i)all, 0xFF);
        return a + (all - own);
    }
    static QEL_INLINE S16<64> mulRoundEven(S16<64> a, S16<64> b)
    {
        return evenTies((S16<64>)_mm512_mulhrs_epi16((__m512i)a, (__m512i)b), a * b);
    }
    template <int kDivisor> static QEL_INLINE S16<64> divideRounded(S16<64> a)
    {
        return (S16<64>)_mm512_mulhrs_epi16((__m512i)a, _mm512_set1_epi16(32768 / kDivisor));
    }
    static QEL_INLINE S16<64> mulAddPairs(U8<64> a, S8<64> weights)
    {
        return (S16<64>)_mm512_maddubs_epi16((__m512i)a, (__m512i)weights);
    }

    template <class V> static QEL_INLINE V shiftIn(V before, V v)
    {
        if constexpr (sizeof(v[0]) == 2)
            return inBlocks<7, 8, 9, 10, 11, 12, 13, 14>(before, v);
        else
            return inBlocks<3, 4, 5, 6>(before, v);
    }
    static QEL_INLINE S16<64> moveUp(S16<64> before, S16<64> v)
    {
        auto blockBefore = __builtin_shufflevector((U64<64>)before, (U64<64>)v, 6, 7, 8, 9, 10, 11, 12, 13);
        return shiftIn((S16<64>)blockBefore, v);
    }

    template <class V> static QEL_INLINE V inOrder(V v)
    {
        return (V)_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), (__m512i)v);
    }
    static constexpr bool kPermutesFast = true;
    template <const auto& kFrom> static QEL_INLINE void permute(U8<64>* v)
    {
        *v = (U8<64>)_mm512_permutexvar_epi8(_mm512_loadu_si512(kFrom.index), (__m512i)*v);
    }
    static QEL_INLINE S16<64> widen(const uint8_t* p)
    {
        return (S16<64>)_mm512_cvtepu8_epi16(_mm256_loadu_si256((const __m256i*)p));
    }
    static QEL_INLINE S16<64> join(S16<32> lower, S16<32> upper)
    {
        return (S16<64>)_mm512_inserti64x4(_mm512_castsi256_si512((__m256i)lower), (__m256i)upper, 1);
    }
    static QEL_INLINE S16<32> lowerHalf(S16<64> a) { return (S16<32>)_mm512_castsi512_si256((__m512i)a); }
    static QEL_INLINE S16<32> upperHalf(S16<64> a) { return (S16<32>)_mm512_extracti64x4_epi64((__m512i)a, 1); }
    template <class V> static QEL_INLINE bool isZero(V v)
    {
        return _mm512_test_epi64_mask((__m512i)v, (__m512i)v) == 0;
    }
    static QEL_INLINE uint64_t signMask(U8<64> a) { return _mm512_movepi8_mask((__m512i)a); }
    static QEL_INLINE void storeHalves(void* lower, void* upper, U8<64> v)
    {
        _mm256_storeu_si256((__m256i*)lower, _mm512_castsi512_si256((__m512i)v));
        _mm256_storeu_si256((__m256i*)upper, _mm512_extracti64x4_epi64((__m512i)v, 1));
    }

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        auto low = (__m512i)zipLow(a, b), high = (__m512i)zipHigh(a, b);
        store(p, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), high));
        store(p + 64, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), high));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<64> a, U8<64> b, U8<64> c, U8<64> d)
    {
        zip4<64>(a, b, c, d);
        // The 16-byte blocks of four registers, transposed.
        auto t0 = _mm512_shuffle_i32x4((__m512i)a, (__m512i)b, 0x44),
             t1 = _mm512_shuffle_i32x4((__m512i)c, (__m512i)d, 0x44);
        auto t2 = _mm512_shuffle_i32x4((__m512i)a, (__m512i)b, 0xEE),
             t3 = _mm512_shuffle_i32x4((__m512i)c, (__m512i)d, 0xEE);
        store(p, _mm512_shuffle_i32x4(t0, t1, 0x88));
        store(p + 64, _mm512_shuffle_i32x4(t0, t1, 0xDD));
        store(p + 128, _mm512_shuffle_i32x4(t2, t3, 0x88));
        store(p + 192, _mm512_shuffle_i32x4(t2, t3, 0xDD));
    }

    // Eight quadruples of each register's sixteen, those of two registers side by side.
    static QEL_INLINE __m512i halvesOfTwo(const uint8_t* p)
    {
        return (__m512i)join(load<S16<32>>(p), load<S16<32>>(p + 64));
    }
    // Every other word of two registers, from word kFirst on.
    template <int kFirst> static QEL_INLINE U16<64> everyOtherWord(__m512i a, __m512i b)
    {
        return (U16<64>)_mm512_permutex2var_epi16(a, _mm512_load_si512(kEveryOtherWord.from[kFirst]), b);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, U8<64>* ab, U8<64>* c1, U8<64>& d)
    {
        U16<64> cd[2];
        for (int half = 0; half < 2; ++half) {
            auto first = halvesOfTwo(p + 32 * half), second = halvesOfTwo(p + 32 * half + 128);
            ab[half] = (U8<64>)everyOtherWord<0>(first, second);
            cd[half] = everyOtherWord<1>(first, second);
        }
        splitPairs(cd[0], cd[1], c1, d);
    }

    static QEL_INLINE U8<64> shuffle(U8<64> v, const uint8_t* from)
    {
        return (U8<64>)_mm512_shuffle_epi8((__m512i)v, _mm512_load_si512(from));
    }
    static QEL_INLINE U8<64> blend(U8<64> a, U8<64> b, const uint8_t* mask)
    {
        return (U8<64>)_mm512_mask_blend_epi8(_mm512_movepi8_mask(_mm512_load_si512(mask)), (__m512i)a, (__m512i)b);
    }
    template <class V> static constexpr auto& triplesOf()
    {
        if constexpr (sizeof(V{}[0]) == 1)
            return kTriplesOfBytes;
        else
            return kTriplesOfWords;
    }
    // Lanes of r0 and r1 by index, and where `third` has ones, of r2.
    template <class V> static QEL_INLINE V gather3(V r0, V r1, V r2, const void* from, uint64_t third)
    {
        __m512i index = _mm512_load_si512(from);
        if constexpr (sizeof(r0[0]) == 1) {
            __m512i firstTwo = _mm512_permutex2var_epi8((__m512i)r0, index, (__m512i)r1);
            return (V)_mm512_mask_permutexvar_epi8(firstTwo, third, index, (__m512i)r2);
        } else {
            __m512i firstTwo = _mm512_permutex2var_epi32((__m512i)r0, index, (__m512i)r1);
            return (V)_mm512_mask_permutexvar_epi32(firstTwo, __mmask16(third), index, (__m512i)r2);
        }
    }
    template <class V> static QEL_INLINE void load3(const uint8_t* p, V& a, V& b, V& c)
    {
        constexpr auto& from = triplesOf<V>();
        V r0 = load<V>(p), r1 = load<V>(p + 64), r2 = load<V>(p + 128);
        a = gather3(r0, r1, r2, from.load[0], from.loadThird[0]);
        b = gather3(r0, r1, r2, from.load[1], from.loadThird[1]);
        c = gather3(r0, r1, r2, from.load[2], from.loadThird[2]);
    }
    template <class V> static QEL_INLINE void store3(uint8_t* p, V a, V b, V c)
    {
        constexpr auto& from = triplesOf<V>();
        store(p, gather3(a, b, c, from.store[0], from.storeThird[0]));
        store(p + 64, gather3(a, b, c, from.store[1], from.storeThird[1]));
        store(p + 128, gather3(a, b, c, from.store[2], from.storeThird[2]));
    }

    template <class V> static QEL_INLINE void stream(void* p, V v) { _mm512_stream_si512((__m512i*)p, (__m512i)v); }
    static QEL_INLINE void fence() { _mm_sfence(); }
};

}
}
