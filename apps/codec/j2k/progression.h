// The order in which the packets of a tile follow each other (T.800 B.12).
#pragma once

#include <functional>

#include "codec/j2k/tile.h"

namespace qel::codec {

struct J2kPacketPlace {
    uint32_t x = 0, y = 0; // of the precinct, on the reference grid
    uint32_t precinct = 0;
    uint16_t component = 0;
    uint8_t resolution = 0;
};

// Calls `read(place, layer)` for each packet of the progression that is not read yet by the tile's account
// (J2kPrecinct::layersRead, which `read` keeps), until it returns false. Returns whether it never did.
bool forJ2kPackets(const J2kSize& size, const J2kTile& tile, const J2kProgression& progression,
                   const std::function<bool(const J2kPacketPlace&, int layer)>& read);

}
