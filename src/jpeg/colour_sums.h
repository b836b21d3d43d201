// The weighted sums that make Y, Cb and Cr from pixels: of one by tables, and with 15 fraction bits of any number,
// weigh<Fixed15::kY>(coloursAt<V>(pixels, i)).
#pragma once

#include "jpeg/colour_tables.h"
#include "jpeg/pixel_formats.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// v >> kBits. Shuffles keep the ports busy that shift; the multipliers have time.
template <int kBits, int N, class V> QEL_INLINE V shiftByProduct(V v)
{
    constexpr uint16_t factor = 1 << (16 - kBits);
    return Simd<N>::mulHigh(v, (V)(U16<N>{} + factor));
}

QEL_INLINE uint8_t clampToByte(int v) { return clampTo<uint8_t>(v, 0, 255); }

QEL_INLINE uint8_t sumOfTerms(uint8_t r, uint8_t g, uint8_t b, ColourTerm red, ColourTerm green, ColourTerm blue)
{
    return uint8_t((cc_table[red + r] + cc_table[green + g] + cc_table[blue + b]) >> 16);
}
QEL_INLINE uint8_t lumaByTables(uint8_t r, uint8_t g, uint8_t b)
{
    return sumOfTerms(r, g, b, kRedToY, kGreenToY, kBlueToY);
}
QEL_INLINE uint8_t blueByTables(uint8_t r, uint8_t g, uint8_t b)
{
    return sumOfTerms(r, g, b, kRedToCb, kGreenToCb, kBlueToCb);
}
QEL_INLINE uint8_t redByTables(uint8_t r, uint8_t g, uint8_t b)
{
    return sumOfTerms(r, g, b, kRedToCr, kGreenToCr, kBlueToCr);
}

// The factors of one sum, the rounding term, and the offset of the result.
struct Weights {
    int red, green, blue, rounding, offset;
};
struct Fixed15 {
    static constexpr Weights kY = {9798, 19235, 3736, 16266, 0};
    static constexpr Weights kCb = {-5529, -10855, 16384, 16384, 128};
    static constexpr Weights kCr = {16384, -13720, -2664, 16400, 128};
};
// Factors of 14 bits, doubled.
struct Fixed14 {
    static constexpr Weights kY = {2 * 4899, 2 * 9617, 2 * 1868, 2 * 8192, 0};
    static constexpr Weights kCb = {2 * -2764, 2 * -5428, 2 * 8192, 2 * 8192, 128};
    static constexpr Weights kCr = {2 * 8192, 2 * -6860, 2 * -1332, 2 * 8192, 128};
};

// Pixels as the sums want them: one by its colours, or a register full, half by half. Pairs are (red, green) and
// (blue, 1), with red and blue exchanged in Pairs<V, true>. Packed pixels come in 16-bit lanes, times 16.
struct Single {
    uint8_t r, g, b;
};
template <class V, bool kIsBgr> struct Pairs {
    typename V::Type firstTwo[2], thirdOne[2];
};
template <int N> struct Differences {
    S16<N> green[2], greenLessRed[2], blueLessGreen[2];
};

// Inks as the RGB that they leave, beside the black one.
template <class Colours, class S> struct Inks {
    Colours rgb;
    S black;
};

template <class Pixels> [[maybe_unused]] constexpr bool kIsRgb24 = false;
template <class Pixels> [[maybe_unused]] constexpr bool kIsBgr24 = false;
template <class T> [[maybe_unused]] constexpr bool kIsRgb24<Rgb24<T>> = true;
template <class T> [[maybe_unused]] constexpr bool kIsBgr24<Bgr24<T>> = true;
template <class Pixels> [[maybe_unused]] constexpr bool kIsPacked = false;
template <int kGreenBits, class T> [[maybe_unused]] constexpr bool kIsPacked<Rgb16<kGreenBits, T>> = true;
template <int kGreenBits, class T> [[maybe_unused]] constexpr bool kIsPacked<Bgr16<kGreenBits, T>> = true;

template <class V, class Pixels> QEL_INLINE auto differencesAt(Pixels pixels, ptrdiff_t i)
{
    constexpr int N = sizeof(typename V::Type);
    U16<N> r[2], g[2], b[2];
    pixels.template getWords<V>(i, r, g, b);
    auto half = [](U16<N> v) { return (S16<N>)v; };
    return Differences<N>{
        {half(g[0]), half(g[1])}, {half(g[0] - r[0]), half(g[1] - r[1])}, {half(b[0] - g[0]), half(b[1] - g[1])}};
}

template <class V, class S> QEL_INLINE Pairs<V, false> pairsOfColours(S r, S g, S b)
{
    using Ops = Simd<sizeof r>;
    S one = S{} + 1;
    return {{Ops::zipLow(r, g), Ops::zipHigh(r, g)}, {Ops::zipLow(b, one), Ops::zipHigh(b, one)}};
}

