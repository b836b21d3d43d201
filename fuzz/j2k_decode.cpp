// Whatever the bytes, the JPEG 2000 decoder returns a picture or throws CodecError.
#include "codec/error.h"
#include "codec/j2k_reader.h"

using namespace qel::codec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Bytes file(data, size);
    try {
        decodeJ2k(file, {.maxPixels = 1 << 16});
        decodeJ2kComponent(file, 0, {.reduce = 1, .layers = 2, .transformComponents = false, .maxPixels = 1 << 16});
    } catch (const CodecError&) {}
    return 0;
}
