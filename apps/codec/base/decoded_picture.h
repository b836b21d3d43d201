// SPDX-License-Identifier: Apache-2.0
// What becomes of a picture file.
#pragma once

#include "codec/base/bytes.h"
#include "codec/base/metadata.h"
#include "codec/base/picture.h"

namespace qel::codec {

struct DecodedPicture {
    Picture picture;        // CMYK values as the file stores them
    Warnings warnings;      // one line each
    bool isDamaged = false; // some of the picture may be missing
    Metadata metadata;
    bool isInkInverted = false; // of CMYK: all ones are no ink, as in Adobe's files
};

}
