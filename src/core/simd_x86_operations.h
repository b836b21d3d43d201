// SPDX-License-Identifier: Apache-2.0
// Operations that are one instruction of x86 registers at every width. Included by simd_x86_16.h and its like.
#pragma once

// Members of Simd<N>. PREFIX begins the names of its intrinsics, WHOLE and REAL are the types of its registers.
#define QEL_X86_OPERATIONS(N, PREFIX, WHOLE, REAL)                                                                     \
    static QEL_INLINE S16<N> addSat(S16<N> a, S16<N> b) { return (S16<N>)PREFIX##_adds_epi16((WHOLE)a, (WHOLE)b); }    \
    static QEL_INLINE S16<N> subSat(S16<N> a, S16<N> b) { return (S16<N>)PREFIX##_subs_epi16((WHOLE)a, (WHOLE)b); }    \
    static QEL_INLINE U8<N> addSat(U8<N> a, U8<N> b) { return (U8<N>)PREFIX##_adds_epu8((WHOLE)a, (WHOLE)b); }         \
    static QEL_INLINE U8<N> subSat(U8<N> a, U8<N> b) { return (U8<N>)PREFIX##_subs_epu8((WHOLE)a, (WHOLE)b); }         \
    static QEL_INLINE U8<N> average(U8<N> a, U8<N> b) { return (U8<N>)PREFIX##_avg_epu8((WHOLE)a, (WHOLE)b); }         \
    static QEL_INLINE U16<N> average(U16<N> a, U16<N> b) { return (U16<N>)PREFIX##_avg_epu16((WHOLE)a, (WHOLE)b); }    \
    static QEL_INLINE U8<N> least(U8<N> a, U8<N> b) { return (U8<N>)PREFIX##_min_epu8((WHOLE)a, (WHOLE)b); }           \
    static QEL_INLINE S16<N> least(S16<N> a, S16<N> b) { return (S16<N>)PREFIX##_min_epi16((WHOLE)a, (WHOLE)b); }      \
    static QEL_INLINE U8<N> greatest(U8<N> a, U8<N> b) { return (U8<N>)PREFIX##_max_epu8((WHOLE)a, (WHOLE)b); }        \
    static QEL_INLINE S16<N> greatest(S16<N> a, S16<N> b) { return (S16<N>)PREFIX##_max_epi16((WHOLE)a, (WHOLE)b); }   \
    static QEL_INLINE S16<N> mulHigh(S16<N> a, S16<N> b) { return (S16<N>)PREFIX##_mulhi_epi16((WHOLE)a, (WHOLE)b); }  \
    static QEL_INLINE U16<N> mulHigh(U16<N> a, U16<N> b) { return (U16<N>)PREFIX##_mulhi_epu16((WHOLE)a, (WHOLE)b); }  \
    static QEL_INLINE S32<N> mulAddPairs(S16<N> a, S16<N> b)                                                           \
    {                                                                                                                  \
        return (S32<N>)PREFIX##_madd_epi16((WHOLE)a, (WHOLE)b);                                                        \
    }                                                                                                                  \
    static QEL_INLINE S16<N> pack(S32<N> a, S32<N> b) { return (S16<N>)PREFIX##_packs_epi32((WHOLE)a, (WHOLE)b); }     \
    static QEL_INLINE U8<N> packUnsigned(S16<N> a, S16<N> b)                                                           \
    {                                                                                                                  \
        return (U8<N>)PREFIX##_packus_epi16((WHOLE)a, (WHOLE)b);                                                       \
    }                                                                                                                  \
    static QEL_INLINE U8<N> packSigned(S16<N> a, S16<N> b) { return (U8<N>)PREFIX##_packs_epi16((WHOLE)a, (WHOLE)b); } \
    template <class V> static QEL_INLINE V zipLow(V a, V b)                                                            \
    {                                                                                                                  \
        if constexpr (sizeof(a[0]) == 1) return (V)PREFIX##_unpacklo_epi8((WHOLE)a, (WHOLE)b);                         \
        if constexpr (sizeof(a[0]) == 2) return (V)PREFIX##_unpacklo_epi16((WHOLE)a, (WHOLE)b);                        \
        if constexpr (sizeof(a[0]) == 4) return (V)PREFIX##_unpacklo_epi32((WHOLE)a, (WHOLE)b);                        \
        if constexpr (sizeof(a[0]) == 8) return (V)PREFIX##_unpacklo_epi64((WHOLE)a, (WHOLE)b);                        \
    }                                                                                                                  \
    template <class V> static QEL_INLINE V zipHigh(V a, V b)                                                           \
    {                                                                                                                  \
        if constexpr (sizeof(a[0]) == 1) return (V)PREFIX##_unpackhi_epi8((WHOLE)a, (WHOLE)b);                         \
        if constexpr (sizeof(a[0]) == 2) return (V)PREFIX##_unpackhi_epi16((WHOLE)a, (WHOLE)b);                        \
        if constexpr (sizeof(a[0]) == 4) return (V)PREFIX##_unpackhi_epi32((WHOLE)a, (WHOLE)b);                        \
        if constexpr (sizeof(a[0]) == 8) return (V)PREFIX##_unpackhi_epi64((WHOLE)a, (WHOLE)b);                        \
    }                                                                                                                  \
    static QEL_INLINE S32<N> truncate(F32<N> v) { return (S32<N>)PREFIX##_cvttps_epi32((REAL)v); }
