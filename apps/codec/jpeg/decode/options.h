// SPDX-License-Identifier: Apache-2.0
// How a JPEG file shall be decoded.
#pragma once

#include <cstdint>

#include "codec/base/progress.h"

namespace qel::codec::jpeg {

// How chroma of half the width or height is brought to full size. Other ratios are always replicated.
enum class Upsampling { triangle, replicate };

struct DecodeOptions {
    Upsampling upsampling = Upsampling::triangle;
    bool fast = false;               // replicated chroma MCU by MCU, which rounds a little less well
    uint64_t maxPixels = UINT64_MAX; // larger pictures are refused, beside the limit of Picture itself
    ProgressReport progress = {};
};

}
