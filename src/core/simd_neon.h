// SPDX-License-Identifier: Apache-2.0
// Simd<16> with AArch64's NEON intrinsics. It has the operations that PortableSimd defines; those that are not here are
// as good in the language's own vectors. Included by core/simd.h.
#pragma once

#include <arm_neon.h>

namespace qel::QEL_BUILD {
namespace {

template <> struct Simd<16> : PortableSimd<16> {
    static QEL_INLINE S16<16> addSat(S16<16> a, S16<16> b) { return (S16<16>)vqaddq_s16((int16x8_t)a, (int16x8_t)b); }
    static QEL_INLINE S16<16> subSat(S16<16> a, S16<16> b) { return (S16<16>)vqsubq_s16((int16x8_t)a, (int16x8_t)b); }
    static QEL_INLINE U8<16> addSat(U8<16> a, U8<16> b) { return (U8<16>)vqaddq_u8((uint8x16_t)a, (uint8x16_t)b); }
    static QEL_INLINE U8<16> subSat(U8<16> a, U8<16> b) { return (U8<16>)vqsubq_u8((uint8x16_t)a, (uint8x16_t)b); }
    static QEL_INLINE U8<16> average(U8<16> a, U8<16> b) { return (U8<16>)vrhaddq_u8((uint8x16_t)a, (uint8x16_t)b); }
    static QEL_INLINE U16<16> average(U16<16> a, U16<16> b)
    {
        return (U16<16>)vrhaddq_u16((uint16x8_t)a, (uint16x8_t)b);
    }
    static QEL_INLINE U8<16> least(U8<16> a, U8<16> b) { return (U8<16>)vminq_u8((uint8x16_t)a, (uint8x16_t)b); }
    static QEL_INLINE S16<16> least(S16<16> a, S16<16> b) { return (S16<16>)vminq_s16((int16x8_t)a, (int16x8_t)b); }
    static QEL_INLINE U8<16> greatest(U8<16> a, U8<16> b) { return (U8<16>)vmaxq_u8((uint8x16_t)a, (uint8x16_t)b); }
    static QEL_INLINE S16<16> greatest(S16<16> a, S16<16> b) { return (S16<16>)vmaxq_s16((int16x8_t)a, (int16x8_t)b); }

    // Doubling products would save an instruction, but saturate where both factors are -32768.
    static QEL_INLINE S16<16> mulHigh(S16<16> a, S16<16> b)
    {
        Products products(a, b);
        return (S16<16>)vuzp2q_s16((int16x8_t)products.low, (int16x8_t)products.high);
    }
    static QEL_INLINE U16<16> mulHigh(U16<16> a, U16<16> b)
    {
        auto low = vmull_u16(vget_low_u16((uint16x8_t)a), vget_low_u16((uint16x8_t)b));
        return (U16<16>)vuzp2q_u16((uint16x8_t)low, (uint16x8_t)vmull_high_u16((uint16x8_t)a, (uint16x8_t)b));
    }

    static QEL_INLINE S16<16> runningSum(S16<16> a, S16<16>& total)
    {
        S16<16> none = {};
        a += moveUpBy<2>(none, a);
        a += moveUpBy<4>(none, a);
        a += moveUpBy<8>(none, a);
        total = (S16<16>)vdupq_laneq_s16((int16x8_t)a, 7);
        return a;
    }

    // Narrowed with ties up; where an odd result is a tie, the product is 2^14 beyond a multiple of 2^16.
    static QEL_INLINE S16<16> mulRoundEven(S16<16> a, S16<16> b)
    {
        Products products(a, b);
        auto rounded = vrshrn_high_n_s32(vrshrn_n_s32(products.low, 15), products.high, 15);
        auto lower = (S16<16>)vuzp1q_s16((int16x8_t)products.low, (int16x8_t)products.high);
        return (S16<16>)rounded + (S16<16>)(lower == 0x4000);
    }
    template <int kDivisor> static QEL_INLINE S16<16> divideRounded(S16<16> a)
    {
        return (S16<16>)vrshrq_n_s16((int16x8_t)(kDivisor < 0 ? -a : a), __builtin_ctz(kDivisor));
    }

    static QEL_INLINE S32<16> mulAddPairs(S16<16> a, S16<16> b)
    {
        Products products(a, b);
        return (S32<16>)vpaddq_s32(products.low, products.high);
    }
    static QEL_INLINE S16<16> mulAddPairs(U8<16> a, S8<16> weights)
    {
        S16<16> even = ((S16<16>)a & 0xFF) * ((S16<16>)weights << 8 >> 8);
        S16<16> odd = (S16<16>)((U16<16>)a >> 8) * ((S16<16>)weights >> 8);
        return addSat(even, odd);
    }

    static QEL_INLINE S16<16> pack(S32<16> a, S32<16> b)
    {
        return (S16<16>)vqmovn_high_s32(vqmovn_s32((int32x4_t)a), (int32x4_t)b);
    }
    static QEL_INLINE U8<16> packUnsigned(S16<16> a, S16<16> b)
    {
        return (U8<16>)vqmovun_high_s16(vqmovun_s16((int16x8_t)a), (int16x8_t)b);
    }
    static QEL_INLINE U8<16> packSigned(S16<16> a, S16<16> b)
    {
        return (U8<16>)vqmovn_high_s16(vqmovn_s16((int16x8_t)a), (int16x8_t)b);
    }
    template <class V> static QEL_INLINE V inOrder(V v) { return v; }

    template <class V> static QEL_INLINE V zipLow(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)vzip1q_u8((uint8x16_t)a, (uint8x16_t)b);
        if constexpr (sizeof(a[0]) == 2) return (V)vzip1q_u16((uint16x8_t)a, (uint16x8_t)b);
        if constexpr (sizeof(a[0]) == 4) return (V)vzip1q_u32((uint32x4_t)a, (uint32x4_t)b);
        if constexpr (sizeof(a[0]) == 8) return (V)vzip1q_u64((uint64x2_t)a, (uint64x2_t)b);
    }
    template <class V> static QEL_INLINE V zipHigh(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)vzip2q_u8((uint8x16_t)a, (uint8x16_t)b);
        if constexpr (sizeof(a[0]) == 2) return (V)vzip2q_u16((uint16x8_t)a, (uint16x8_t)b);
        if constexpr (sizeof(a[0]) == 4) return (V)vzip2q_u32((uint32x4_t)a, (uint32x4_t)b);
        if constexpr (sizeof(a[0]) == 8) return (V)vzip2q_u64((uint64x2_t)a, (uint64x2_t)b);
    }
    template <class V> static QEL_INLINE void unzip2(V& a, V& b)
    {
        V even, odd;
        if constexpr (sizeof(a[0]) == 2) {
            even = (V)vuzp1q_u16((uint16x8_t)a, (uint16x8_t)b);
            odd = (V)vuzp2q_u16((uint16x8_t)a, (uint16x8_t)b);
        } else {
            even = (V)vuzp1q_u32((uint32x4_t)a, (uint32x4_t)b);
            odd = (V)vuzp2q_u32((uint32x4_t)a, (uint32x4_t)b);
        }
        a = even;
        b = odd;
    }

