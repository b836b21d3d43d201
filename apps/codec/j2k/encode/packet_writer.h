// SPDX-License-Identifier: Apache-2.0
// Writes the packets of a precinct, layer after layer (T.800 B.9, B.10).
#pragma once

#include "codec/base/bytes.h"
#include "codec/j2k/encode/encoded_tile.h"
#include "codec/j2k/packet_bits.h"

namespace qel::codec::j2k {

struct Packet {
    std::vector<uint8_t> header;
    std::vector<Bytes> body; // pieces of the code-blocks

    size_t size() const;
};

// A copy goes on where the original is: so layers can be tried.
class PacketWriter {
public:
    // The precinct has to live on.
    explicit PacketWriter(const EncodedPrecinct& precinct);

    // Makes the packet of the next layer, of all passes worth the slope that earlier layers left out.
    void next(Slope slope, Packet& packet);

private:
    struct Block {
        uint16_t passes = 0, nextPasses = 0; // before and with the current packet
        uint8_t lengthBits = 3;              // Lblock
    };
    struct Band {
        std::vector<Block> blocks;
        TagTreeEncoder inclusion, zeroBitPlanes;
    };

    bool choose(size_t band, Slope slope);
    void writeBlock(size_t band, uint32_t index, PacketBitWriter& bits, Packet& packet);

    const EncodedPrecinct* precinct_;
    std::vector<Band> bands_;
    int layer_ = 0;
};

}
