// SPDX-License-Identifier: Apache-2.0
// Stands before the compiler's <immintrin.h> and supplies the AVX-512 intrinsics of simd_x86.h through SIMDe, so that
// the kernel tests run the avx512 build on a processor that only has AVX2. For the tests alone.
#pragma once

#include_next <immintrin.h>
#include <stdint.h>
#include <string.h>

// After the compiler's header, whose intrinsics the aliases hide.
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/avx512.h>

// What SIMDe 0.7 lacks.
namespace emulation {

typedef uint8_t Bytes __attribute__((vector_size(32)));
typedef uint16_t Words __attribute__((vector_size(64)));
typedef uint32_t Products __attribute__((vector_size(128)));

inline __m512i mulHighUnsigned(__m512i a, __m512i b)
{
    auto wideA = __builtin_convertvector((Words)a, Products), wideB = __builtin_convertvector((Words)b, Products);
    return (__m512i) __builtin_convertvector(wideA * wideB >> 16, Words);
}

inline __m512i widen(__m256i bytes) { return (__m512i) __builtin_convertvector((Bytes)bytes, Words); }

// Blocks of 16 bytes by index, two from each; zeros where the mask of 8-byte lanes has none.
typedef uint64_t Lanes __attribute__((vector_size(64)));
inline __m512i shuffleBlocks(__m512i a, __m512i b, unsigned from, unsigned mask = 0xFF)
{
    Lanes first = (Lanes)a, second = (Lanes)b, result = {};
    for (unsigned i = 0; i < 8; ++i) {
        unsigned lane = (from >> (i / 2 * 2) & 3) * 2 + i % 2;
        if (mask >> i & 1) result[i] = i < 4 ? first[lane] : second[lane];
    }
    return (__m512i)result;
}

inline __m512i truncate(__m512 v)
{
    __m256 halves[2];
    memcpy(halves, &v, sizeof v);
    __m256i whole[2] = {_mm256_cvttps_epi32(halves[0]), _mm256_cvttps_epi32(halves[1])};
    __m512i result;
    memcpy(&result, whole, sizeof result);
    return result;
}

typedef uint8_t AllBytes __attribute__((vector_size(64)));
typedef uint32_t Halves __attribute__((vector_size(64)));

inline unsigned greaterMask(__m512i a, __m512i b)
{
    unsigned mask = 0;
    for (int i = 0; i < 16; ++i) mask |= unsigned(((Halves)a)[i] > ((Halves)b)[i]) << i;
    return mask;
}
template <class Byte> inline __m512i widenFirst(__m128i bytes)
{
    Byte from[16];
    memcpy(from, &bytes, sizeof from);
    Halves wide = {};
    for (int i = 0; i < 16; ++i) wide[i] = uint32_t(from[i]);
    return (__m512i)wide;
}
inline __m512i leadingZeros(__m512i v)
{
    Halves lanes = (Halves)v;
    for (int i = 0; i < 16; ++i) lanes[i] = lanes[i] == 0 ? 32 : unsigned(__builtin_clz(lanes[i]));
    return (__m512i)lanes;
}
inline __m512i compress(uint64_t mask, __m512i v)
{
    AllBytes from = (AllBytes)v, to = {};
    for (int i = 0, k = 0; i < 64; ++i)
        if (mask >> i & 1) to[k++] = from[i];
    return (__m512i)to;
}
inline __m512i expand(uint64_t mask, __m512i v)
{
    AllBytes from = (AllBytes)v, to = {};
    for (int i = 0, k = 0; i < 64; ++i)
        if (mask >> i & 1) to[i] = from[k++];
    return (__m512i)to;
}
inline void storeMasked(void* p, uint64_t mask, __m512i v)
{
    for (int i = 0; i < 64; ++i)
        if (mask >> i & 1) ((uint8_t*)p)[i] = ((AllBytes)v)[i];
}

// Faults where the processor would.
inline void stream(void* p, __m512i v)
{
    if ((uintptr_t)p % sizeof v != 0) __builtin_trap();
    memcpy(p, &v, sizeof v);
}

}

#undef _mm512_mulhi_epu16
#undef _mm512_cvtepu8_epi16
#undef _mm512_cvttps_epi32
#undef _mm512_stream_si512
#undef _mm512_shuffle_i64x2
#undef _mm512_maskz_shuffle_i64x2
#define _mm512_mulhi_epu16(a, b) emulation::mulHighUnsigned(a, b)
#define _mm512_cvtepu8_epi16(a) emulation::widen(a)
#define _mm512_cvttps_epi32(v) emulation::truncate(v)
#define _mm512_stream_si512(p, v) emulation::stream(p, v)
#define _mm512_shuffle_i64x2(a, b, from) emulation::shuffleBlocks(a, b, from)
#define _mm512_maskz_shuffle_i64x2(mask, a, b, from) emulation::shuffleBlocks(a, b, from, mask)

#undef _mm512_cmpgt_epu32_mask
#undef _mm512_cvtepi8_epi32
#undef _mm512_cvtepu8_epi32
#undef _mm512_lzcnt_epi32
#undef _mm512_maskz_compress_epi8
#undef _mm512_maskz_expand_epi8
#undef _mm512_mask_storeu_epi8
#define _mm512_cmpgt_epu32_mask(a, b) emulation::greaterMask(a, b)
#define _mm512_cvtepi8_epi32(a) emulation::widenFirst<int8_t>(a)
#define _mm512_cvtepu8_epi32(a) emulation::widenFirst<uint8_t>(a)
#define _mm512_lzcnt_epi32(a) emulation::leadingZeros(a)
#define _mm512_maskz_compress_epi8(mask, a) emulation::compress(mask, a)
#define _mm512_maskz_expand_epi8(mask, a) emulation::expand(mask, a)
#define _mm512_mask_storeu_epi8(p, mask, a) emulation::storeMasked(p, mask, a)

// SIMDe 0.7 gives this name the parameters of the masked form.
#undef _mm512_madd_epi16
#define _mm512_madd_epi16(a, b) simde_mm512_madd_epi16(a, b)

// Only now: SIMDe must not take the instructions for granted, simd_x86.h must.
#define __AVX512BW__ 1
#define __AVX512VBMI__ 1
