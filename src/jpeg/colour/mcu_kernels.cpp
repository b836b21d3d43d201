// SPDX-License-Identifier: Apache-2.0
// Kernels of the MCU conversion: a sampling, a colour step, a pixel format and a direction each.
#include "jpeg/colour/mcu.h"

#include "jpeg/colour/mcu_colours.h"
#include "jpeg/colour/mcu_tiles.h"

namespace qel::QEL_BUILD {
namespace {

// kH x kV luma samples for one of chroma, and as many blocks.
template <int kHorizontal, int kVertical> struct Sampling {
    static constexpr int kH = kHorizontal, kV = kVertical;

    // Where the samples of pixel (x, y) lie.
    static constexpr int lumaAt(int x, int y) { return 64 * (y / 8 * kH + x / 8) + 8 * (y % 8) + x % 8; }
    static constexpr int chromaAt(int x, int y) { return 8 * (y / kV) + x / kH; }

    // In registers: the pixels of row y and of the rows kV, 2 kV, ... below it, so that their chroma is a register in
    // order. In 444 the upper halves of the blocks are the rows after these.
    static constexpr int kChromaRows = kH == 1 ? 2 * kBlocks : kBlocks;
    using TileLanes = Tile<kH == 2>;

    template <class T> static QEL_INLINE TileRows<T> rows(T* tile, int step, int y)
    {
        return {tile + ptrdiff_t(y) * step, ptrdiff_t(kV) * step, ptrdiff_t(kBlocks) * step};
    }
    // The samples of one half of these pixels.
    template <class T> static QEL_INLINE T* half(T* blocks, int y, int h)
    {
        return blocks + (kH == 1 ? lumaAt(0, y + h * kBlocks) : lumaAt(8 * h, y));
    }
    static QEL_INLINE Wide loadHalf(const int16_t* blocks, int y, int h)
    {
        const int16_t* p = half(blocks, y, h);
        if constexpr (kV == 1) return load<Wide>(p);
        S16<16> rowsOfBlock[kBlocks];
#pragma GCC unroll 4
        for (int i = 0; i < kBlocks; ++i) rowsOfBlock[i] = load<S16<16>>(p + 8 * kV * i);
        return joinBlocks<kWidth>(rowsOfBlock);
    }
    static QEL_INLINE void storeHalf(int16_t* blocks, int y, int h, Wide samples)
    {
        int16_t* p = half(blocks, y, h);
        if constexpr (kV == 1) return store(p, samples);
        S16<16> rowsOfBlock[kBlocks];
        splitBlocks<kWidth>(samples, rowsOfBlock);
#pragma GCC unroll 4
        for (int i = 0; i < kBlocks; ++i) store(p + 8 * kV * i, rowsOfBlock[i]);
    }
};

// Pixels of a format by the channels of a colour step, beside the K of those that have one.
template <class Colour, class V>
QEL_INLINE void putPixels(auto pixels, auto lanes, ptrdiff_t i, Triple<V> colours, [[maybe_unused]] V k)
{
    if constexpr (Colour::kComponents == 4) {
        auto [c, m, y] = inverted(colours);
        pixels.put(lanes, i, Quad<V>{c, m, y, k});
    } else {
        pixels.put(lanes, i, colours);
    }
}
template <class Colour, class L> QEL_INLINE auto getPixels(auto pixels, L lanes, ptrdiff_t i)
{
    using V = typename L::Bytes;
    if constexpr (Colour::kComponents == 4) {
        auto [c, m, y, k] = pixels.get(lanes, i);
        return Inks<Triple<V>, V>{inverted(Triple<V>{c, m, y}), k};
    } else {
        return Inks<Triple<V>, V>{pixels.get(lanes, i), {}};
    }
}

// --- Pixel by pixel.

template <class S, class Body> QEL_INLINE void eachPixel(Body body)
{
    for (int y = 0; y < 8 * S::kV; ++y)
        for (int x = 0; x < 8 * S::kH; ++x) body(x, y);
}

template <class S, class Colour, template <class> class Pixels>
QEL_INLINE void decodeSingly(const int16_t* const* src, uint8_t* dst, int dstStep)
{
    eachPixel<S>([=](int x, int y) {
        auto sample = [=](int component, int at) { return load<int16_t>(src[component] + at); };
        int luma = S::lumaAt(x, y), chroma = S::chromaAt(x, y);
        auto sums = Colour::decode(sample(0, luma), sample(1, chroma), sample(2, chroma));
        auto byte = [&](int i) { return clampToByte(sums.at[i] + 128); };
        uint8_t k = Colour::kComponents == 4 ? uint8_t(sample(3, luma) + 128) : 0;
        Pixels<uint8_t*> row = {dst + ptrdiff_t(y) * dstStep};
        putPixels<Colour>(row, Lanes<1>(), x, Triple{byte(0), byte(1), byte(2)}, k);
    });
}

template <class S, class Colour, template <class> class Pixels>
QEL_INLINE void encodeSingly(const uint8_t* src, int srcStep, int16_t* const* dst)
{
    int sums[2][64] = {};
    eachPixel<S>([&](int x, int y) {
        Pixels<const uint8_t*> row = {src + ptrdiff_t(y) * srcStep};
        auto [colours, k] = getPixels<Colour>(row, Lanes<1>(), x);
        auto samples = Colour::encode(colours.a, colours.b, colours.c);
        store(dst[0] + S::lumaAt(x, y), int16_t(samples.at[0]));
        if (Colour::kComponents == 4) store(dst[3] + S::lumaAt(x, y), int16_t(k - 128));
        for (int i = 0; i < 2; ++i) sums[i][S::chromaAt(x, y)] += samples.at[1 + i];
    });
    for (int i = 0; i < 128; ++i) store(dst[1 + i / 64] + i % 64, int16_t(sums[i / 64][i % 64] >> (S::kH + S::kV - 2)));
}

// --- In registers.

// What a colour step makes of chroma from row y of the blocks on, for both halves of the pixels.
template <class Terms> struct Halves {
    Terms at[2];
};
template <class S, class Colour> QEL_INLINE auto chromaTerms(const int16_t* const* src, int y)
{
    using Terms = Registers<Colour::kTerms>;
    auto terms = [=](int row) { return Colour::terms(load<Wide>(src[1] + 8 * row), load<Wide>(src[2] + 8 * row)); };
    if constexpr (S::kH == 1) {
        return Halves<Terms>{terms(y), terms(y + kBlocks)};
    } else {
        Terms once = terms(y);
        Halves<Terms> twice;
#pragma GCC unroll 8
        for (int i = 0; i < Colour::kTerms; ++i) {
            twice.at[0].at[i] = Op::zipLow(once.at[i], once.at[i]);
            twice.at[1].at[i] = Op::zipHigh(once.at[i], once.at[i]);
        }
        return twice;
    }
}

template <class S, class Colour, template <class> class Pixels>
QEL_INLINE void decodeWide(const int16_t* const* src, uint8_t* dst, int dstStep)
{
    for (int y = 0; y < 8 * S::kV; y += S::kV * S::kChromaRows) {
        auto chroma = chromaTerms<S, Colour>(src, y / S::kV);
#pragma GCC unroll 2
        for (int row = y; row < y + S::kV; ++row) {
            auto low = Colour::decode(S::loadHalf(src[0], row, 0), chroma.at[0]);
            auto high = Colour::decode(S::loadHalf(src[0], row, 1), chroma.at[1]);
            auto bytes = [&](int i) { return Op::packSigned(low.at[i], high.at[i]) ^ 128; };
            U8<kWidth> k = {};
            if constexpr (Colour::kComponents == 4) {
                auto word = [=](int h) { return S::loadHalf(src[3], row, h) & 0xFF; };
                k = Op::packUnsigned(word(0), word(1)) ^ 128;
            }
            Pixels<TileRows<uint8_t>> pixels = {S::rows(dst, dstStep, row)};
            putPixels<Colour>(pixels, typename S::TileLanes(), 0, Triple{bytes(0), bytes(1), bytes(2)}, k);
        }
    }
}

// The bytes of a channel as two registers of words: the halves of the blocks, or where pixels share chroma, their even
// and odd bytes, which need only be added up then.
template <class S> QEL_INLINE Wide words(U8<kWidth> v, int part)
{
    U8<kWidth> none = {};
    if constexpr (S::kH == 1) return (Wide)(part == 0 ? Op::zipLow(v, none) : Op::zipHigh(v, none));
    return part == 0 ? (Wide)v & 0xFF : (Wide)((U16<kWidth>)v >> 8);
}
template <class S> QEL_INLINE void storeWords(int16_t* blocks, int y, Wide first, Wide second)
{
    S::storeHalf(blocks, y, 0, S::kH == 1 ? first : Op::zipLow(first, second));
    S::storeHalf(blocks, y, 1, S::kH == 1 ? second : Op::zipHigh(first, second));
}

template <class S, class Colour, template <class> class Pixels>
QEL_INLINE void encodeWide(const uint8_t* src, int srcStep, int16_t* const* dst)
{
    for (int y = 0; y < 8 * S::kV; y += S::kV * S::kChromaRows) {
        [[maybe_unused]] Wide sums[2] = {};
#pragma GCC unroll 2
        for (int row = y; row < y + S::kV; ++row) {
            Pixels<TileRows<const uint8_t>> pixels = {S::rows(src, srcStep, row)};
            auto [colours, k] = getPixels<Colour>(pixels, typename S::TileLanes(), 0);
            auto [a, b, c] = colours;
            auto first = Colour::encode(words<S>(a, 0), words<S>(b, 0), words<S>(c, 0));
            auto second = Colour::encode(words<S>(a, 1), words<S>(b, 1), words<S>(c, 1));
            storeWords<S>(dst[0], row, first.at[0], second.at[0]);
            if constexpr (Colour::kComponents == 4)
                storeWords<S>(dst[3], row, words<S>(k, 0) - 128, words<S>(k, 1) - 128);
#pragma GCC unroll 2
            for (int i = 0; i < 2; ++i) {
                if constexpr (S::kH == 1)
                    storeWords<S>(dst[1 + i], row, first.at[1 + i], second.at[1 + i]);
                else
                    sums[i] += first.at[1 + i] + second.at[1 + i];
            }
        }
        if constexpr (S::kH == 2)
            for (int i = 0; i < 2; ++i) store(dst[1 + i] + 8 * (y / S::kV), sums[i] >> S::kV);
    }
}

// --- The members.

// A decoder by way of a tile whose rows do not overlap, for those of a destination that do.
template <int kRow, int kRows, class Pixel> [[gnu::noinline]] void
decodeApart(void (*decode)(const int16_t* const*, Pixel*, int), const int16_t* const* src, uint8_t* dst, int dstStep)
{
    uint8_t tile[kRows][kRow];
    decode(src, (Pixel*)tile, kRow);
    for (int y = 0; y < kRows; ++y) __builtin_memcpy(dst + y * dstStep, tile[y], kRow);
}

template <class S, class Colour, template <class> class Pixels, class Pixel>
void decode(const int16_t* const* src, Pixel* dst, int dstStep)
{
    // Rows that overlap are to come out as if written one after the other. Wide registers write them in another order,
    // except where each of their blocks is one row.
    constexpr int kRow = 8 * S::kH * Pixels<uint8_t*>::kElements;
    constexpr bool kMixesRows = QEL_WIDTH > 16 && S::kH == S::kV;
    if (kMixesRows && dstStep < kRow)
        return decodeApart<kRow, 8 * S::kV>(decode<S, Colour, Pixels, Pixel>, src, (uint8_t*)dst, dstStep);
    if constexpr (QEL_WIDTH >= 16)
        decodeWide<S, Colour, Pixels>(src, (uint8_t*)dst, dstStep);
    else
        decodeSingly<S, Colour, Pixels>(src, (uint8_t*)dst, dstStep);
}
template <class S, class Colour, template <class> class Pixels, class Pixel>
void encode(const Pixel* src, int srcStep, int16_t* const* dst)
{
    if constexpr (QEL_WIDTH >= 16)
        encodeWide<S, Colour, Pixels>((const uint8_t*)src, srcStep, dst);
    else
        encodeSingly<S, Colour, Pixels>((const uint8_t*)src, srcStep, dst);
}

template <class Colour, template <class> class Pixels, class Pixel = uint8_t>
constexpr BySampling<void(const int16_t* const*, Pixel*, int)> decoders()
{
    return {decode<Sampling<1, 1>, Colour, Pixels>, decode<Sampling<2, 1>, Colour, Pixels>,
            decode<Sampling<2, 2>, Colour, Pixels>};
}
template <class Colour, template <class> class Pixels, class Pixel = uint8_t>
constexpr BySampling<void(const Pixel*, int, int16_t* const*)> encoders()
{
    return {encode<Sampling<1, 1>, Colour, Pixels>, encode<Sampling<2, 1>, Colour, Pixels>,
            encode<Sampling<2, 2>, Colour, Pixels>};
}

constexpr McuKernels kKernels = {
    .toRgb = decoders<RgbStep, Rgb24>(),
    .toBgr = decoders<RgbStep, Bgr24>(),
    .toBgr555 = decoders<RgbStep, Bgr555, uint16_t>(),
    .toBgr565 = decoders<RgbStep, Bgr565, uint16_t>(),
    .toCmyk = decoders<InkStep, Cmyk32>(),
    .toYcc = decoders<YccStep, Rgb24>(),
    .toPairs422 = decode<Sampling<2, 1>, YccStep, YccPairs>,
    .fromRgb = encoders<RgbStep, Rgb24>(),
    .fromBgr = encoders<RgbStep, Bgr24>(),
    .fromBgr555 = encoders<RgbStep, Bgr555, uint16_t>(),
    .fromBgr565 = encoders<RgbStep, Bgr565, uint16_t>(),
    .fromCmyk = encoders<InkStep, Cmyk32>(),
    .fromYcc = encoders<YccStep, Rgb24>(),
    .fromPairs422 = encode<Sampling<2, 1>, YccStep, YccPairs>,
};

}
}

const qel::McuKernels qel::McuKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
