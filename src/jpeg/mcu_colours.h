// The colour steps of the MCU kernels, on samples around 0: pixel by pixel, which is the definition, and in registers
// of 16-bit lanes, which give the same for every sample of 16 bits.
#pragma once

#include "jpeg/colour_sums.h"

namespace qel {
namespace QEL_BUILD {
namespace {

struct Three {
    int at[3];
};
template <int N, int kCount> struct Registers {
    S16<N> at[kCount];
};

// Y, Cb, Cr as they are. decode() takes Y and what terms() makes of chroma, once for all pixels that share it.
struct YccStep {
    static constexpr int kComponents = 3, kTerms = 2;

    static QEL_INLINE Three decode(int y, int cb, int cr) { return {y, cb, cr}; }
    static QEL_INLINE Three encode(uint8_t y, uint8_t cb, uint8_t cr) { return {y - 128, cb - 128, cr - 128}; }

    template <int N> static QEL_INLINE Registers<N, 2> terms(S16<N> cb, S16<N> cr) { return {cb, cr}; }
    template <int N> static QEL_INLINE Registers<N, 3> decode(S16<N> y, Registers<N, 2> chroma)
    {
        return {y, chroma.at[0], chroma.at[1]};
    }
    template <int N> static QEL_INLINE Registers<N, 3> encode(S16<N> y, S16<N> cb, S16<N> cr)
    {
        return {y - 128, cb - 128, cr - 128};
    }
};

// R, G, B. Decoding cuts the fraction off, where the conversion of planes rounds it.
struct RgbStep {
    static constexpr int kComponents = 3, kTerms = 5;
    static constexpr int kCrToRed = 91881, kCbToGreen = -22554, kCrToGreen = -46802, kCbToBlue = 116130;

    static QEL_INLINE int scaled(int64_t sum) { return int(sum >> 16); }
    static QEL_INLINE Three decode(int y, int64_t cb, int64_t cr)
    {
        return {y + scaled(kCrToRed * cr), y + scaled(kCbToGreen * cb + kCrToGreen * cr), y + scaled(kCbToBlue * cb)};
    }
    static QEL_INLINE Three encode(uint8_t r, uint8_t g, uint8_t b)
    {
        return {lumaByTables(r, g, b) - 128, blueByTables(r, g, b) - 128, redByTables(r, g, b) - 128};
    }

    // Factors beyond 16 bits are 65536 and a rest: (65536 * c) >> 16 is c itself. The rests' terms are far from the
    // ends of 16 bits, so that a sum of Y and c that saturates has the right sign with them too.
    template <int N> static QEL_INLINE Registers<N, 5> terms(S16<N> cb, S16<N> cr)
    {
        using Ops = Simd<N>;
        auto times = [](S16<N> c, int factor) { return Ops::mulHigh(c, S16<N>{} + int16_t(factor)); };
        auto factors = (S16<N>)(U32<N>{} + (uint32_t(kCrToGreen + 65536) << 16 | uint16_t(kCbToGreen)));
        auto green = [=](S16<N> pairs) { return Ops::mulAddPairs(pairs, factors) >> 16; };
        S16<N> lessGreen = Ops::pack(green(Ops::zipLow(cb, cr)), green(Ops::zipHigh(cb, cr)));
        return {cb, cr, times(cr, kCrToRed - 65536), lessGreen, times(cb, kCbToBlue - 2 * 65536) + cb};
    }
    template <int N> static QEL_INLINE Registers<N, 3> decode(S16<N> y, Registers<N, 5> chroma)
    {
        using Ops = Simd<N>;
        auto& [cb, cr, red, green, blue] = chroma.at;
        return {Ops::addSat(Ops::addSat(y, cr), red), Ops::addSat(Ops::subSat(y, cr), green),
                Ops::addSat(Ops::addSat(y, cb), blue)};
    }

    // The factors of luma add up to one and those of chroma to nothing: differences take two factors and not three. One
    // of chroma's is a half, so that with the rounding term of the tables
    //     (32768 * a - f * b + 32767) >> 16 = (a - (2 * f * b >> 16)) >> 1.
    template <int N> static QEL_INLINE Registers<N, 3> encode(S16<N> r, S16<N> g, S16<N> b)
    {
        using Ops = Simd<N>;
        auto times = [](S16<N> v, int factor) { return Ops::mulHigh(v, S16<N>{} + int16_t(factor)); };
        S16<N> red = r - g, blue = b - g;
        auto factors = (S16<N>)(U32<N>{} + (uint32_t(7471) << 16 | 19595));
        auto sum = [=](S16<N> pairs) { return (Ops::mulAddPairs(pairs, factors) + 32768) >> 16; };
        S16<N> luma = Ops::pack(sum(Ops::zipLow(red, blue)), sum(Ops::zipHigh(red, blue)));
        return {luma + (g - 128), (blue - times(red, 2 * 11059)) >> 1, (red - times(blue, 2 * 5329)) >> 1};
    }
};

// C, M, Y: R, G, B inverted, beside a K that is only shifted.
struct InkStep : RgbStep {
    static constexpr int kComponents = 4;
};

}
}
}
