// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes, the JPEG 2000 decoder returns a picture or throws CodecError.
#include "codec/j2k/decode/reader.h"
#include "target.h"

using namespace qel::codec;

void tryFile(Bytes file)
{
    j2k::decode(file, {.maxPixels = 1 << 16});
    j2k::decodeComponent(file, 0, {.reduce = 1, .layers = 2, .transformComponents = false, .maxPixels = 1 << 16});
}
