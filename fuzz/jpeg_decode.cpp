// Whatever the bytes, the JPEG decoder returns a picture or throws CodecError.
#include "codec/error.h"
#include "codec/jpeg_reader.h"

using namespace qel::codec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Bytes file(data, size);
    const JpegDecodeOptions options = {.maxPixels = 1 << 18};
    try {
        decodeJpeg(file, options);
        decodeJpegCoefficients(file, options);
    } catch (const CodecError&) {}
    return 0;
}
