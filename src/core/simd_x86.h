// Simd<16>, <32> and <64> with x86 intrinsics. Each has the operations that PortableSimd defines.
#pragma once

#include <immintrin.h>

namespace qel {
namespace QEL_BUILD {
namespace {

// Bytes of interleaved triples lie in three registers r0, r1, r2 of 16 bytes. Byte j of register k belongs to channel
// (k + j) mod 3, so one channel never needs the same j of two registers: three blends gather a channel, and a shuffle
// puts it in order. Storing goes the same way back.
struct Triples {
    alignas(64) uint8_t load[3][64];   // load[c][i]: where pixel i of channel c lies after the blends
    alignas(64) uint8_t store[3][64];  // store[c][j]: which pixel of channel c goes to byte j
    alignas(64) uint8_t choose[3][64]; // choose[m][j]: all ones where j mod 3 is m (j within its block of 16)
    alignas(64) uint8_t pairs[2][64];  // four triples as pairs: where they come from, from byte 0 or from byte 4 on
};
constexpr Triples makeTriples()
{
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
    }
    return t;
}
constexpr Triples kTriples = makeTriples();

// Pairs and quadruples: even and odd bytes come apart by masks, shifts and packs.
template <int N, class Simd> struct Interleaved {
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
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<N>* ab, U8<N>* c1)
    {
        U8<N> a, b, c, one = U8<N>{} + 1;
        Simd::load3(p, a, b, c);
        ab[0] = Simd::zipLow(a, b), ab[1] = Simd::zipHigh(a, b);
        c1[0] = Simd::zipLow(c, one), c1[1] = Simd::zipHigh(c, one);
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

// From products rounded with ties up, and their low halves: a tie has 0x4000 in its last 15 bits.
template <class V> QEL_INLINE V evenTies(V rounded, V low)
{
    V isTie = low * 2 == -32768;
    return rounded & ~(V)(isTie & 1);
}

template <> struct Simd<16> : Interleaved<16, Simd<16>> {
    static QEL_INLINE S16<16> addSat(S16<16> a, S16<16> b) { return (S16<16>)_mm_adds_epi16((__m128i)a, (__m128i)b); }
    static QEL_INLINE S16<16> subSat(S16<16> a, S16<16> b) { return (S16<16>)_mm_subs_epi16((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> addSat(U8<16> a, U8<16> b) { return (U8<16>)_mm_adds_epu8((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> subSat(U8<16> a, U8<16> b) { return (U8<16>)_mm_subs_epu8((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> average(U8<16> a, U8<16> b) { return (U8<16>)_mm_avg_epu8((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> least(U8<16> a, U8<16> b) { return (U8<16>)_mm_min_epu8((__m128i)a, (__m128i)b); }
    static QEL_INLINE S16<16> least(S16<16> a, S16<16> b) { return (S16<16>)_mm_min_epi16((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> greatest(U8<16> a, U8<16> b) { return (U8<16>)_mm_max_epu8((__m128i)a, (__m128i)b); }
    static QEL_INLINE S16<16> greatest(S16<16> a, S16<16> b) { return (S16<16>)_mm_max_epi16((__m128i)a, (__m128i)b); }
    static QEL_INLINE S16<16> mulHigh(S16<16> a, S16<16> b) { return (S16<16>)_mm_mulhi_epi16((__m128i)a, (__m128i)b); }
    static QEL_INLINE U16<16> mulHigh(U16<16> a, U16<16> b) { return (U16<16>)_mm_mulhi_epu16((__m128i)a, (__m128i)b); }
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
    static QEL_INLINE S32<16> mulAddPairs(S16<16> a, S16<16> b)
    {
        return (S32<16>)_mm_madd_epi16((__m128i)a, (__m128i)b);
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
    static QEL_INLINE S16<16> pack(S32<16> a, S32<16> b) { return (S16<16>)_mm_packs_epi32((__m128i)a, (__m128i)b); }
    static QEL_INLINE U8<16> packUnsigned(S16<16> a, S16<16> b)
    {
        return (U8<16>)_mm_packus_epi16((__m128i)a, (__m128i)b);
    }
    template <class V> static QEL_INLINE V zipLow(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm_unpacklo_epi8((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm_unpacklo_epi16((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm_unpacklo_epi32((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm_unpacklo_epi64((__m128i)a, (__m128i)b);
    }
    template <class V> static QEL_INLINE V zipHigh(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm_unpackhi_epi8((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm_unpackhi_epi16((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm_unpackhi_epi32((__m128i)a, (__m128i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm_unpackhi_epi64((__m128i)a, (__m128i)b);
    }

    template <class V> static QEL_INLINE V inOrder(V v) { return v; }
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

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        store(p, zipLow(a, b));
        store(p + 16, zipHigh(a, b));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<16> a, U8<16> b, U8<16> c, U8<16> d)
    {
        auto ab = (U16<16>)zipLow(a, b), cd = (U16<16>)zipLow(c, d);
        store(p, zipLow(ab, cd));
        store(p + 16, zipHigh(ab, cd));
        ab = (U16<16>)zipHigh(a, b), cd = (U16<16>)zipHigh(c, d);
        store(p + 32, zipLow(ab, cd));
        store(p + 48, zipHigh(ab, cd));
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
    static QEL_INLINE void load3(const uint8_t* p, U8<16>& a, U8<16>& b, U8<16>& c)
    {
        auto r0 = load<U8<16>>(p), r1 = load<U8<16>>(p + 16), r2 = load<U8<16>>(p + 32);
        auto& mask = kTriples.choose;
        a = shuffle(blend(blend(r0, r1, mask[2]), r2, mask[1]), kTriples.load[0]);
        b = shuffle(blend(blend(r0, r1, mask[0]), r2, mask[2]), kTriples.load[1]);
        c = shuffle(blend(blend(r0, r1, mask[1]), r2, mask[0]), kTriples.load[2]);
    }
    static QEL_INLINE void store3(uint8_t* p, U8<16> a, U8<16> b, U8<16> c)
    {
        auto& mask = kTriples.choose;
        a = shuffle(a, kTriples.store[0]), b = shuffle(b, kTriples.store[1]), c = shuffle(c, kTriples.store[2]);
        store(p, blend(blend(a, b, mask[1]), c, mask[2]));
        store(p + 16, blend(blend(a, b, mask[0]), c, mask[1]));
        store(p + 32, blend(blend(a, b, mask[2]), c, mask[0]));
    }
#else
    // The 48 bytes as two halves of 24, zipped: a perfect shuffle moves byte i to 2i modulo 47. De-interleaving by
    // three moves it to 16i = 2i four times, so four shuffles do it, and their inverses interleave.
    static QEL_INLINE void shuffleHalves(U8<16>& r0, U8<16>& r1, U8<16>& r2)
    {
        U8<16> s0 = zipLow(r0, upperHalf(r1)), s1 = zipLow(upperHalf(r0), r2), s2 = zipLow(r1, upperHalf(r2));
        r0 = s0, r1 = s1, r2 = s2;
    }
    static QEL_INLINE void unshuffleHalves(U8<16>& r0, U8<16>& r1, U8<16>& r2)
    {
        auto even = [](U8<16> r) { return (S16<16>)r & 0xFF; };
        auto odd = [](U8<16> r) { return (S16<16>)((U16<16>)r >> 8); };
        U8<16> s0 = packUnsigned(even(r0), even(r1)), s1 = packUnsigned(even(r2), odd(r0)),
               s2 = packUnsigned(odd(r1), odd(r2));
        r0 = s0, r1 = s1, r2 = s2;
    }
    static QEL_INLINE U8<16> upperHalf(U8<16> r) { return (U8<16>)_mm_srli_si128((__m128i)r, 8); }
    static QEL_INLINE void load3(const uint8_t* p, U8<16>& a, U8<16>& b, U8<16>& c)
    {
        a = load<U8<16>>(p), b = load<U8<16>>(p + 16), c = load<U8<16>>(p + 32);
        for (int i = 0; i < 4; ++i) shuffleHalves(a, b, c);
    }
    static QEL_INLINE void store3(uint8_t* p, U8<16> a, U8<16> b, U8<16> c)
    {
        for (int i = 0; i < 4; ++i) unshuffleHalves(a, b, c);
        store(p, a), store(p + 16, b), store(p + 32, c);
    }
#endif

    template <class V> static QEL_INLINE void storePast(void* p, V v) { _mm_stream_si128((__m128i*)p, (__m128i)v); }
    static QEL_INLINE void finishStores() { _mm_sfence(); }
};

#if defined(__AVX2__)
template <> struct Simd<32> : Interleaved<32, Simd<32>> {
    static QEL_INLINE S16<32> addSat(S16<32> a, S16<32> b)
    {
        return (S16<32>)_mm256_adds_epi16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE S16<32> subSat(S16<32> a, S16<32> b)
    {
        return (S16<32>)_mm256_subs_epi16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE U8<32> addSat(U8<32> a, U8<32> b) { return (U8<32>)_mm256_adds_epu8((__m256i)a, (__m256i)b); }
    static QEL_INLINE U8<32> subSat(U8<32> a, U8<32> b) { return (U8<32>)_mm256_subs_epu8((__m256i)a, (__m256i)b); }
    static QEL_INLINE U8<32> average(U8<32> a, U8<32> b) { return (U8<32>)_mm256_avg_epu8((__m256i)a, (__m256i)b); }
    static QEL_INLINE U8<32> least(U8<32> a, U8<32> b) { return (U8<32>)_mm256_min_epu8((__m256i)a, (__m256i)b); }
    static QEL_INLINE S16<32> least(S16<32> a, S16<32> b) { return (S16<32>)_mm256_min_epi16((__m256i)a, (__m256i)b); }
    static QEL_INLINE U8<32> greatest(U8<32> a, U8<32> b) { return (U8<32>)_mm256_max_epu8((__m256i)a, (__m256i)b); }
    static QEL_INLINE S16<32> greatest(S16<32> a, S16<32> b)
    {
        return (S16<32>)_mm256_max_epi16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE S16<32> mulHigh(S16<32> a, S16<32> b)
    {
        return (S16<32>)_mm256_mulhi_epi16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE U16<32> mulHigh(U16<32> a, U16<32> b)
    {
        return (U16<32>)_mm256_mulhi_epu16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE S16<32> mulRoundEven(S16<32> a, S16<32> b)
    {
        return evenTies((S16<32>)_mm256_mulhrs_epi16((__m256i)a, (__m256i)b), a * b);
    }
    static QEL_INLINE S32<32> mulAddPairs(S16<32> a, S16<32> b)
    {
        return (S32<32>)_mm256_madd_epi16((__m256i)a, (__m256i)b);
    }
    static QEL_INLINE S16<32> mulAddPairs(U8<32> a, S8<32> weights)
    {
        return (S16<32>)_mm256_maddubs_epi16((__m256i)a, (__m256i)weights);
    }
    static QEL_INLINE S16<32> pack(S32<32> a, S32<32> b) { return (S16<32>)_mm256_packs_epi32((__m256i)a, (__m256i)b); }
    static QEL_INLINE U8<32> packUnsigned(S16<32> a, S16<32> b)
    {
        return (U8<32>)_mm256_packus_epi16((__m256i)a, (__m256i)b);
    }
    template <class V> static QEL_INLINE V zipLow(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm256_unpacklo_epi8((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm256_unpacklo_epi16((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm256_unpacklo_epi32((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm256_unpacklo_epi64((__m256i)a, (__m256i)b);
    }
    template <class V> static QEL_INLINE V zipHigh(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm256_unpackhi_epi8((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm256_unpackhi_epi16((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm256_unpackhi_epi32((__m256i)a, (__m256i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm256_unpackhi_epi64((__m256i)a, (__m256i)b);
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
    static QEL_INLINE U8<32> lowBlocks(U8<32> a, U8<32> b)
    {
        return (U8<32>)_mm256_permute2x128_si256((__m256i)a, (__m256i)b, 0x20);
    }
    static QEL_INLINE U8<32> highBlocks(U8<32> a, U8<32> b)
    {
        return (U8<32>)_mm256_permute2x128_si256((__m256i)a, (__m256i)b, 0x31);
    }
    static QEL_INLINE U8<32> lowAndHigh(U8<32> a, U8<32> b)
    {
        return (U8<32>)_mm256_blend_epi32((__m256i)a, (__m256i)b, 0xF0);
    }

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        auto low = (U8<32>)zipLow(a, b), high = (U8<32>)zipHigh(a, b);
        store(p, lowBlocks(low, high));
        store(p + 32, highBlocks(low, high));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<32> a, U8<32> b, U8<32> c, U8<32> d)
    {
        auto abLow = (U16<32>)zipLow(a, b), abHigh = (U16<32>)zipHigh(a, b);
        auto cdLow = (U16<32>)zipLow(c, d), cdHigh = (U16<32>)zipHigh(c, d);
        auto r0 = (U8<32>)zipLow(abLow, cdLow), r1 = (U8<32>)zipHigh(abLow, cdLow);
        auto r2 = (U8<32>)zipLow(abHigh, cdHigh), r3 = (U8<32>)zipHigh(abHigh, cdHigh);
        store(p, lowBlocks(r0, r1));
        store(p + 32, lowBlocks(r2, r3));
        store(p + 64, highBlocks(r0, r1));
        store(p + 96, highBlocks(r2, r3));
    }

    static QEL_INLINE U8<32> shuffle(U8<32> v, const uint8_t* from)
    {
        return (U8<32>)_mm256_shuffle_epi8((__m256i)v, _mm256_load_si256((const __m256i*)from));
    }
    static QEL_INLINE U8<32> blend(U8<32> a, U8<32> b, const uint8_t* mask)
    {
        return (U8<32>)_mm256_blendv_epi8((__m256i)a, (__m256i)b, _mm256_load_si256((const __m256i*)mask));
    }
    // As in Simd<16>, with the first 48 bytes in the lower blocks and the second 48 in the upper ones.
    static QEL_INLINE void load3(const uint8_t* p, U8<32>& a, U8<32>& b, U8<32>& c)
    {
        auto m0 = load<U8<32>>(p), m1 = load<U8<32>>(p + 32), m2 = load<U8<32>>(p + 64);
        auto r0 = lowAndHigh(m0, m1), r2 = lowAndHigh(m1, m2);
        auto r1 = (U8<32>)_mm256_permute2x128_si256((__m256i)m0, (__m256i)m2, 0x21);
        auto& mask = kTriples.choose;
        a = shuffle(blend(blend(r0, r1, mask[2]), r2, mask[1]), kTriples.load[0]);
        b = shuffle(blend(blend(r0, r1, mask[0]), r2, mask[2]), kTriples.load[1]);
        c = shuffle(blend(blend(r0, r1, mask[1]), r2, mask[0]), kTriples.load[2]);
    }
    // Four triples for each block: their pairs (a, b) in its lower half, pairs (c, 0) in its upper one.
    template <int kSkip> static QEL_INLINE U64<32> fourTriples(const uint8_t* p)
    {
        auto low = _mm_loadu_si128((const __m128i*)(p - kSkip)),
             high = _mm_loadu_si128((const __m128i*)(p - kSkip + 48));
        auto both = (U8<32>)_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
        return (U64<32>)shuffle(both, kTriples.pairs[kSkip / 4]);
    }
    // The last load starts four bytes early, so as not to read behind the triples.
    static QEL_INLINE void loadPairs3(const uint8_t* p, U8<32>* ab, U8<32>* c1)
    {
        auto one = (U8<32>)(U16<32>{} + 256);
        U64<32> t0 = fourTriples<0>(p), t1 = fourTriples<0>(p + 12);
        U64<32> t2 = fourTriples<0>(p + 24), t3 = fourTriples<4>(p + 36);
        ab[0] = (U8<32>)zipLow(t0, t1), ab[1] = (U8<32>)zipLow(t2, t3);
        c1[0] = (U8<32>)zipHigh(t0, t1) | one, c1[1] = (U8<32>)zipHigh(t2, t3) | one;
    }
    static QEL_INLINE void store3(uint8_t* p, U8<32> a, U8<32> b, U8<32> c)
    {
        auto& mask = kTriples.choose;
        a = shuffle(a, kTriples.store[0]), b = shuffle(b, kTriples.store[1]), c = shuffle(c, kTriples.store[2]);
        auto r0 = blend(blend(a, b, mask[1]), c, mask[2]);
        auto r1 = blend(blend(a, b, mask[0]), c, mask[1]);
        auto r2 = blend(blend(a, b, mask[2]), c, mask[0]);
        store(p, lowBlocks(r0, r1));
        store(p + 32, lowAndHigh(r2, r0));
        store(p + 64, highBlocks(r1, r2));
    }

    template <class V> static QEL_INLINE void storePast(void* p, V v) { _mm256_stream_si256((__m256i*)p, (__m256i)v); }
    static QEL_INLINE void finishStores() { _mm_sfence(); }
};
#endif

#if defined(__AVX512VBMI__) && defined(__AVX512BW__)
// Where the bytes of interleaved triples come from, as indices into two registers (0 to 127) or into the third.
struct WideTriples {
    alignas(64) uint8_t load[3][64];  // load[c][i]: byte 3i + c of the three registers, modulo 128
    alignas(64) uint8_t store[3][64]; // store[k][j]: byte j of register k: pixel, plus 64 for the second channel
    uint64_t loadThird[3];            // where load takes the third register
    uint64_t storeThird[3];           // where store takes the third channel
};
constexpr WideTriples makeWideTriples()
{
    WideTriples t = {};
    for (int k = 0; k < 3; ++k)
        for (int i = 0; i < 64; ++i) {
            int from = 3 * i + k, to = 64 * k + i;
            t.load[k][i] = uint8_t(from % 128);
            t.loadThird[k] |= uint64_t(from >= 128) << i;
            t.store[k][i] = uint8_t(to / 3 + (to % 3 == 1 ? 64 : 0));
            t.storeThird[k] |= uint64_t(to % 3 == 2) << i;
        }
    return t;
}
constexpr WideTriples kWideTriples = makeWideTriples();

template <> struct Simd<64> : Interleaved<64, Simd<64>> {
    static QEL_INLINE S16<64> addSat(S16<64> a, S16<64> b)
    {
        return (S16<64>)_mm512_adds_epi16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE S16<64> subSat(S16<64> a, S16<64> b)
    {
        return (S16<64>)_mm512_subs_epi16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE U8<64> addSat(U8<64> a, U8<64> b) { return (U8<64>)_mm512_adds_epu8((__m512i)a, (__m512i)b); }
    static QEL_INLINE U8<64> subSat(U8<64> a, U8<64> b) { return (U8<64>)_mm512_subs_epu8((__m512i)a, (__m512i)b); }
    static QEL_INLINE U8<64> average(U8<64> a, U8<64> b) { return (U8<64>)_mm512_avg_epu8((__m512i)a, (__m512i)b); }
    static QEL_INLINE U8<64> least(U8<64> a, U8<64> b) { return (U8<64>)_mm512_min_epu8((__m512i)a, (__m512i)b); }
    static QEL_INLINE S16<64> least(S16<64> a, S16<64> b) { return (S16<64>)_mm512_min_epi16((__m512i)a, (__m512i)b); }
    static QEL_INLINE U8<64> greatest(U8<64> a, U8<64> b) { return (U8<64>)_mm512_max_epu8((__m512i)a, (__m512i)b); }
    static QEL_INLINE S16<64> greatest(S16<64> a, S16<64> b)
    {
        return (S16<64>)_mm512_max_epi16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE S16<64> mulHigh(S16<64> a, S16<64> b)
    {
        return (S16<64>)_mm512_mulhi_epi16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE U16<64> mulHigh(U16<64> a, U16<64> b)
    {
        return (U16<64>)_mm512_mulhi_epu16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE S16<64> mulRoundEven(S16<64> a, S16<64> b)
    {
        return evenTies((S16<64>)_mm512_mulhrs_epi16((__m512i)a, (__m512i)b), a * b);
    }
    static QEL_INLINE S32<64> mulAddPairs(S16<64> a, S16<64> b)
    {
        return (S32<64>)_mm512_madd_epi16((__m512i)a, (__m512i)b);
    }
    static QEL_INLINE S16<64> mulAddPairs(U8<64> a, S8<64> weights)
    {
        return (S16<64>)_mm512_maddubs_epi16((__m512i)a, (__m512i)weights);
    }
    static QEL_INLINE S16<64> pack(S32<64> a, S32<64> b) { return (S16<64>)_mm512_packs_epi32((__m512i)a, (__m512i)b); }
    static QEL_INLINE U8<64> packUnsigned(S16<64> a, S16<64> b)
    {
        return (U8<64>)_mm512_packus_epi16((__m512i)a, (__m512i)b);
    }
    template <class V> static QEL_INLINE V zipLow(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm512_unpacklo_epi8((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm512_unpacklo_epi16((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm512_unpacklo_epi32((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm512_unpacklo_epi64((__m512i)a, (__m512i)b);
    }
    template <class V> static QEL_INLINE V zipHigh(V a, V b)
    {
        if constexpr (sizeof(a[0]) == 1) return (V)_mm512_unpackhi_epi8((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 2) return (V)_mm512_unpackhi_epi16((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 4) return (V)_mm512_unpackhi_epi32((__m512i)a, (__m512i)b);
        if constexpr (sizeof(a[0]) == 8) return (V)_mm512_unpackhi_epi64((__m512i)a, (__m512i)b);
    }

    template <class V> static QEL_INLINE V inOrder(V v)
    {
        return (V)_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), (__m512i)v);
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

    template <class V> static QEL_INLINE void store2(uint8_t* p, V a, V b)
    {
        auto low = (__m512i)zipLow(a, b), high = (__m512i)zipHigh(a, b);
        store(p, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), high));
        store(p + 64, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), high));
    }
    static QEL_INLINE void store4(uint8_t* p, U8<64> a, U8<64> b, U8<64> c, U8<64> d)
    {
        auto abLow = (U16<64>)zipLow(a, b), abHigh = (U16<64>)zipHigh(a, b);
        auto cdLow = (U16<64>)zipLow(c, d), cdHigh = (U16<64>)zipHigh(c, d);
        auto r0 = (__m512i)zipLow(abLow, cdLow), r1 = (__m512i)zipHigh(abLow, cdLow);
        auto r2 = (__m512i)zipLow(abHigh, cdHigh), r3 = (__m512i)zipHigh(abHigh, cdHigh);
        // The 16-byte blocks of four registers, transposed.
        auto t0 = _mm512_shuffle_i32x4(r0, r1, 0x44), t1 = _mm512_shuffle_i32x4(r2, r3, 0x44);
        auto t2 = _mm512_shuffle_i32x4(r0, r1, 0xEE), t3 = _mm512_shuffle_i32x4(r2, r3, 0xEE);
        store(p, _mm512_shuffle_i32x4(t0, t1, 0x88));
        store(p + 64, _mm512_shuffle_i32x4(t0, t1, 0xDD));
        store(p + 128, _mm512_shuffle_i32x4(t2, t3, 0x88));
        store(p + 192, _mm512_shuffle_i32x4(t2, t3, 0xDD));
    }

    // Bytes of r0 and r1 by index, and where `third` has ones, of r2.
    static QEL_INLINE U8<64> gather3(U8<64> r0, U8<64> r1, U8<64> r2, const uint8_t* from, uint64_t third)
    {
        __m512i index = _mm512_load_si512(from);
        __m512i firstTwo = _mm512_permutex2var_epi8((__m512i)r0, index, (__m512i)r1);
        return (U8<64>)_mm512_mask_permutexvar_epi8(firstTwo, third, index, (__m512i)r2);
    }
    static QEL_INLINE void load3(const uint8_t* p, U8<64>& a, U8<64>& b, U8<64>& c)
    {
        auto r0 = load<U8<64>>(p), r1 = load<U8<64>>(p + 64), r2 = load<U8<64>>(p + 128);
        a = gather3(r0, r1, r2, kWideTriples.load[0], kWideTriples.loadThird[0]);
        b = gather3(r0, r1, r2, kWideTriples.load[1], kWideTriples.loadThird[1]);
        c = gather3(r0, r1, r2, kWideTriples.load[2], kWideTriples.loadThird[2]);
    }
    static QEL_INLINE void store3(uint8_t* p, U8<64> a, U8<64> b, U8<64> c)
    {
        store(p, gather3(a, b, c, kWideTriples.store[0], kWideTriples.storeThird[0]));
        store(p + 64, gather3(a, b, c, kWideTriples.store[1], kWideTriples.storeThird[1]));
        store(p + 128, gather3(a, b, c, kWideTriples.store[2], kWideTriples.storeThird[2]));
    }

    template <class V> static QEL_INLINE void storePast(void* p, V v) { _mm512_stream_si512((__m512i*)p, (__m512i)v); }
    static QEL_INLINE void finishStores() { _mm_sfence(); }
};
#endif

}
}
}
