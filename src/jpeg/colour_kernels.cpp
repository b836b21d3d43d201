// Kernels of the colour conversion. Which arithmetic converts a pixel depends on its place in the row alone: groups of
// four (or eight) pixels use products in fixed point, what is left of the row the tables.
#include "jpeg/colour.h"

#include "jpeg/colour_sums.h"
#include "jpeg/colour_tables.h"
#include "jpeg/pixel_formats.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// --- YCbCr to RGB, 14 fraction bits.

constexpr int kCrToRed = 22970, kCbToGreen = -5638, kCrToGreen = -11700, kCbToBlue = 29032;

// What is added before the shift: a half, moved a little in some members to centre the error.
struct Rounding {
    int red, green, blue;
};
constexpr Rounding kTuned = {8192 - 47, 8192 + 110, 8192 - 57};
constexpr Rounding kPlain = {8192, 8192, 8192};

template <Rounding kRounding>
QEL_INLINE void toRgb(Lane, uint8_t y, uint8_t cb, uint8_t cr, uint8_t& r, uint8_t& g, uint8_t& b)
{
    int blue = cb - 128, red = cr - 128;
    r = clampToByte(y + ((kCrToRed * red + kRounding.red) >> 14));
    g = clampToByte(y + ((kCbToGreen * blue + kCrToGreen * red + kRounding.green) >> 14));
    b = clampToByte(y + ((kCbToBlue * blue + kRounding.blue) >> 14));
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

template <Rounding kRounding, int N>
QEL_INLINE void toRgb(Samples<N>, U8<N> y, U8<N> cb, U8<N> cr, U8<N>& r, U8<N>& g, U8<N>& b)
{
    using Ops = Simd<N>;
    constexpr int lowRed = lowByteFor(kCrToRed, kRounding.red), lowBlue = lowByteFor(kCbToBlue, kRounding.blue);
    static_assert(lowRed >= 0 && lowBlue >= 0);
    U8<N> none = {};
    cb ^= 128, cr ^= 128;

    auto scale = [](S16<N> sum) { return shiftByProduct<6, N>(sum); };
    auto half = [&](auto zip, S16<N>& red, S16<N>& green, S16<N>& blue) {
        auto luma = (S16<N>)shiftByProduct<2, N>((U16<N>)zip(none + uint8_t(4 * kLumaBias), y));
        red = scale(luma + Ops::mulHigh((S16<N>)zip(none + uint8_t(lowRed), cr), S16<N>{} + int16_t(kCrToRed)));
        green = scale(luma - greenChroma<kRounding, N>(zip(cb, cr)));
        blue = scale(luma + Ops::mulHigh((S16<N>)zip(none + uint8_t(lowBlue), cb), S16<N>{} + int16_t(kCbToBlue)));
    };
    S16<N> redLow, greenLow, blueLow, redHigh, greenHigh, blueHigh;
    half([](auto low, auto high) { return Ops::zipLow(low, high); }, redLow, greenLow, blueLow);
    half([](auto low, auto high) { return Ops::zipHigh(low, high); }, redHigh, greenHigh, blueHigh);
    r = Ops::packUnsigned(redLow, redHigh);
    g = Ops::packUnsigned(greenLow, greenHigh);
    b = Ops::packUnsigned(blueLow, blueHigh);
}

QEL_INLINE void toRgbByTables(uint8_t y, uint8_t cb, uint8_t cr, uint8_t& r, uint8_t& g, uint8_t& b)
{
    r = clampToByte(y + cr_r_tbl[cr]);
    g = clampToByte(y + ((cb_g_tbl[cb] + cr_g_tbl[cr]) >> 16));
    b = clampToByte(y + cb_b_tbl[cb]);
}

// Groups of a row whose output goes into the caches, or past them.
template <int kGroup, bool kPast, class Body, class To>
QEL_INLINE ptrdiff_t groups(ptrdiff_t i, int width, To to, Body body)
{
    if constexpr (kPast)
        return inGroupsPastCaches<kGroup>(i, width, to, body);
    else
        return inGroups<kGroup>(i, width, body);
}

template <Rounding kRounding, bool kPast, class Pixels>
QEL_INLINE void rowToRgb(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, Pixels pixels, int width)
{
    Planes3<const uint8_t> planes = {y, cb, cr};
    ptrdiff_t i = groups<4, kPast>(0, width, pixels, [=](auto samples, ptrdiff_t at) QEL_INLINE_BODY {
        using V = decltype(samples);
        typename V::Type a, b, c, red, green, blue;
        planes.get<V>(at, a, b, c);
        toRgb<kRounding>(samples, a, b, c, red, green, blue);
        pixels.template put<V>(at, red, green, blue);
    });
    for (; i < width; ++i) {
        uint8_t red, green, blue;
        toRgbByTables(y[i], cb[i], cr[i], red, green, blue);
        pixels.template put<Lane>(i, red, green, blue);
    }
}

// --- RGB to YCbCr, 15 fraction bits.

// Destinations of a conversion from RGB: each converts what it holds.
struct ToYcc {
    Planes3<uint8_t> planes;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { planes.atAddresses(i, visit); }
    template <class V, class Fixed, class Colours> QEL_INLINE void put(ptrdiff_t i, Colours rgb) const
    {
        planes.put<V>(i, weigh<Fixed::kY>(rgb), weigh<Fixed::kCb>(rgb), weigh<Fixed::kCr>(rgb));
    }
    QEL_INLINE void putByTables(ptrdiff_t i, Single p) const
    {
        planes.put<Lane>(i, lumaByTables(p.r, p.g, p.b), blueByTables(p.r, p.g, p.b), redByTables(p.r, p.g, p.b));
    }
};
struct ToYcck {
    ToYcc ycc;
    uint8_t* k;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        ycc.atAddresses(i, visit), visit(k + i);
    }
    template <class V, class Fixed, class Inks> QEL_INLINE void put(ptrdiff_t i, Inks inks) const
    {
        ycc.put<V, Fixed>(i, inks.rgb), V::store(k + i, inks.black);
    }
    template <class Inks> QEL_INLINE void putByTables(ptrdiff_t i, Inks inks) const
    {
        ycc.putByTables(i, inks.rgb), k[i] = inks.black;
    }
};
struct ToY {
    uint8_t* row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + i); }
    template <class V, class Fixed, class Colours> QEL_INLINE void put(ptrdiff_t i, Colours rgb) const
    {
        V::store(row + i, weigh<Fixed::kY>(rgb));
    }
    QEL_INLINE void putByTables(ptrdiff_t i, Single p) const { row[i] = lumaByTables(p.r, p.g, p.b); }
};

