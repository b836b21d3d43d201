// SPDX-License-Identifier: Apache-2.0
// Reads the packets of a tile: which code-blocks have how many passes, and where their bytes are (T.800 B.9, B.10).
#pragma once

#include "codec/j2k/decode/codestream.h"
#include "codec/j2k/tile.h"

namespace qel::codec::j2k {

// What is wanted of a tile. The rest is read over.
struct ReadOptions {
    int reduce = 0; // highest resolutions to leave out; of a component with fewer levels the smallest one remains
    int layers = 65535;
};

// A tile that has tile-parts, with all that is there of it: damage ends a tile early, with a warning. Throws CodecError
// where its headers are damaged. Tiles do not depend on each other: several threads may read them.
Tile readTile(const Codestream& codestream, uint32_t index, const ReadOptions& options = {});

}
