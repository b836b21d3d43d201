// SPDX-License-Identifier: Apache-2.0
// The order in which the packets of a tile follow each other (T.800 B.12).
#pragma once

#include <functional>

#include "codec/j2k/tile.h"

namespace qel::codec::j2k {

struct PacketPlace {
    uint32_t x = 0, y = 0; // of the precinct, on the reference grid
    uint32_t precinct = 0;
    uint16_t component = 0;
    uint8_t resolution = 0;
};

// Calls `read(place, layer)` for each packet of the progression that is not read yet by the tile's account
// (Precinct::layersRead, which `read` keeps), until it returns false. Returns whether it never did.
bool forPackets(const Size& size, const Tile& tile, const Progression& progression,
                const std::function<bool(const PacketPlace&, int layer)>& read);

}
