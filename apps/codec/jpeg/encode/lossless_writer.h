// SPDX-License-Identifier: Apache-2.0
// Encodes pictures as lossless JPEG files (T.81 Annex H).
#pragma once

#include <cstdint>
#include <vector>

#include "codec/base/picture.h"
#include "codec/jpeg/encode/options.h"

namespace qel::codec::jpeg {

// What encode does where options.lossless is set.
std::vector<uint8_t> encodeLossless(const Picture& picture, const EncodeOptions& options);

}
