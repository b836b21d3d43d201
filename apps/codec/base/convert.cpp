// SPDX-License-Identifier: Apache-2.0
// Pictures in another colour space or precision.
#include "codec/base/convert.h"

namespace qel::codec {
namespace {

template <class T> void repeatThreeTimes(const Picture& grey, Picture& rgb)
{
    for (int y = 0; y < grey.height(); ++y)
        for (int x = 0; x < grey.width(); ++x)
            for (int c = 0; c < 3; ++c) rgb.row<T>(y)[3 * x + c] = grey.row<T>(y)[x];
}

template <class From, class To> void scale(const Picture& src, Picture& dst)
{
    uint32_t from = (1u << src.precision()) - 1, to = (1u << dst.precision()) - 1;
    const From* s = src.row<From>(0);
    To* d = dst.row<To>(0);
    size_t samples = src.sizeInBytes() / sizeof(From);
    for (size_t i = 0; i < samples; ++i) d[i] = To(rescaled(s[i], from, to));
}

}

Picture withRgb(const Picture& grey)
{
    Picture rgb(grey.width(), grey.height(), ColourSpace::rgb, grey.precision());
    grey.bytesPerSample() == 1 ? repeatThreeTimes<uint8_t>(grey, rgb) : repeatThreeTimes<uint16_t>(grey, rgb);
    return rgb;
}

Picture withPrecision(const Picture& picture, int precision)
{
    Picture scaled(picture.width(), picture.height(), picture.space(), precision);
    bool isWide = picture.bytesPerSample() == 2, becomesWide = scaled.bytesPerSample() == 2;
    if (isWide)
        becomesWide ? scale<uint16_t, uint16_t>(picture, scaled) : scale<uint16_t, uint8_t>(picture, scaled);
    else
        becomesWide ? scale<uint8_t, uint16_t>(picture, scaled) : scale<uint8_t, uint8_t>(picture, scaled);
    return scaled;
}

}
