// SPDX-License-Identifier: Apache-2.0
// Encodes pictures as JPEG 2000 files (T.800).
#pragma once

#include "codec/j2k/encode/options.h"

namespace qel::codec::j2k {

// The file. RGB is decorrelated by a component transform; CMYK is written as it stands. Throws CodecError for options
// outside their range, or that do not fit the picture.
std::vector<uint8_t> encode(const Picture& picture, const EncodeOptions& options = {});

}
