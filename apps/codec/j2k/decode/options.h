// SPDX-License-Identifier: Apache-2.0
// How, and how much of, a JPEG 2000 file shall be decoded.
#pragma once

#include <cstdint>
#include <optional>

#include "codec/base/progress.h"
#include "codec/j2k/geometry.h"

namespace qel::codec::j2k {

struct DecodeOptions {
    int reduce = 0;                  // highest resolutions to leave out: each halves the picture
    int layers = 65535;              // of quality, to be decoded at most
    bool transformComponents = true; // undo the component transform
    // What is to be decoded, from the picture's upper left corner on, in samples of the reference grid: pixels before
    // resolutions are left out. Tiles and code-blocks that it does not need are not decoded.
    std::optional<Rect> region = {};
    uint64_t maxPixels = UINT64_MAX; // larger pictures are refused, beside limits of our own
    ProgressReport progress = {};
};

}
