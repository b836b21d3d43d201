// Decodes JPEG 2000 files (T.800): JP2 files and bare codestreams.
#pragma once

#include "codec/base/picture.h"
#include "codec/formats/pgx.h"
#include "codec/j2k/decode/components.h"

namespace qel::codec::j2k {

struct Decoded {
    Picture picture;        // grey, RGB or CMYK
    Warnings warnings;      // one line each
    bool isDamaged = false; // some of the picture may be missing
};

// The picture that the file stands for. Throws CodecError where there is none.
Decoded decode(Bytes file, const DecodeOptions& options = {});

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
