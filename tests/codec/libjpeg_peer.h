// SPDX-License-Identifier: Apache-2.0
// An independent JPEG codec (libjpeg's interface) to compare with.
#pragma once

#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/picture.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"

namespace qel::test {

// The picture, with chroma interpolated unless `replicate`. Throws std::runtime_error for what the peer refuses.
codec::Picture peerDecode(codec::Bytes file, bool replicate = false);

std::vector<codec::jpeg::Coefficients> peerCoefficients(codec::Bytes file);

// A file after the options of our own encoder, as far as it holds what the peer can write.
std::vector<uint8_t> peerEncode(const codec::Picture& picture, const codec::jpeg::EncodeOptions& options);

}