template <class Fixed, int kGroup, bool kPast, class Pixels, class To>
QEL_INLINE ptrdiff_t groupsFromRgb(ptrdiff_t i, int width, Pixels pixels, To to)
{
    return groups<kGroup, kPast>(i, width, to, [=](auto samples, ptrdiff_t at) QEL_INLINE_BODY {
        using V = decltype(samples);
        to.template put<V, Fixed>(at, coloursAt<V>(pixels, at));
    });
}

// kEights: runs of 8 pixels with 15 fraction bits come first.
template <bool kEights, bool kPast, class Pixels, class To> QEL_INLINE void rowFromRgb(Pixels pixels, To to, int width)
{
    ptrdiff_t i = 0;
    if constexpr (kEights) i = groupsFromRgb<Fixed15, 8, kPast>(i, width, pixels, to);
    i = groupsFromRgb<Fixed14, 4, kPast>(i, width, pixels, to);
    for (; i < width; ++i) to.putByTables(i, coloursAt<Lane>(pixels, i));
}

// --- CMYK is inverted RGB and a K that is passed on.

template <class Inks> struct ToInks {
    Inks inks;
    const uint8_t* k;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { inks.atAddresses(i, visit); }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S r, S g, S b) const
    {
        inks.template put<V>(i, S(~r), S(~g), S(~b), V::load(k + i));
    }
};

// --- Rows by layout.

using From = const uint8_t*;
using To = uint8_t*;