    // Bytes of three registers by their places among all 48.
    static QEL_INLINE void zip3(U8<16>& a, U8<16>& b, U8<16>& c) { lookUp(kTriples.interleaved, a, b, c); }
    static QEL_INLINE void unzip3(U8<16>& a, U8<16>& b, U8<16>& c) { lookUp(kTriples.apart, a, b, c); }
    template <const auto& kFrom> static QEL_INLINE void permute(U8<16>* v)
    {
        const uint8x16x4_t from = {(uint8x16_t)v[0], (uint8x16_t)v[1], (uint8x16_t)v[2], (uint8x16_t)v[3]};
        for (int i = 0; i < 4; ++i) v[i] = (U8<16>)vqtbl4q_u8(from, vld1q_u8(kFrom.index + 16 * i));
    }

    template <class V> static QEL_INLINE V shiftIn(V before, V v) { return moveUpBy<sizeof(v[0])>(before, v); }
    static QEL_INLINE S16<16> moveUp(S16<16> before, S16<16> v) { return shiftIn(before, v); }

    // The conversion saturates, and makes 0 of what is no number.
    static QEL_INLINE S32<16> truncate(F32<16> v)
    {
        auto whole = (S32<16>)vcvtq_s32_f32((float32x4_t)v);
        return v < 2147483648.0f ? whole : S32<16>{} + INT32_MIN;
    }
    static QEL_INLINE S16<16> widen(const uint8_t* p) { return (S16<16>)vmovl_u8(vld1_u8(p)); }

    template <class V> static QEL_INLINE bool isZero(V v) { return vmaxvq_u32((uint32x4_t)v) == 0; }
    static QEL_INLINE uint64_t signMask(U8<16> a)
    {
        const U8<16> bits = (U8<16>)(U64<16>{} + 0x8040201008040201);
        auto chosen = (uint8x16_t)((U8<16>)((S8<16>)a < 0) & bits);
        auto sums = vpaddq_u8(chosen, chosen);
        sums = vpaddq_u8(sums, sums);
        return vgetq_lane_u16((uint16x8_t)vpaddq_u8(sums, sums), 0);
    }
    static QEL_INLINE void storeHalves(void* lower, void* upper, U8<16> v)
    {
        vst1_u8((uint8_t*)lower, vget_low_u8((uint8x16_t)v));
        vst1_u8((uint8_t*)upper, vget_high_u8((uint8x16_t)v));
    }

