// SPDX-License-Identifier: Apache-2.0
// What the x86 registers of every width share: interleaved bytes, bits, and rounding of products. Included by
// core/simd.h.
#pragma once

#include <immintrin.h>

namespace qel::QEL_BUILD {
namespace {

// Bytes of interleaved triples lie in three registers r0, r1, r2 of 16 bytes. Byte j of register k belongs to channel
// (k + j) mod 3, so one channel never needs the same j of two registers: three blends gather a channel, and a shuffle
// puts it in order. Storing goes the same way back.
struct Triples {
    alignas(64) uint8_t load[3][64];   // load[c][i]: where pixel i of channel c lies after the blends
    alignas(64) uint8_t store[3][64];  // store[c][j]: which pixel of channel c goes to byte j
    alignas(64) uint8_t choose[3][64]; // choose[m][j]: all ones where j mod 3 is m (j within its block of 16)
    alignas(64) uint8_t pairs[2][64];  // four triples as pairs: where they come from, from byte 0 or from byte 4 on
    alignas(64) uint8_t fours[64];     // the same of four quadruples
};
constexpr Triples kTriples = [] {
    Triples t = {};
    for (int c = 0; c < 3; ++c)
        for (int j = 0; j < 64; ++j) {
            int inBlock = j % 16, k = (c - inBlock + 48) % 3;
            t.load[c][j] = uint8_t((3 * inBlock + c) % 16);
            t.store[c][j] = uint8_t((16 * k + inBlock - c) / 3);
            t.choose[c][j] = inBlock % 3 == c ? 0xFF : 0;
        }
    for (int j = 0; j < 64; ++j) {
        int triple = j % 8 / 2, from = 3 * triple + (j % 16 < 8 ? j % 2 : 2);
        bool isZero = j % 16 >= 8 && j % 2 == 1;
        for (int k = 0; k < 2; ++k) t.pairs[k][j] = isZero ? 0x80 : uint8_t(from + 4 * k);
        t.fours[j] = uint8_t(j % 16 / 8 * 2 + 4 * triple + j % 2);
    }
    return t;
}();

// Pairs and quadruples: even and odd bytes come apart by masks, shifts and packs.
template <int N, class Simd> struct Interleaved {
    // Lanes of 32 bits, by the same way as bytes.
    template <class V> static QEL_INLINE V blendTurns(V r0, V r1, V r2)
    {
        return inBlocks<0, 1, 6, 3>(inBlocks<0, 5, 2, 3>(r0, r1), r2);
    }
    template <class V> static QEL_INLINE void zip3(V& a, V& b, V& c)
    {
        V s0 = inBlocks<0, 3, 2, 1>(a), s1 = inBlocks<1, 0, 3, 2>(b), s2 = inBlocks<2, 1, 0, 3>(c);
        a = blendTurns(s0, s1, s2);
        b = blendTurns(s1, s2, s0);
        c = blendTurns(s2, s0, s1);
    }
    template <class V> static QEL_INLINE void unzip3(V& r0, V& r1, V& r2)
    {
        V a = blendTurns(r0, r2, r1), b = blendTurns(r1, r0, r2), c = blendTurns(r2, r1, r0);
        r0 = inBlocks<0, 3, 2, 1>(a);
        r1 = inBlocks<1, 0, 3, 2>(b);
        r2 = inBlocks<2, 1, 0, 3>(c);
    }

    // These two need byte shuffles; Simd<16> has others for SSE2.
    static QEL_INLINE void zip3(U8<N>& a, U8<N>& b, U8<N>& c)
    {
        auto& mask = kTriples.choose;
        auto s0 = Simd::shuffle(a, kTriples.store[0]), s1 = Simd::shuffle(b, kTriples.store[1]),
             s2 = Simd::shuffle(c, kTriples.store[2]);
        a = Simd::blend(Simd::blend(s0, s1, mask[1]), s2, mask[2]);
        b = Simd::blend(Simd::blend(s0, s1, mask[0]), s2, mask[1]);
        c = Simd::blend(Simd::blend(s0, s1, mask[2]), s2, mask[0]);
    }
    static QEL_INLINE void unzip3(U8<N>& r0, U8<N>& r1, U8<N>& r2)
    {
        auto& mask = kTriples.choose;
        auto a = Simd::blend(Simd::blend(r0, r1, mask[2]), r2, mask[1]);
        auto b = Simd::blend(Simd::blend(r0, r1, mask[0]), r2, mask[2]);
        auto c = Simd::blend(Simd::blend(r0, r1, mask[1]), r2, mask[0]);
        r0 = Simd::shuffle(a, kTriples.load[0]);
        r1 = Simd::shuffle(b, kTriples.load[1]);
        r2 = Simd::shuffle(c, kTriples.load[2]);
    }

    static QEL_INLINE U8<N> evenBytes(U8<N> a, U8<N> b)
    {
        return Simd::inOrder(Simd::packUnsigned((S16<N>)a & 0xFF, (S16<N>)b & 0xFF));
    }
    static QEL_INLINE U8<N> oddBytes(U8<N> a, U8<N> b)
    {
        return Simd::inOrder(Simd::packUnsigned((S16<N>)((U16<N>)a >> 8), (S16<N>)((U16<N>)b >> 8)));
    }
    static QEL_INLINE void load2(const uint8_t* p, U8<N>& a, U8<N>& b)
    {
        auto first = load<U8<N>>(p), second = load<U8<N>>(p + N);
        a = evenBytes(first, second);
        b = oddBytes(first, second);
    }
    template <class V> static QEL_INLINE void unzip2(V& a, V& b)
    {
        if constexpr (sizeof(a[0]) == 2) {
            auto first = (S32<N>)a, second = (S32<N>)b;
            a = (V)Simd::pack(first << 16 >> 16, second << 16 >> 16);
            b = (V)Simd::pack(first >> 16, second >> 16);
        } else {
            // Floats have a shuffle that takes two registers.
            auto first = (F32<N>)a, second = (F32<N>)b;
            a = (V)inBlocks<0, 2, 4, 6>(first, second);
            b = (V)inBlocks<1, 3, 5, 7>(first, second);
        }
    }
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<N>* ab, U8<N>* c1)
    {
        U8<N> a, b, c;
        Simd::load3(p, a, b, c);
        zipPairs(a, b, c, ab, c1);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, U8<N>* ab, U8<N>* c1, U8<N>& d)
    {
        U8<N> a, b, c;
        Simd::load4(p, a, b, c, d);
        zipPairs(a, b, c, ab, c1);
    }
    // Pairs (c, d) as pairs (c, 1) and registers of d.
    static QEL_INLINE void splitPairs(U16<N> cd0, U16<N> cd1, U8<N>* c1, U8<N>& d)
    {
        c1[0] = (U8<N>)((cd0 & 0xFF) | 256);
        c1[1] = (U8<N>)((cd1 & 0xFF) | 256);
        d = Simd::packUnsigned((S16<N>)(cd0 >> 8), (S16<N>)(cd1 >> 8));
    }
    static QEL_INLINE void zipPairs(U8<N> a, U8<N> b, U8<N> c, U8<N>* ab, U8<N>* c1)
    {
        U8<N> one = U8<N>{} + 1;
        ab[0] = Simd::zipLow(a, b);
        ab[1] = Simd::zipHigh(a, b);
        c1[0] = Simd::zipLow(c, one);
        c1[1] = Simd::zipHigh(c, one);
    }
    static QEL_INLINE void load4(const uint8_t* p, U8<N>& a, U8<N>& b, U8<N>& c, U8<N>& d)
    {
        U8<N> ac0, bd0, ac1, bd1;
        load2(p, ac0, bd0);
        load2(p + 2 * N, ac1, bd1);
        a = evenBytes(ac0, ac1);
        b = evenBytes(bd0, bd1);
        c = oddBytes(ac0, ac1);
        d = oddBytes(bd0, bd1);
    }
};

struct GatheredBits {
#if defined(__BMI2__) && defined(__x86_64__)
    static constexpr bool kGathersFast = true;
    static QEL_INLINE uint64_t gatherBits(uint64_t bits, uint64_t from) { return _pext_u64(bits, from); }
#else
    static constexpr bool kGathersFast = false;
    static QEL_INLINE uint64_t gatherBits(uint64_t bits, uint64_t from)
    {
        return PortableSimd<16>::gatherBits(bits, from);
    }
#endif
};

// From products rounded with ties up, and their low halves: where an odd result is a tie, the product is 2^14 beyond a
// multiple of 2^16.
template <class V> QEL_INLINE V evenTies(V rounded, V low) { return rounded + (V)(low == 0x4000); }

}
}
