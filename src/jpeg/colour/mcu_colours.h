// SPDX-License-Identifier: Apache-2.0
// The colour steps of the MCU kernels, on samples around 0: pixel by pixel, which is the definition, and in registers
// of 16-bit lanes, which give the same for every sample of 16 bits.
#pragma once

#include "jpeg/colour/colour_sums.h"
#include "jpeg/colour/mcu_tiles.h"

namespace qel::QEL_BUILD {
namespace {

struct Three {
    int at[3];
};
template <int kCount> struct Registers {
    Wide at[kCount];
};

// Y, Cb, Cr as they are. decode() takes Y and what terms() makes of chroma, once for all pixels that share it.
struct YccStep {
    static constexpr int kComponents = 3, kTerms = 2;

    static QEL_INLINE Three decode(int y, int cb, int cr) { return {y, cb, cr}; }
    static QEL_INLINE Three encode(uint8_t y, uint8_t cb, uint8_t cr) { return {y - 128, cb - 128, cr - 128}; }

    static QEL_INLINE Registers<2> terms(Wide cb, Wide cr) { return {cb, cr}; }
    static QEL_INLINE Registers<3> decode(Wide y, Registers<2> chroma) { return {y, chroma.at[0], chroma.at[1]}; }
    static QEL_INLINE Registers<3> encode(Wide y, Wide cb, Wide cr) { return {y - 128, cb - 128, cr - 128}; }
};

// R, G, B. Decoding cuts the fraction off, where the conversion of planes rounds it.
struct RgbStep {
    static constexpr int kComponents = 3, kTerms = 5;
    static constexpr int kCrToRed = 91881, kCbToGreen = -22554, kCrToGreen = -46802, kCbToBlue = 116130;
    static constexpr int kRedInLuma = 19595, kBlueInLuma = 7471, kRedInCb = 11059, kBlueInCr = 5329;

    static QEL_INLINE int scaled(int64_t sum) { return int(sum >> 16); }
    static QEL_INLINE Three decode(int y, int64_t cb, int64_t cr)
    {
        return {y + scaled(kCrToRed * cr), y + scaled(kCbToGreen * cb + kCrToGreen * cr), y + scaled(kCbToBlue * cb)};
    }
    static QEL_INLINE Three encode(uint8_t r, uint8_t g, uint8_t b)
    {
        auto [y, cb, cr] = yccByTables({r, g, b});
        return {y - 128, cb - 128, cr - 128};
    }

    // Factors beyond 16 bits are 65536 and a rest: (65536 * c) >> 16 is c itself. The rests' terms are at most 25297:
    // where the sum of Y and c saturates, it is beyond the range of bytes with them too.
    static QEL_INLINE Registers<5> terms(Wide cb, Wide cr)
    {
        auto times = [](Wide c, int factor) { return Op::mulHigh(c, Wide{} + int16_t(factor)); };
        Wide factors = wordPairsOf<kWidth>(kCbToGreen, kCrToGreen + 65536);
        auto green = [=](Wide pairs) { return Op::mulAddPairs(pairs, factors) >> 16; };
        Wide lessGreen = Op::pack(green(Op::zipLow(cb, cr)), green(Op::zipHigh(cb, cr)));
        return {cb, cr, times(cr, kCrToRed - 65536), lessGreen, times(cb, kCbToBlue - 2 * 65536) + cb};
    }
    static QEL_INLINE Registers<3> decode(Wide y, Registers<5> chroma)
    {
        auto& [cb, cr, red, green, blue] = chroma.at;
        return {Op::addSat(Op::addSat(y, cr), red), Op::addSat(Op::subSat(y, cr), green),
                Op::addSat(Op::addSat(y, cb), blue)};
    }

    // The factors of luma add up to one and those of chroma to nothing: differences take two factors and not three. One
    // of chroma's is a half, so that with the rounding term of the tables
    //     (32768 * a - f * b + 32767) >> 16 = (a - (2 * f * b >> 16)) >> 1.
    static QEL_INLINE Registers<3> encode(Wide r, Wide g, Wide b)
    {
        auto times = [](Wide v, int factor) { return Op::mulHigh(v, Wide{} + int16_t(factor)); };
        Wide red = r - g, blue = b - g;
        Wide factors = wordPairsOf<kWidth>(kRedInLuma, kBlueInLuma);
        auto sum = [=](Wide pairs) { return (Op::mulAddPairs(pairs, factors) + (32768 - 128 * 65536)) >> 16; };
        Wide luma = Op::pack(sum(Op::zipLow(red, blue)), sum(Op::zipHigh(red, blue)));
        return {luma + g, (blue - times(red, 2 * kRedInCb)) >> 1, (red - times(blue, 2 * kBlueInCr)) >> 1};
    }
};

// C, M, Y: R, G, B inverted, beside a K that is only shifted.
struct InkStep : RgbStep {
    static constexpr int kComponents = 4;
};

}
}
