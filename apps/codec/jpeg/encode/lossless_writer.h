// Encodes pictures as lossless JPEG files (T.81 Annex H).
#pragma once

#include <cstdint>
#include <vector>

#include "codec/jpeg/encode/writer.h"

namespace qel::codec {

// What encodeJpeg does where options.lossless is set.
std::vector<uint8_t> encodeLosslessJpeg(const Picture& picture, const JpegEncodeOptions& options);

}
