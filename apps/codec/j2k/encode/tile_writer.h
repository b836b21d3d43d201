// SPDX-License-Identifier: Apache-2.0
// Writes a tile: one tile-part with all packets in the order of the progression (T.800 A.4.2, B.12).
#pragma once

#include <span>

#include "codec/base/byte_writer.h"
#include "codec/j2k/encode/encoded_tile.h"

namespace qel::codec::j2k {

// Of each code-block, a layer has what is worth the layer's slope. The account of the tile's packets has to be empty.
void writeTile(const Size& size, const Parameters& parameters, std::span<const Slope> layers, EncodedTile& tile,
               ByteWriter& out);

}
