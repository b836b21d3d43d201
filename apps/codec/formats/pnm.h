// SPDX-License-Identifier: Apache-2.0
// Portable anymap pictures: PGM and PPM, plain and raw (P2, P3, P5, P6), and PAM (P7) for grey and RGB,
// with alpha or without, and CMYK.
#pragma once

#include "codec/base/bytes.h"
#include "codec/base/picture.h"

namespace qel::codec {

// True if `file` begins like a portable anymap, also of the kinds that readPnm refuses.
bool isPnm(Bytes file);

// The first picture of `file`. The precision is the number of bits of the stated maximum; where that is not all ones,
// samples are scaled so that the maximum becomes all ones. Throws CodecError for what is damaged, cut short or of
// another kind, before memory is taken for the picture.
Picture readPnm(Bytes file);

// Raw PGM or PPM, by the picture's colour space, or PAM for CMYK and alpha, with all ones as the maximum.
void writePnm(const Picture& picture, const ByteSink& sink);

// The same as PAM, whatever the colour space.
void writePam(const Picture& picture, const ByteSink& sink);

}
