// SPDX-License-Identifier: Apache-2.0
// Packets in order.
#include "codec/j2k/encode/tile_writer.h"

#include "codec/j2k/encode/header_writer.h"
#include "codec/j2k/encode/packet_writer.h"
#include "codec/j2k/progression.h"

namespace qel::codec::j2k {

void writeTile(const Size& size, const Parameters& parameters, std::span<const Slope> layers, EncodedTile& tile,
               ByteWriter& out)
{
    size_t begin = beginTile(out, tile.tile.index);
    std::vector<PacketWriter> writers(tile.precincts.begin(), tile.precincts.end());
    Packet packet;
    Progression all = TileParameters(parameters, {}).progressions().front();
    forPackets(size, tile.tile, all, [&](const PacketPlace& place, int layer) {
        Resolution& resolution = tile.tile.components[place.component].resolutions[place.resolution];
        size_t precinct = tile.firstPrecincts[place.component][place.resolution] + place.precinct;
        writers[precinct].next(layers[size_t(layer)], packet);
        out.append(packet.header);
        for (Bytes piece : packet.body) out.append(piece);
        ++resolution.precincts[place.precinct].layersRead;
        return true;
    });
    finishTile(out, begin);
}

}
