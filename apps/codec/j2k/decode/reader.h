// SPDX-License-Identifier: Apache-2.0
// Decodes JPEG 2000 files (T.800): JP2 files and bare codestreams.
#pragma once

#include "codec/base/decoded_picture.h"
#include "codec/formats/pgx.h"
#include "codec/j2k/decode/components.h"

namespace qel::codec::j2k {

// The picture that the file stands for: grey, RGB or CMYK. Throws CodecError where there is none.
DecodedPicture decode(Bytes file, const DecodeOptions& options = {});

struct DecodedComponent {
    PgxPicture samples;
    Warnings warnings; // damage that was survived
};

// One component as it is coded: no palette, no up-sampling, no colour space.
DecodedComponent decodeComponent(Bytes file, size_t component, const DecodeOptions& options = {});

struct DecodedPlanes {
    std::vector<PgxPicture> planes;
    Warnings warnings;
};

// The same of all components.
DecodedPlanes decodePlanes(Bytes file, const DecodeOptions& options = {});

}
