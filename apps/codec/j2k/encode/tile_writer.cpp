// Packets in order.
#include "codec/j2k/encode/tile_writer.h"

#include "codec/j2k/encode/header_writer.h"
#include "codec/j2k/encode/packet_writer.h"
#include "codec/j2k/progression.h"

namespace qel::codec {

void writeJ2kTile(const J2kSize& size, const J2kParameters& parameters, std::span<const J2kSlope> layers,
                  J2kEncodedTile& tile, ByteWriter& out)
{
    size_t begin = beginJ2kTile(out, tile.tile.index);
    std::vector<J2kPacketWriter> writers(tile.precincts.begin(), tile.precincts.end());
    J2kPacket packet;
    J2kProgression all = J2kTileParameters(parameters, {}).progressions().front();
    forJ2kPackets(size, tile.tile, all, [&](const J2kPacketPlace& place, int layer) {
        J2kResolution& resolution = tile.tile.components[place.component].resolutions[place.resolution];
        size_t precinct = tile.firstPrecincts[place.component][place.resolution] + place.precinct;
        writers[precinct].next(layers[size_t(layer)], packet);
        out.append(packet.header);
        for (Bytes piece : packet.body) out.append(piece);
        ++resolution.precincts[place.precinct].layersRead;
        return true;
    });
    finishJ2kTile(out, begin);
}

}
