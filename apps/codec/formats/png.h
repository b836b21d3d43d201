// SPDX-License-Identifier: Apache-2.0
// PNG pictures, by way of libpng.
#pragma once

#include "codec/base/decoded_picture.h"

namespace qel::codec {

bool isPng(Bytes file);

// Grey and RGB pictures of 1 to 16 bits; palettes become RGB, and transparent colours alpha. Where the file
// says how many bits of its samples are significant, the same for all channels, that is the precision. Throws
// CodecError for what is damaged or cut short; sizes are checked before memory is taken.
DecodedPicture readPng(Bytes file);

// Grey and RGB only, with alpha or without. A precision that PNG does not have goes into the next larger one, with a
// note of the significant bits, from which readPng restores it. Returns what libpng does not take of the metadata.
Warnings writePng(const Picture& picture, const ByteSink& sink, const Metadata& metadata = {});

}
