// SPDX-License-Identifier: Apache-2.0
// Pictures in another colour space or precision.
#include "codec/base/convert.h"

#include <algorithm>

namespace qel::codec {
namespace {

// Channel c of `to` is channel sources[c] of `from`.
template <class T> void copyChannels(const Picture& from, const int sources[], Picture& to)
{
    for (int y = 0; y < from.height(); ++y) {
        const T* in = from.row<T>(y);
        T* out = to.row<T>(y);
        for (int x = 0; x < from.width(); ++x, in += from.channels(), out += to.channels())
            for (int c = 0; c < to.channels(); ++c) out[c] = in[sources[c]];
    }
}

Picture withChannels(const Picture& from, std::initializer_list<int> sources, Picture to)
{
    from.bytesPerSample() == 1 ? copyChannels<uint8_t>(from, sources.begin(), to)
                               : copyChannels<uint16_t>(from, sources.begin(), to);
    to.setSigned(from.isSigned());
    return to;
}

template <class T> bool areAllOnes(const Picture& picture, int channel)
{
    T ones = T((1u << picture.precision()) - 1);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            if (picture.row<T>(y)[ptrdiff_t(picture.channels()) * x + channel] != ones) return false;
    return true;
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
    return withChannels(grey, {0, 0, 0, 1},
                        Picture(grey.width(), grey.height(), ColourSpace::rgb, grey.precision(), grey.hasAlpha()));
}

bool isOpaque(const Picture& picture)
{
    if (!picture.hasAlpha()) return true;
    int alpha = picture.channels() - 1;
    return picture.bytesPerSample() == 1 ? areAllOnes<uint8_t>(picture, alpha) : areAllOnes<uint16_t>(picture, alpha);
}

Picture withoutAlpha(const Picture& picture)
{
    return withChannels(picture, {0, 1, 2},
                        Picture(picture.width(), picture.height(), picture.space(), picture.precision()));
}

Picture withPrecision(const Picture& picture, int precision)
{
    Picture scaled(picture.width(), picture.height(), picture.space(), precision, picture.hasAlpha());
    scaled.setSigned(picture.isSigned());
    bool isWide = picture.bytesPerSample() == 2, becomesWide = scaled.bytesPerSample() == 2;
    if (isWide)
        becomesWide ? scale<uint16_t, uint16_t>(picture, scaled) : scale<uint16_t, uint8_t>(picture, scaled);
    else
        becomesWide ? scale<uint8_t, uint16_t>(picture, scaled) : scale<uint8_t, uint8_t>(picture, scaled);
    return scaled;
}

}
