// Kernels of the MCU conversion: a sampling, a colour step, a pixel format and a direction each.
#include "jpeg/mcu.h"

#include "jpeg/mcu_colours.h"
#include "jpeg/mcu_tiles.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// kH x kV luma samples for one of chroma, and as many blocks.
template <int kHorizontal, int kVertical> struct Sampling {
    static constexpr int kH = kHorizontal, kV = kVertical;

    // Where the samples of pixel (x, y) lie.
    static constexpr int lumaAt(int x, int y) { return 64 * (y / 8 * kH + x / 8) + 8 * (y % 8) + x % 8; }
    static constexpr int chromaAt(int x, int y) { return 8 * (y / kV) + x / kH; }
};

// --- Pixel by pixel.

template <class Colour, class V, class Pixels, class S>
QEL_INLINE void putPixels(Pixels pixels, ptrdiff_t i, S a, S b, S c, [[maybe_unused]] S k)
{
    if constexpr (Colour::kComponents == 4)
        pixels.template put<V>(i, S(~a), S(~b), S(~c), k);
    else
        pixels.template put<V>(i, a, b, c);
}
template <class Colour, class V, class Pixels, class S>
QEL_INLINE void getPixels(Pixels pixels, ptrdiff_t i, S& a, S& b, S& c, [[maybe_unused]] S& k)
{
    if constexpr (Colour::kComponents == 4) {
        pixels.template get<V>(i, a, b, c, k);
        a = S(~a), b = S(~b), c = S(~c);
    } else {
        pixels.template get<V>(i, a, b, c);
    }
}

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
        Pixels<uint8_t*> row = {dst + (ptrdiff_t)y * dstStep};
        putPixels<Colour, Lane>(row, x, byte(0), byte(1), byte(2), k);
    });
}

template <class S, class Colour, template <class> class Pixels>
QEL_INLINE void encodeSingly(const uint8_t* src, int srcStep, int16_t* const* dst)
{
    int sums[2][64] = {};
    eachPixel<S>([&](int x, int y) {
        uint8_t a, b, c, k;
        Pixels<const uint8_t*> row = {src + (ptrdiff_t)y * srcStep};
        getPixels<Colour, Lane>(row, x, a, b, c, k);
        auto samples = Colour::encode(a, b, c);
        store(dst[0] + S::lumaAt(x, y), int16_t(samples.at[0]));
        if (Colour::kComponents == 4) store(dst[3] + S::lumaAt(x, y), int16_t(k - 128));
        for (int i = 0; i < 2; ++i) sums[i][S::chromaAt(x, y)] += samples.at[1 + i];
    });
    for (int i = 0; i < 128; ++i) store(dst[1 + i / 64] + i % 64, int16_t(sums[i / 64][i % 64] >> (S::kH + S::kV - 2)));
}

template <class S, class Colour, template <class> class Pixels, class Pixel>
void decode(const int16_t* const* src, Pixel* dst, int dstStep)
{
    decodeSingly<S, Colour, Pixels>(src, (uint8_t*)dst, dstStep);
}
template <class S, class Colour, template <class> class Pixels, class Pixel>
void encode(const Pixel* src, int srcStep, int16_t* const* dst)
{
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

const McuKernels McuKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;

}
