// SPDX-License-Identifier: Apache-2.0
// Encodes pictures as JPEG 2000 files (T.800).
#pragma once

#include "codec/j2k/encode/options.h"
#include "codec/j2k/encode/tile_encoder.h"

namespace qel::codec::j2k {

// The file. RGB is decorrelated by a component transform; CMYK is written as it stands. Throws CodecError for options
// outside their range, or that do not fit the picture.
std::vector<uint8_t> encode(const Picture& picture, const EncodeOptions& options = {});

// The same file, byte for byte, from one row of tiles after the other: all of the picture need never be in memory. It
// is the header, the rows in order, and the end. Several threads may call it.
class TileRows {
public:
    // Throws CodecError for what encode() does not take, and for options that look at all of the picture: a rate, a
    // PSNR, several layers.
    TileRows(const PictureForm& picture, const EncodeOptions& options);

    uint32_t count() const { return coding_.size.tilesDown(); }
    // Of the picture, what a row of tiles covers.
    Rect rect(uint32_t row) const;
    // Its tiles. `part` is just that of the picture.
    std::vector<uint8_t> encode(uint32_t row, const Picture& part) const;
    // For so many bytes in all rows, on which its own length does not depend.
    std::vector<uint8_t> header(uint64_t bytes) const;
    static std::vector<uint8_t> end();

private:
    PictureForm picture_;
    EncodeOptions options_;
    PictureCoding coding_;
    Slope slope_ = kAllPasses;
};

}
