// SPDX-License-Identifier: Apache-2.0
// The components of a JPEG 2000 picture as they were coded: decoded tile by tile.
#pragma once

#include <optional>
#include <vector>

#include "codec/j2k/decode/file.h"
#include "codec/j2k/decode/options.h"
#include "codec/j2k/plane.h"

namespace qel::codec::j2k {

// Of one component; where it lies divides the reference grid by dx, dy and the reduction.
struct Samples {
    int precision = 8;
    bool isSigned = false;
    uint32_t dx = 1, dy = 1;
    Rect rect;
    Plane<int32_t> plane;
};

// The region on the reference grid, as far as the picture goes; all of it where none is asked for. Throws CodecError
// for a region outside.
Rect regionOf(const Size& size, const DecodeOptions& options);

// The same, and what components of fewer samples need around it.
Rect neededRegion(const Size& size, const DecodeOptions& options);

struct Image {
    std::vector<Samples> components; // those that were not asked for have no samples
    Warnings warnings;               // damage that was survived
};

// All components, or only one, in the tiles that the region touches. Throws CodecError where nothing can be decoded,
// and for pictures that are too large, before memory is taken for them. What is missing is grey, or whatever the data
// that is there makes of it.
Image decodeComponents(const Codestream& codestream, const DecodeOptions& options,
                       std::optional<size_t> component = {});

}
