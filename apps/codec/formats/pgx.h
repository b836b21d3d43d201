// SPDX-License-Identifier: Apache-2.0
// PGX files: the samples of one component, of 1 to 31 bits, signed or not.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/base/bytes.h"

namespace qel::codec {

struct PgxPicture {
    int width = 0, height = 0;
    int precision = 8;
    bool isSigned = false;
    std::vector<int32_t> samples; // row by row

    bool operator==(const PgxPicture&) const = default;
};

bool isPgx(Bytes file);

// Either order of bytes. Throws CodecError.
PgxPicture readPgx(Bytes file);

// Most significant byte first.
void writePgx(const PgxPicture& picture, const ByteSink& sink);

}
