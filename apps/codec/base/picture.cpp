// Pictures: allocation within limits.
#include "codec/base/picture.h"

#include <string>

#include "codec/base/error.h"

namespace qel::codec {

Picture::Picture(int width, int height, ColourSpace space, int precision)
    : width_(width), height_(height), precision_(precision), space_(space)
{
    if (width < 1 || height < 1) throw CodecError("the picture has no pixels");
    if (precision < 1 || precision > 16) throw CodecError("samples of " + std::to_string(precision) + " bits");
    if (uint64_t(width) * channels() * bytesPerSample() > kMaxBytes / height)
        throw CodecError("a picture of " + std::to_string(width) + " x " + std::to_string(height) +
                         " pixels is too large");
    samples_ = std::make_unique_for_overwrite<uint8_t[]>(sizeInBytes());
}

}
