// SPDX-License-Identifier: Apache-2.0
// Operations by masks with AVX-512 intrinsics, as PortableMasks<64> defines them. Included by simd_x86_64.h.
#pragma once

#include <immintrin.h>

#include "core/registers.h"

namespace qel::QEL_BUILD {
namespace {

struct Masks512 {
    template <class V> static QEL_INLINE uint64_t nonZero(V v)
    {
        if constexpr (sizeof(v[0]) == 1) return _mm512_test_epi8_mask((__m512i)v, (__m512i)v);
        if constexpr (sizeof(v[0]) == 8) return _mm512_test_epi64_mask((__m512i)v, (__m512i)v);
    }
    static QEL_INLINE uint64_t equal(U8<64> a, U8<64> b) { return _mm512_cmpeq_epi8_mask((__m512i)a, (__m512i)b); }
    static QEL_INLINE uint64_t greater(S8<64> a, S8<64> b) { return _mm512_cmpgt_epi8_mask((__m512i)a, (__m512i)b); }
    static QEL_INLINE uint64_t greater(U32<64> a, U32<64> b) { return _mm512_cmpgt_epu32_mask((__m512i)a, (__m512i)b); }

    template <class V> static QEL_INLINE V keep(V v, uint64_t mask)
    {
        if constexpr (sizeof(v[0]) == 4) return (V)_mm512_maskz_mov_epi32(__mmask16(mask), (__m512i)v);
        if constexpr (sizeof(v[0]) == 8) return (V)_mm512_maskz_mov_epi64(__mmask8(mask), (__m512i)v);
    }

    static QEL_INLINE U8<64> compress(U8<64> v, uint64_t mask)
    {
        return (U8<64>)_mm512_maskz_compress_epi8(mask, (__m512i)v);
    }
    static QEL_INLINE U64<64> compress(U64<64> v, uint64_t mask, U64<64> fill)
    {
        return (U64<64>)_mm512_mask_compress_epi64((__m512i)fill, __mmask8(mask), (__m512i)v);
    }
    static QEL_INLINE U8<64> expand(U8<64> v, uint64_t mask)
    {
        return (U8<64>)_mm512_maskz_expand_epi8(mask, (__m512i)v);
    }

    static QEL_INLINE U8<64> pick(U8<64> from, U8<64> index, uint64_t mask)
    {
        return (U8<64>)_mm512_maskz_permutexvar_epi8(mask, (__m512i)index, (__m512i)from);
    }
    static QEL_INLINE U8<64> pick(U8<64> a, U8<64> b, U8<64> index)
    {
        return (U8<64>)_mm512_permutex2var_epi8((__m512i)a, (__m512i)index, (__m512i)b);
    }

    // In pairs of registers by the five low bits of the index, then one of each two by the next bit, and the next.
    // A gather takes twice as long.
    static QEL_INLINE U32<64> lookUp(const void* table, U32<64> index)
    {
        __m512i found[8];
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) {
            auto* pair = (const uint8_t*)table + 128 * i;
            found[i] =
                _mm512_permutex2var_epi32(_mm512_loadu_si512(pair), (__m512i)index, _mm512_loadu_si512(pair + 64));
        }
#pragma GCC unroll 3
        for (int bit = 5, left = 4; left > 0; ++bit, left /= 2) {
            __mmask16 upper = _mm512_test_epi32_mask((__m512i)index, _mm512_set1_epi32(1 << bit));
#pragma GCC unroll 4
            for (int i = 0; i < left; ++i) found[i] = _mm512_mask_blend_epi32(upper, found[2 * i], found[2 * i + 1]);
        }
        return (U32<64>)found[0];
    }

    static QEL_INLINE S32<64> firstBytes(S8<64> v)
    {
        return (S32<64>)_mm512_cvtepi8_epi32(_mm512_castsi512_si128((__m512i)v));
    }
    static QEL_INLINE U32<64> firstBytes(U8<64> v)
    {
        return (U32<64>)_mm512_cvtepu8_epi32(_mm512_castsi512_si128((__m512i)v));
    }
    static QEL_INLINE U32<64> leadingZeros(U32<64> v) { return (U32<64>)_mm512_lzcnt_epi32((__m512i)v); }
    static QEL_INLINE U64<64> shiftLeft(U64<64> v, U64<64> bits)
    {
        return (U64<64>)_mm512_sllv_epi64((__m512i)v, (__m512i)bits);
    }
    static QEL_INLINE U64<64> sumOfBytes(U8<64> v)
    {
        return (U64<64>)_mm512_sad_epu8((__m512i)v, _mm512_setzero_si512());
    }

    // Sums of two lanes; those of the blocks before join each block.
    static QEL_INLINE U64<64> runningSum(U64<64> v, U64<64>& total)
    {
        __m512i sums = _mm512_add_epi64((__m512i)v, _mm512_unpacklo_epi64(_mm512_setzero_si512(), (__m512i)v));
        __m512i first = _mm512_maskz_permutexvar_epi64(0xFC, _mm512_set1_epi64(1), sums);
        __m512i second = _mm512_maskz_permutexvar_epi64(0xF0, _mm512_set1_epi64(3), sums);
        __m512i third = _mm512_maskz_permutexvar_epi64(0xC0, _mm512_set1_epi64(5), sums);
        sums = _mm512_add_epi64(_mm512_add_epi64(sums, first), _mm512_add_epi64(second, third));
        total = (U64<64>)_mm512_permutexvar_epi64(_mm512_set1_epi64(7), sums);
        return (U64<64>)sums;
    }

    static QEL_INLINE void storeSome(uint8_t* p, U8<64> v, uint64_t mask)
    {
        _mm512_mask_storeu_epi8(p, mask, (__m512i)v);
    }
};

}
}
