// SPDX-License-Identifier: Apache-2.0
// A tile of a JPEG 2000 picture on its way into a file: what the code-block encoder made of it, before it is known how
// much of it the packets take.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/j2k/tile.h"

namespace qel::codec::j2k {

// Slopes of rate-distortion curves, squared error gained per byte, as 1024ths of octaves.
using Slope = int32_t;
// Takes all passes, also those that gain nothing.
inline constexpr Slope kAllPasses = INT32_MIN;

// A place to cut a code-block: no other one gains more for its bytes.
struct Truncation {
    int passes = 0;
    Slope slope = 0; // from the truncation before
};

struct EncodedPass {
    uint32_t end = 0; // bytes of the block that decode to this and all earlier passes; no less than before
    double error = 0; // squared, in samples of the picture, that all passes to this one leave
};

struct EncodedBlock {
    uint32_t x = 0, y = 0; // within its band
    int width = 0, height = 0;
    int zeroBitPlanes = 0;
    double error = 0; // without any pass
    std::vector<EncodedPass> passes;
    std::vector<Truncation> truncations; // slopes fall
    std::vector<uint8_t> data;

    // How many passes are worth a slope.
    int passesAt(Slope slope) const;
    uint32_t bytesOf(int passCount) const { return passCount == 0 ? 0 : passes[size_t(passCount) - 1].end; }
    double errorOf(int passCount) const { return passCount == 0 ? error : passes[size_t(passCount) - 1].error; }
};

struct EncodedBand {
    uint32_t across = 0, down = 0; // code-blocks
    std::vector<EncodedBlock> blocks;
};

struct EncodedPrecinct {
    int style = 0; // of the code-blocks
    std::vector<EncodedBand> bands;
};

struct EncodedTile {
    Tile tile; // its precincts have no code-blocks
    std::vector<EncodedPrecinct> precincts;
    std::vector<std::vector<size_t>> firstPrecincts; // of each component's resolutions
};

// The tile with code-blocks that have no passes.
EncodedTile makeEncodedTile(const Size& size, const Parameters& parameters, uint32_t index);

size_t countBlocks(const EncodedTile& tile);

}