template <class Pixels, bool kPast>
void yccToPixels(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* dst, int width)
{
    rowToRgb<kTuned, kPast>(y, cb, cr, Pixels{dst}, width);
}
template <class Pixels, bool kPast>
void yccToPacked(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint16_t* dst, int width)
{
    rowToRgb<kTuned, kPast>(y, cb, cr, Pixels{(uint8_t*)dst}, width);
}
template <bool kPast>
void yccToPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r, uint8_t* g, uint8_t* b, int width)
{
    rowToRgb<kPlain, kPast>(y, cb, cr, Planes3<uint8_t>{r, g, b}, width);
}
template <bool kPast> void ycckToPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, const uint8_t* k,
                                        uint8_t* cyan, uint8_t* magenta, uint8_t* yellow, uint8_t* black, int width)
{
    Planes4<uint8_t> inks = {cyan, magenta, yellow, black};
    rowToRgb<kPlain, kPast>(y, cb, cr, ToInks<Planes4<uint8_t>>{inks, k}, width);
}
template <bool kPast>
void ycckToPixels(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, const uint8_t* k, uint8_t* dst, int width)
{
    rowToRgb<kPlain, kPast>(y, cb, cr, ToInks<Cmyk32<To>>{{dst}, k}, width);
}

template <bool kPast>
void planesToYcc(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<true, kPast>(Planes3<const uint8_t>{r, g, b}, ToYcc{{y, cb, cr}}, width);
}
template <class Pixels, bool kPast>
void pixelsToYcc(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<true, kPast>(Pixels{src}, ToYcc{{y, cb, cr}}, width);
}
template <class Pixels, bool kPast>
void packedToYcc(const uint16_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width)
{
    rowFromRgb<false, kPast>(Pixels{(const uint8_t*)src}, ToYcc{{y, cb, cr}}, width);
}
template <bool kPast> void planesToYcck(const uint8_t* cyan, const uint8_t* magenta, const uint8_t* yellow,
                                        const uint8_t* black, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k,
                                        int width)
{
    rowFromRgb<false, kPast>(Planes4<const uint8_t>{cyan, magenta, yellow, black}, ToYcck{{{y, cb, cr}}, k}, width);
}
template <bool kPast> void pixelsToYcck(const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k, int width)
{
    rowFromRgb<false, kPast>(Cmyk32<From>{src}, ToYcck{{{y, cb, cr}}, k}, width);
}
template <bool kPast> void planesToY(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* y, int width)
{
    rowFromRgb<false, kPast>(Planes3<const uint8_t>{r, g, b}, ToY{y}, width);
}
template <class Pixels, bool kPast> void pixelsToY(const uint8_t* src, uint8_t* y, int width)
{
    rowFromRgb<false, kPast>(Pixels{src}, ToY{y}, width);
}

template <bool kPast> constexpr ColourKernels makeTable(const ColourKernels* past)
{
    return {
        .yccToRgb = yccToPixels<Rgb24<To>, kPast>,
        .yccToBgr = yccToPixels<Bgr24<To>, kPast>,
        .yccToRgbPlanes = yccToPlanes<kPast>,
        .yccToRgb555 = yccToPacked<Rgb555<To>, kPast>,
        .yccToBgr555 = yccToPacked<Bgr555<To>, kPast>,
        .yccToRgb565 = yccToPacked<Rgb565<To>, kPast>,
        .yccToBgr565 = yccToPacked<Bgr565<To>, kPast>,
        .ycckToCmykPlanes = ycckToPlanes<kPast>,
        .ycckToCmyk = ycckToPixels<kPast>,
        .rgbPlanesToYcc = planesToYcc<kPast>,
        .rgbToYcc = pixelsToYcc<Rgb24<From>, kPast>,
        .bgrToYcc = pixelsToYcc<Bgr24<From>, kPast>,
        .rgb555ToYcc = packedToYcc<Rgb555<From>, kPast>,
        .bgr555ToYcc = packedToYcc<Bgr555<From>, kPast>,
        .rgb565ToYcc = packedToYcc<Rgb565<From>, kPast>,
        .bgr565ToYcc = packedToYcc<Bgr565<From>, kPast>,
        .cmykPlanesToYcck = planesToYcck<kPast>,
        .cmykToYcck = pixelsToYcck<kPast>,
        .rgbPlanesToY = planesToY<kPast>,
        .rgbToY = pixelsToY<Rgb24<From>, kPast>,
        .bgrToY = pixelsToY<Bgr24<From>, kPast>,
        .past = past,
    };
}
constexpr ColourKernels kTablePastCaches = makeTable<true>(nullptr);

}
}

const ColourKernels ColourKernels::QEL_BUILD = qel::QEL_BUILD::makeTable<false>(&qel::QEL_BUILD::kTablePastCaches);

}