    static QEL_INLINE void load2(const uint8_t* p, U8<16>& a, U8<16>& b)
    {
        auto v = vld2q_u8(p);
        a = (U8<16>)v.val[0];
        b = (U8<16>)v.val[1];
    }
    template <class V> static QEL_INLINE void load3(const uint8_t* p, V& a, V& b, V& c)
    {
        auto from = [&](auto v) {
            a = (V)v.val[0];
            b = (V)v.val[1];
            c = (V)v.val[2];
        };
        if constexpr (sizeof(a[0]) == 1) from(vld3q_u8(p));
        if constexpr (sizeof(a[0]) == 4) from(vld3q_u32((const uint32_t*)p));
    }
    static QEL_INLINE void load4(const uint8_t* p, U8<16>& a, U8<16>& b, U8<16>& c, U8<16>& d)
    {
        auto v = vld4q_u8(p);
        a = (U8<16>)v.val[0];
        b = (U8<16>)v.val[1];
        c = (U8<16>)v.val[2];
        d = (U8<16>)v.val[3];
    }
    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        store(p, zipLow(a, b));
        store(p + 16, zipHigh(a, b));
    }
    template <class V> static QEL_INLINE void store3(uint8_t* p, V a, V b, V c)
    {
        if constexpr (sizeof(a[0]) == 1) vst3q_u8(p, {(uint8x16_t)a, (uint8x16_t)b, (uint8x16_t)c});
        if constexpr (sizeof(a[0]) == 4) vst3q_u32((uint32_t*)p, {(uint32x4_t)a, (uint32x4_t)b, (uint32x4_t)c});
    }
    static QEL_INLINE void store4(uint8_t* p, U8<16> a, U8<16> b, U8<16> c, U8<16> d)
    {
        vst4q_u8(p, {(uint8x16_t)a, (uint8x16_t)b, (uint8x16_t)c, (uint8x16_t)d});
    }

    // Triples (a, b, c) of a row as (a, b) and (c, 1).
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<16>* ab, U8<16>* c1)
    {
        U8<16> a, b, c;
        load3(p, a, b, c);
        zipPairs(a, b, c, ab, c1);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, U8<16>* ab, U8<16>* c1, U8<16>& d)
    {
        U8<16> a, b, c;
        load4(p, a, b, c, d);
        zipPairs(a, b, c, ab, c1);
    }

private:
    // All products of two registers.
    struct Products {
        int32x4_t low, high;

        QEL_INLINE Products(S16<16> a, S16<16> b)
            : low(vmull_s16(vget_low_s16((int16x8_t)a), vget_low_s16((int16x8_t)b))),
              high(vmull_high_s16((int16x8_t)a, (int16x8_t)b))
        {}
    };

    struct Triples {
        alignas(16) uint8_t interleaved[48], apart[48];
    };
    static constexpr Triples makeTriples()
    {
        Triples t = {};
        for (int i = 0; i < 48; ++i) {
            t.interleaved[i] = uint8_t(i % 3 * 16 + i / 3);
            t.apart[t.interleaved[i]] = uint8_t(i);
        }
        return t;
    }
    static const Triples kTriples;

    static QEL_INLINE void lookUp(const uint8_t (&places)[48], U8<16>& a, U8<16>& b, U8<16>& c)
    {
        const uint8x16x3_t from = {(uint8x16_t)a, (uint8x16_t)b, (uint8x16_t)c};
        a = (U8<16>)vqtbl3q_u8(from, vld1q_u8(places));
        b = (U8<16>)vqtbl3q_u8(from, vld1q_u8(places + 16));
        c = (U8<16>)vqtbl3q_u8(from, vld1q_u8(places + 32));
    }
    template <int kBytes, class V> static QEL_INLINE V moveUpBy(V before, V v)
    {
        return (V)vextq_u8((uint8x16_t)before, (uint8x16_t)v, 16 - kBytes);
    }
    static QEL_INLINE void zipPairs(U8<16> a, U8<16> b, U8<16> c, U8<16>* ab, U8<16>* c1)
    {
        U8<16> one = U8<16>{} + 1;
        ab[0] = zipLow(a, b);
        ab[1] = zipHigh(a, b);
        c1[0] = zipLow(c, one);
        c1[1] = zipHigh(c, one);
    }
};
constexpr Simd<16>::Triples Simd<16>::kTriples = Simd<16>::makeTriples();

}
}
