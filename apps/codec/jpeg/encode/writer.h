// SPDX-License-Identifier: Apache-2.0
// Encodes pictures of 8-bit samples as baseline, extended sequential or progressive JPEG files, and pictures of 2 to 16
// bits as lossless ones (T.81).
#pragma once

#include <cstdint>
#include <vector>

#include "codec/base/picture.h"
#include "codec/jpeg/encode/options.h"

namespace qel::codec::jpeg {

// For metadata, in the file of a picture of this colour space.
MetadataRoom roomFor(const EncodeOptions& options, ColourSpace space);

// The file. CMYK samples are written as they stand, with an Adobe marker (whose readers take 255 for no ink). Throws
// CodecError for options outside their range, or that do not fit the picture, or sizes that JPEG cannot hold.
std::vector<uint8_t> encode(const Picture& picture, const EncodeOptions& options = {});

}
