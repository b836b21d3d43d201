// Whatever the bytes, the JPEG decoder returns a picture or throws CodecError.
#include "codec/jpeg/decode/reader.h"
#include "target.h"

using namespace qel::codec;

void tryFile(Bytes file)
{
    const JpegDecodeOptions options = {.maxPixels = 1 << 18};
    decodeJpeg(file, options);
    decodeJpegCoefficients(file, options);
}
