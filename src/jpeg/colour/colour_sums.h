// SPDX-License-Identifier: Apache-2.0
// The weighted sums that make Y, Cb and Cr from pixels: of one by tables, and with 15 fraction bits of any number,
// weigh<Fixed15::kY>(coloursAt(lanes, pixels, i)).
#pragma once

#include "jpeg/colour/colour_tables.h"
#include "jpeg/colour/pixel_formats.h"

namespace qel::QEL_BUILD {
namespace {

// v >> kBits. Shuffles keep the ports busy that shift; the multipliers have time.
template <int kBits, int N, class V> QEL_INLINE V shiftByProduct(V v)
{
    constexpr uint16_t factor = 1 << (16 - kBits);
    return Simd<N>::mulHigh(v, (V)(U16<N>{} + factor));
}

QEL_INLINE uint8_t clampToByte(int v) { return clampTo<uint8_t>(v, 0, 255); }

// Y, or Y, Cb and Cr, of one pixel by tables.
QEL_INLINE uint8_t sumOfTerms(Triple<uint8_t> rgb, ColourTerm red, ColourTerm green, ColourTerm blue)
{
    return uint8_t((cc_table[red + rgb.a] + cc_table[green + rgb.b] + cc_table[blue + rgb.c]) >> 16);
}
QEL_INLINE uint8_t lumaByTables(Triple<uint8_t> rgb) { return sumOfTerms(rgb, kRedToY, kGreenToY, kBlueToY); }
QEL_INLINE Triple<uint8_t> yccByTables(Triple<uint8_t> rgb)
{
    return {lumaByTables(rgb), sumOfTerms(rgb, kRedToCb, kGreenToCb, kBlueToCb),
            sumOfTerms(rgb, kRedToCr, kGreenToCr, kBlueToCr)};
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
// (blue, 1), with red and blue exchanged if kIsBgr. Packed pixels come in 16-bit lanes, times 16.
using Pixel = Triple<uint8_t>;
template <class V, bool kIsBgr> struct Pairs : ThreeAsPairs<V> {};
template <int N> struct Differences {
    S16<N> green[2], greenLessRed[2], blueLessGreen[2];
};
// Inks as the RGB that they leave, beside the black one.
template <class Colours, class V> struct Inks {
    Colours rgb;
    V black;
};

template <class V> QEL_INLINE Pairs<V, false> pairsOfColours(Triple<V> rgb)
{
    using Ops = Simd<sizeof(V)>;
    auto [r, g, b] = rgb;
    V one = V{} + 1;
    return {{{Ops::zipLow(r, g), Ops::zipHigh(r, g)}, {Ops::zipLow(b, one), Ops::zipHigh(b, one)}}};
}

template <class V> QEL_INLINE Triple<V> inverted(Triple<V> v) { return {inverted(v.a), inverted(v.b), inverted(v.c)}; }

// The colours of the pixels from i on, by their format: one pixel, or in registers.
QEL_INLINE Pixel coloursAt(Single auto lanes, auto pixels, ptrdiff_t i) { return pixels.get(lanes, i); }
template <class Inkwell> QEL_INLINE auto inksAt(Single auto lanes, Inkwell pixels, ptrdiff_t i)
{
    auto [c, m, y, k] = pixels.get(lanes, i);
    return Inks<Pixel, uint8_t>{inverted(Pixel{c, m, y}), k};
}
template <class T> QEL_INLINE auto coloursAt(Single auto lanes, Planes4<T> pixels, ptrdiff_t i)
{
    return inksAt(lanes, pixels, i);
}
template <class T> QEL_INLINE auto coloursAt(Single auto lanes, Cmyk32<T> pixels, ptrdiff_t i)
{
    return inksAt(lanes, pixels, i);
}

template <class T> QEL_INLINE auto coloursAt(Several auto lanes, Planes3<T> pixels, ptrdiff_t i)
{
    return pairsOfColours(pixels.get(lanes, i));
}
template <class T> QEL_INLINE auto coloursAt(Several auto lanes, Rgb24<T> pixels, ptrdiff_t i)
{
    auto pairs = lanes.loadPairs3(pixels.row + 3 * i);
    return Pairs<typename decltype(lanes)::Bytes, false>{pairs};
}
template <class T> QEL_INLINE auto coloursAt(Several auto lanes, Bgr24<T> pixels, ptrdiff_t i)
{
    auto pairs = lanes.loadPairs3(pixels.row + 3 * i);
    return Pairs<typename decltype(lanes)::Bytes, true>{pairs};
}
template <Several L, class Packed> QEL_INLINE auto differencesAt(L lanes, Packed pixels, ptrdiff_t i)
{
    using V = S16<L::kBytes>;
    auto [p, q] = pixels.getWords(lanes, i);
    return Differences<L::kBytes>{{(V)p.b, (V)q.b}, {(V)(p.b - p.a), (V)(q.b - q.a)}, {(V)(p.c - p.b), (V)(q.c - q.b)}};
}
template <int kGreenBits, class T>
QEL_INLINE auto coloursAt(Several auto lanes, Rgb16<kGreenBits, T> pixels, ptrdiff_t i)
{
    return differencesAt(lanes, pixels, i);
}
template <int kGreenBits, class T>
QEL_INLINE auto coloursAt(Several auto lanes, Bgr16<kGreenBits, T> pixels, ptrdiff_t i)
{
    return differencesAt(lanes, pixels, i);
}
template <class T> QEL_INLINE auto coloursAt(Several auto lanes, Planes4<T> pixels, ptrdiff_t i)
{
    auto [c, m, y, k] = pixels.get(lanes, i);
    auto pairs = pairsOfColours(inverted(Triple{c, m, y}));
    return Inks<decltype(pairs), decltype(k)>{pairs, k};
}
template <class T> QEL_INLINE auto coloursAt(Several auto lanes, Cmyk32<T> pixels, ptrdiff_t i)
{
    using V = typename decltype(lanes)::Bytes;
    auto [pairs, black] = lanes.loadPairs4(pixels.row + 4 * i);
    for (int k = 0; k < 2; ++k) {
        pairs.ab[k] = inverted(pairs.ab[k]);
        pairs.c1[k] ^= (V)pairsOf<sizeof(V)>(255, 0);
    }
    return Inks<Pairs<V, false>, V>{{pairs}, black};
}

template <Weights kWeights> QEL_INLINE uint8_t weigh(Pixel p)
{
    int sum = kWeights.red * p.a + kWeights.green * p.b + kWeights.blue * p.c + kWeights.rounding;
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

template <Weights w, class V, bool kIsBgr> QEL_INLINE V weigh(Pairs<V, kIsBgr> p)
{
    constexpr int N = sizeof(V), first = kIsBgr ? w.blue : w.red, third = kIsBgr ? w.red : w.blue;
    auto half = [&](int k) QEL_INLINE_BODY {
        return weighHalf<first, w.green, third, w.rounding, w.offset, N>(p.ab[k], p.c1[k]);
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
        auto factors = wordPairsOf<N>(-2 * w.red, 2 * w.blue);
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
    auto half = [&](int k)
                    QEL_INLINE_BODY { return weighHalf<w, N>(p.green[k], p.greenLessRed[k], p.blueLessGreen[k]); };
    return Simd<N>::packUnsigned(half(0), half(1));
}

}
}
