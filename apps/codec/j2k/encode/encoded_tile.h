// A tile of a JPEG 2000 picture on its way into a file: what the code-block encoder made of it, before it is known how
// much of it the packets take.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/j2k/tile.h"

namespace qel::codec {

// Slopes of rate-distortion curves, squared error gained per byte, as 1024ths of octaves.
using J2kSlope = int32_t;
// Takes all passes, also those that gain nothing.
inline constexpr J2kSlope kJ2kAllPasses = INT32_MIN;

// A place to cut a code-block: no other one gains more for its bytes.
struct J2kTruncation {
    int passes = 0;
    J2kSlope slope = 0; // from the truncation before
};

struct J2kEncodedPass {
    uint32_t end = 0; // bytes of the block that decode to this and all earlier passes; no less than before
    double error = 0; // squared, in samples of the picture, that all passes to this one leave
};

struct J2kEncodedBlock {
    uint32_t x = 0, y = 0; // within its band
    int width = 0, height = 0;
    int zeroBitPlanes = 0;
    double error = 0; // without any pass
    std::vector<J2kEncodedPass> passes;
    std::vector<J2kTruncation> truncations; // slopes fall
    std::vector<uint8_t> data;

    // How many passes are worth a slope.
    int passesAt(J2kSlope slope) const;
    uint32_t bytesOf(int passCount) const { return passCount == 0 ? 0 : passes[size_t(passCount) - 1].end; }
    double errorOf(int passCount) const { return passCount == 0 ? error : passes[size_t(passCount) - 1].error; }
};

struct J2kEncodedBand {
    uint32_t across = 0, down = 0; // code-blocks
    std::vector<J2kEncodedBlock> blocks;
};

struct J2kEncodedPrecinct {
    int style = 0; // of the code-blocks
    std::vector<J2kEncodedBand> bands;
};

struct J2kEncodedTile {
    J2kTile tile; // its precincts have no code-blocks
    std::vector<J2kEncodedPrecinct> precincts;
    std::vector<std::vector<size_t>> firstPrecincts; // of each component's resolutions
};

// The tile with code-blocks that have no passes.
J2kEncodedTile makeEncodedTile(const J2kSize& size, const J2kParameters& parameters, uint32_t index);

size_t countBlocks(const J2kEncodedTile& tile);

}
