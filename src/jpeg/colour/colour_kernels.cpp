// SPDX-License-Identifier: Apache-2.0
// Kernels of the colour conversion. Which arithmetic converts a pixel depends on its place in the row alone: groups of
// four (or eight) pixels use products in fixed point, what is left of the row the tables.
#include "jpeg/colour/colour.h"

#include "jpeg/colour/colour_sums.h"
#include "jpeg/colour/colour_tables.h"
#include "jpeg/colour/pixel_formats.h"

namespace qel::QEL_BUILD {
namespace {

// --- YCbCr to RGB, 14 fraction bits.

constexpr int kCrToRed = 22970, kCbToGreen = -5638, kCrToGreen = -11700, kCbToBlue = 29032;

// What is added before the shift: a half, moved a little in some members to centre the error.
struct Rounding {
    int red, green, blue;
};
constexpr Rounding kTuned = {8192 - 47, 8192 + 110, 8192 - 57};
constexpr Rounding kPlain = {8192, 8192, 8192};

template <Rounding kRounding> QEL_INLINE Triple<uint8_t> toRgb(Triple<uint8_t> ycc)
{
    int y = ycc.a, blue = ycc.b - 128, red = ycc.c - 128;
    return {clampToByte(y + ((kCrToRed * red + kRounding.red) >> 14)),
            clampToByte(y + ((kCbToGreen * blue + kCrToGreen * red + kRounding.green) >> 14)),
            clampToByte(y + ((kCbToBlue * blue + kRounding.blue) >> 14))};
}

// Not all of what follows is used where an element is a plain int.

// In registers sums have 16 bits, 6 of them fraction: Y comes as 64 * Y + kLumaBias, and a chroma c as 256 * c + low,
// so that the upper half of a product has 6 fraction bits and `low` stands for the rounding. There are only 256 such
// products: the one `low` that gives all of them is found, or refused, at compile time.
constexpr int kLumaBias = 25;

[[maybe_unused]] constexpr int lowByteFor(int factor, int rounding)
{
    for (int low = 0; low < 256; ++low) {
        bool isExact = true;
        for (int c = -128; c < 128; ++c) {
            int sum = kLumaBias + (((256 * c + low) * factor) >> 16);
            isExact = isExact && sum >> 6 == (factor * c + rounding) >> 14;
        }
        if (isExact) return low;
    }
    return -1;
}

// Green has two chroma terms, too dense for that: their exact sum is split at 8 bits into two sums of byte products,
// 256 * upper + lower. It is subtracted, so 255 turns rounding down into rounding up.
template <Rounding kRounding, int N> QEL_INLINE S16<N> greenChroma(U8<N> pairs)
{
    auto weigh = [&](int cb, int cr) { return Simd<N>::mulAddPairs((U8<N>)pairsOf<N>(cb, cr), (S8<N>)pairs); };
    S16<N> lower = weigh(-kCbToGreen & 255, -kCrToGreen & 255) - int16_t(kRounding.green - 256 * kLumaBias - 255);
    return weigh(-kCbToGreen >> 8, -kCrToGreen >> 8) + shiftByProduct<8, N>(lower);
}

template <Rounding kRounding, class V> QEL_INLINE Triple<V> toRgb(Triple<V> ycc)
{
    constexpr int N = sizeof(V);
    using Ops = Simd<N>;
    using Words = S16<N>;
    constexpr int lowRed = lowByteFor(kCrToRed, kRounding.red), lowBlue = lowByteFor(kCbToBlue, kRounding.blue);
    static_assert(lowRed >= 0 && lowBlue >= 0);
    V none = {}, y = ycc.a, cb = ycc.b ^ 128, cr = ycc.c ^ 128;

    auto scale = [](Words sum) { return shiftByProduct<6, N>(sum); };
    auto half = [&](auto zip) QEL_INLINE_BODY {
        auto times = [&](V chroma, int low, int factor) {
            return Ops::mulHigh((Words)zip(none + uint8_t(low), chroma), Words{} + int16_t(factor));
        };
        auto luma = (Words)shiftByProduct<2, N>((U16<N>)zip(none + uint8_t(4 * kLumaBias), y));
        return Triple<Words>{scale(luma + times(cr, lowRed, kCrToRed)),
                             scale(luma - greenChroma<kRounding, N>(zip(cb, cr))),
                             scale(luma + times(cb, lowBlue, kCbToBlue))};
    };
    auto low = half([](auto a, auto b) { return Ops::zipLow(a, b); });
    auto high = half([](auto a, auto b) { return Ops::zipHigh(a, b); });
    return {Ops::packUnsigned(low.a, high.a), Ops::packUnsigned(low.b, high.b), Ops::packUnsigned(low.c, high.c)};
}

QEL_INLINE Triple<uint8_t> toRgbByTables(Triple<uint8_t> ycc)
{
    auto [y, cb, cr] = ycc;
    return {clampToByte(y + cr_r_tbl[cr]), clampToByte(y + ((cb_g_tbl[cb] + cr_g_tbl[cr]) >> 16)),
            clampToByte(y + cb_b_tbl[cb])};
}

template <Rounding kRounding, class Store, class Pixels>
QEL_INLINE void rowToRgb(Planes3<const uint8_t> ycc, Pixels rgb, int width)
{
    ptrdiff_t i = walkGroupsInto<Store, 4>(rgb, 0, width, [=](auto lanes, ptrdiff_t at) QEL_INLINE_BODY {
        rgb.put(lanes, at, toRgb<kRounding>(ycc.get(lanes, at)));
    });
    for (Lanes<1> one; i < width; ++i) rgb.put(one, i, toRgbByTables(ycc.get(one, i)));
}

// --- RGB to YCbCr, 15 fraction bits.

// Destinations of a conversion from RGB: each converts what it holds.
struct ToYcc {
    Planes3<uint8_t> planes;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { planes.atAddresses(i, visit); }
    template <class Fixed> QEL_INLINE void put(auto lanes, ptrdiff_t i, auto rgb) const
    {
        planes.put(lanes, i, Triple{weigh<Fixed::kY>(rgb), weigh<Fixed::kCb>(rgb), weigh<Fixed::kCr>(rgb)});
    }
    QEL_INLINE void putByTables(ptrdiff_t i, Pixel rgb) const { planes.put(Lanes<1>(), i, yccByTables(rgb)); }
};
struct ToYcck {
    ToYcc ycc;
    uint8_t* k;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        ycc.atAddresses(i, visit);
        visit(k + i);
    }
    template <class Fixed> QEL_INLINE void put(auto lanes, ptrdiff_t i, auto inks) const
    {
        ycc.put<Fixed>(lanes, i, inks.rgb);
        lanes.store(k + i, inks.black);
    }
    QEL_INLINE void putByTables(ptrdiff_t i, auto inks) const
    {
        ycc.putByTables(i, inks.rgb);
        k[i] = inks.black;
    }
};
struct ToY {
    uint8_t* row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + i); }
    template <class Fixed> QEL_INLINE void put(auto lanes, ptrdiff_t i, auto rgb) const
    {
        lanes.store(row + i, weigh<Fixed::kY>(rgb));
    }
    QEL_INLINE void putByTables(ptrdiff_t i, Pixel rgb) const { row[i] = lumaByTables(rgb); }
};

