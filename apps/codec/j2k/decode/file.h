// SPDX-License-Identifier: Apache-2.0
// JPEG 2000 files: a bare codestream, or one in a JP2 file.
#pragma once

#include <memory>
#include <optional>

#include "codec/j2k/boxes.h"
#include "codec/j2k/decode/codestream.h"

namespace qel::codec::j2k {

struct File {
    std::optional<Jp2File> jp2; // nothing for a bare codestream
    std::unique_ptr<Codestream> codestream;
    Warnings warnings; // of both, and where they disagree
};

// True for what begins as JP2 files or codestreams do.
bool isJpeg2000(Bytes file);

// Reads the boxes, the main header and the list of tile-parts. Throws CodecError where there is no picture to be read.
// The bytes have to live on.
File open(Bytes file);

const char* nameOf(Order order);
const char* nameOf(Quantizer quantizer);

}
