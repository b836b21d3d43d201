// SPDX-License-Identifier: Apache-2.0
// Pictures: allocation within limits.
#include "codec/base/picture.h"

#include <string>

#include "codec/base/error.h"

namespace qel::codec {

namespace {

void checkSize(int width, int height, int channels, int precision)
{
    if (width < 1 || height < 1) throw CodecError("the picture has no pixels");
    if (precision < 1 || precision > 16) throw CodecError("samples of " + std::to_string(precision) + " bits");
    if (uint64_t(width) * channels * (precision <= 8 ? 1 : 2) > Picture::kMaxBytes / height)
        throw CodecError("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                         " pixels is too large");
}

}

Picture::Picture(int width, int height, ColourSpace space, int precision, bool hasAlpha)
    : width_(width), height_(height), precision_(precision), space_(space), hasAlpha_(hasAlpha)
{
    if (hasAlpha && space == ColourSpace::cmyk) throw CodecError("a CMYK picture with transparency");
    checkSize(width, height, channels(), precision);
    samples_.reset(new uint8_t[sizeInBytes()]);
}

Picture Picture::over(const void* samples, int width, int height, ColourSpace space, int precision)
{
    checkSize(width, height, channelsOf(space), precision);
    Picture picture;
    picture.width_ = width;
    picture.height_ = height;
    picture.precision_ = precision;
    picture.space_ = space;
    picture.samples_ = {const_cast<uint8_t*>(static_cast<const uint8_t*>(samples)), Release{true}};
    return picture;
}

}
