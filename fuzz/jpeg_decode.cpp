// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes, the JPEG decoder returns a picture or throws CodecError.
#include "codec/jpeg/decode/reader.h"
#include "target.h"

using namespace qel::codec;

void tryFile(Bytes file)
{
    const jpeg::DecodeOptions options = {.maxPixels = 1 << 18};
    jpeg::decode(file, options);
    jpeg::decodeCoefficients(file, options);
}