template <class Fixed, int kGroup, class Store, class Pixels, class To>
QEL_INLINE ptrdiff_t groupsFromRgb(ptrdiff_t i, int width, Pixels pixels, To to)
{
    return walkGroupsInto<Store, kGroup>(to, i, width, [=](auto lanes, ptrdiff_t at) QEL_INLINE_BODY {
        to.template put<Fixed>(lanes, at, coloursAt(lanes, pixels, at));
    });
}

// kEights: runs of 8 pixels with 15 fraction bits come first.
template <bool kEights, class Store, class Pixels, class To> QEL_INLINE void rowFromRgb(Pixels pixels, To to, int width)
{
    ptrdiff_t i = 0;
    if constexpr (kEights) i = groupsFromRgb<Fixed15, 8, Store>(i, width, pixels, to);
    i = groupsFromRgb<Fixed14, 4, Store>(i, width, pixels, to);
    for (; i < width; ++i) to.putByTables(i, coloursAt(Lanes<1>(), pixels, i));
}

// --- CMYK is inverted RGB and a K that is passed on.

template <class Inks> struct ToInks {
    Inks inks;
    const uint8_t* k;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { inks.atAddresses(i, visit); }
    template <class V> QEL_INLINE void put(auto lanes, ptrdiff_t i, Triple<V> rgb) const
    {
        auto [c, m, y] = inverted(rgb);
        inks.put(lanes, i, Quad<V>{c, m, y, lanes.load(k + i)});
    }
};

// --- Rows by layout.

using From = const uint8_t*;
using To = uint8_t*;

template <class Pixels, class Store>
void yccToPixels(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* dst, int width)
{
    rowToRgb<kTuned, Store>({y, cb, cr}, Pixels{dst}, width);
}
template <class Pixels, class Store>
void yccToPacked(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint16_t* dst, int width)
{
    rowToRgb<kTuned, Store>({y, cb, cr}, Pixels{(uint8_t*)dst}, width);
}
template <class Store>
void yccToPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r, uint8_t* g, uint8_t* b, int width)
{
    rowToRgb<kPlain, Store>({y, cb, cr}, Planes3<uint8_t>{r, g, b}, width);
}
template <class Store> void ycckToPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, const uint8_t* k,
                                         uint8_t* cyan, uint8_t* magenta, uint8_t* yellow, uint8_t* black, int width)
{
    Planes4<uint8_t> inks = {cyan, magenta, yellow, black};
    rowToRgb<kPlain, Store>({y, cb, cr}, ToInks<Planes4<uint8_t>>{inks, k}, width);
}
template <class Store>
void ycckToPixels(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, const uint8_t* k, uint8_t* dst, int width)
{
    rowToRgb<kPlain, Store>({y, cb, cr}, ToInks<Cmyk32<To>>{{dst}, k}, width);
}