template <class V, class Pixels> QEL_INLINE auto coloursAt(Pixels pixels, ptrdiff_t i)
{
    typename V::Type r, g, b;
    if constexpr (V::kCount == 1) {
        pixels.template get<V>(i, r, g, b);
        return Single{r, g, b};
    } else if constexpr (kIsPacked<Pixels>) {
        return differencesAt<V>(pixels, i);
    } else if constexpr (kIsRgb24<Pixels> || kIsBgr24<Pixels>) {
        Pairs<V, kIsBgr24<Pixels>> pairs;
        V::loadPairs3(pixels.row + 3 * i, pairs.firstTwo, pairs.thirdOne);
        return pairs;
    } else {
        pixels.template get<V>(i, r, g, b);
        return pairsOfColours<V>(r, g, b);
    }
}
template <class V, class T> QEL_INLINE auto coloursAt(Planes4<T> inks, ptrdiff_t i)
{
    using S = typename V::Type;
    S c, m, y, k;
    inks.template get<V>(i, c, m, y, k);
    if constexpr (V::kCount == 1)
        return Inks<Single, S>{{S(~c), S(~m), S(~y)}, k};
    else
        return Inks<Pairs<V, false>, S>{pairsOfColours<V>(~c, ~m, ~y), k};
}
template <class V, class Row> QEL_INLINE auto coloursAt(Cmyk32<Row> inks, ptrdiff_t i)
{
    using S = typename V::Type;
    if constexpr (V::kCount == 1) {
        S c, m, y, k;
        inks.template get<V>(i, c, m, y, k);
        return Inks<Single, S>{{S(~c), S(~m), S(~y)}, k};
    } else {
        constexpr int N = sizeof(S);
        Inks<Pairs<V, false>, S> pairs;
        auto& [firstTwo, thirdOne] = pairs.rgb;
        V::loadPairs4(inks.row + 4 * i, firstTwo, thirdOne, pairs.black);
        for (int k = 0; k < 2; ++k) firstTwo[k] = ~firstTwo[k], thirdOne[k] ^= (S)pairsOf<N>(255, 0);
        return pairs;
    }
}

template <Weights kWeights> QEL_INLINE uint8_t weigh(Single p)
{
    int sum = kWeights.red * p.r + kWeights.green * p.g + kWeights.blue * p.b + kWeights.rounding;
    return clampToByte((sum >> 15) + kWeights.offset);
}

// A factor as 256 * upperByte + lowerByte, both signed.
constexpr int upperByte(int factor) { return (factor + 128) >> 8; }
[[maybe_unused]] constexpr int lowerByte(int factor) { return factor - 256 * upperByte(factor); }

// Half a register of pairs in 16 bits: two sums of byte products, and the 15 bits below the result cut off.
template <int kFirst, int kSecond, int kThird, int kRounding, int kOffset, int N>
QEL_INLINE S16<N> weighHalf(U8<N> firstTwo, U8<N> thirdOne)
{
    using Ops = Simd<N>;
    S16<N> lower = Ops::mulAddPairs(firstTwo, pairsOf<N>(lowerByte(kFirst), lowerByte(kSecond)));
    if constexpr (lowerByte(kThird) != 0 || lowerByte(kRounding) != 0)
        lower += Ops::mulAddPairs(thirdOne, pairsOf<N>(lowerByte(kThird), lowerByte(kRounding)));
    S16<N> upper = Ops::mulAddPairs(firstTwo, pairsOf<N>(upperByte(kFirst), upperByte(kSecond))) +
                   Ops::mulAddPairs(thirdOne, pairsOf<N>(upperByte(kThird), upperByte(kRounding)));
    upper += shiftByProduct<8, N>(lower);
    if constexpr (kOffset != 0) upper += int16_t(kOffset << 7);
    return (S16<N>)((U16<N>)upper >> 7);
}

template <Weights w, class V, bool kIsBgr> QEL_INLINE typename V::Type weigh(Pairs<V, kIsBgr> p)
{
    constexpr int N = sizeof(typename V::Type), first = kIsBgr ? w.blue : w.red, third = kIsBgr ? w.red : w.blue;
    auto half = [&](int k) {
        return weighHalf<first, w.green, third, w.rounding, w.offset, N>(p.firstTwo[k], p.thirdOne[k]);
    };
    return Simd<N>::packUnsigned(half(0), half(1));
}

// The factors of luma add up to one and those of chroma to nothing, so that differences take two factors and not three.
// One of these is a half in chroma, and the upper 16 bits of one product are enough. Sums keep 4 fraction bits in luma
// and 5 in chroma: all that is added afterwards is a multiple of that, so nothing that was cut off reaches the result.
template <Weights w, int N> QEL_INLINE S16<N> weighHalf(S16<N> green, S16<N> greenLessRed, S16<N> blueLessGreen)
{
    using Ops = Simd<N>;
    constexpr int kHalf = 1 << 14;
    if constexpr (w.offset == 0) {
        static_assert(w.red + w.green + w.blue == 2 * kHalf);
        auto factors = (S16<N>)(U32<N>{} + (uint32_t(2 * w.blue) << 16 | uint16_t(-2 * w.red)));
        auto sum = [=](S16<N> pairs) { return Ops::mulAddPairs(pairs, factors) >> 16; };
        S16<N> terms =
            Ops::pack(sum(Ops::zipLow(greenLessRed, blueLessGreen)), sum(Ops::zipHigh(greenLessRed, blueLessGreen)));
        return (terms + green + int16_t(w.rounding >> 11)) >> 4;
    } else {
        static_assert(w.red + w.green + w.blue == 0 && (w.blue == kHalf || w.red == kHalf));
        auto times = [](S16<N> v, int factor) { return Ops::mulHigh(v, S16<N>{} + int16_t(factor)); };
        S16<N> terms = w.blue == kHalf ? times(greenLessRed, -4 * w.red) + blueLessGreen
                                       : times(blueLessGreen, 4 * w.blue) - greenLessRed;
        return (terms + int16_t((w.offset << 5) + (w.rounding >> 10))) >> 5;
    }
}

template <Weights w, int N> QEL_INLINE U8<N> weigh(Differences<N> p)
{
    auto half = [&](int k) { return weighHalf<w, N>(p.green[k], p.greenLessRed[k], p.blueLessGreen[k]); };
    return Simd<N>::packUnsigned(half(0), half(1));
}

}
}
}