template <class Store>
void planesToYcc(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<true, Store>(Planes3<const uint8_t>{r, g, b}, ToYcc{{y, cb, cr}}, width);
}
template <class Pixels, class Store>
void pixelsToYcc(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<true, Store>(Pixels{src}, ToYcc{{y, cb, cr}}, width);
}
template <class Pixels, class Store>
void packedToYcc(const uint16_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<false, Store>(Pixels{(const uint8_t*)src}, ToYcc{{y, cb, cr}}, width);
}
template <class Store> void planesToYcck(const uint8_t* cyan, const uint8_t* magenta, const uint8_t* yellow,
                                         const uint8_t* black, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k,
                                         int width)
{
    rowFromRgb<false, Store>(Planes4<const uint8_t>{cyan, magenta, yellow, black}, ToYcck{{{y, cb, cr}}, k}, width);
}
template <class Store>
void pixelsToYcck(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k, int width)
{
    rowFromRgb<false, Store>(Cmyk32<From>{src}, ToYcck{{{y, cb, cr}}, k}, width);
}
template <class Store> void planesToY(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* y, int width)
{
    rowFromRgb<false, Store>(Planes3<const uint8_t>{r, g, b}, ToY{y}, width);
}
template <class Pixels, class Store> void pixelsToY(const uint8_t* src, uint8_t* y, int width)
{
    rowFromRgb<false, Store>(Pixels{src}, ToY{y}, width);
}

constexpr ColourKernels kKernels = {
    .yccToRgb = {yccToPixels<Rgb24<To>, Cached>, yccToPixels<Rgb24<To>, Streamed>},
    .yccToBgr = {yccToPixels<Bgr24<To>, Cached>, yccToPixels<Bgr24<To>, Streamed>},
    .yccToRgbPlanes = {yccToPlanes<Cached>, yccToPlanes<Streamed>},
    .yccToRgb555 = {yccToPacked<Rgb555<To>, Cached>, yccToPacked<Rgb555<To>, Streamed>},
    .yccToBgr555 = {yccToPacked<Bgr555<To>, Cached>, yccToPacked<Bgr555<To>, Streamed>},
    .yccToRgb565 = {yccToPacked<Rgb565<To>, Cached>, yccToPacked<Rgb565<To>, Streamed>},
    .yccToBgr565 = {yccToPacked<Bgr565<To>, Cached>, yccToPacked<Bgr565<To>, Streamed>},
    .ycckToCmykPlanes = {ycckToPlanes<Cached>, ycckToPlanes<Streamed>},
    .ycckToCmyk = {ycckToPixels<Cached>, ycckToPixels<Streamed>},
    .rgbPlanesToYcc = {planesToYcc<Cached>, planesToYcc<Streamed>},
    .rgbToYcc = {pixelsToYcc<Rgb24<From>, Cached>, pixelsToYcc<Rgb24<From>, Streamed>},
    .bgrToYcc = {pixelsToYcc<Bgr24<From>, Cached>, pixelsToYcc<Bgr24<From>, Streamed>},
    .rgb555ToYcc = {packedToYcc<Rgb555<From>, Cached>, packedToYcc<Rgb555<From>, Streamed>},
    .bgr555ToYcc = {packedToYcc<Bgr555<From>, Cached>, packedToYcc<Bgr555<From>, Streamed>},
    .rgb565ToYcc = {packedToYcc<Rgb565<From>, Cached>, packedToYcc<Rgb565<From>, Streamed>},
    .bgr565ToYcc = {packedToYcc<Bgr565<From>, Cached>, packedToYcc<Bgr565<From>, Streamed>},
    .cmykPlanesToYcck = {planesToYcck<Cached>, planesToYcck<Streamed>},
    .cmykToYcck = {pixelsToYcck<Cached>, pixelsToYcck<Streamed>},
    .rgbPlanesToY = {planesToY<Cached>, planesToY<Streamed>},
    .rgbToY = {pixelsToY<Rgb24<From>, Cached>, pixelsToY<Rgb24<From>, Streamed>},
    .bgrToY = {pixelsToY<Bgr24<From>, Cached>, pixelsToY<Bgr24<From>, Streamed>},
};

}
}

const qel::ColourKernels qel::ColourKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
