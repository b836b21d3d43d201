// SPDX-License-Identifier: Apache-2.0
// A JPEG 2000 codestream, taken apart into its headers and the tile-parts of each tile (T.800 Annex A).
#pragma once

#include <map>
#include <vector>

#include "codec/j2k/headers.h"

namespace qel::codec::j2k {

struct TilePart {
    uint32_t tile = 0;
    int index = 0; // among the tile-parts of its tile
    int count = 0; // of tile-parts of its tile; 0 where it is not told
    size_t position = 0;
    bool isCut = false;  // by the end of the file
    Bytes header;        // marker segments between SOT and SOD
    Bytes body;          // packets, as far as the file goes
    Bytes packetHeaders; // of its packets, where the main header has them; points into the codestream object
};

// What all tile-part headers of a tile say.
struct TileHeader {
    Parameters parameters;
    std::vector<uint8_t> packetHeaders; // of its packets, where headers have them
};

class Codestream {
public:
    // Reads the part of the file from byte `begin` on, up to `end`. Throws CodecError for a bad main header, and where
    // there is no tile that begins. The bytes have to live on.
    Codestream(Bytes file, size_t begin, size_t end);
    Codestream(const Codestream&) = delete;
    Codestream& operator=(const Codestream&) = delete;

    size_t bytes() const { return file_.size(); }
    const Size& size() const { return size_; }
    const Parameters& parameters() const { return parameters_; } // of the main header
    bool hasPackedHeaders() const { return !packedHeaders_.empty(); }
    // By tile, and then in the order of their index without gaps; a tile of which the first is missing is not there.
    const std::map<uint32_t, std::vector<TilePart>>& tileParts() const { return tileParts_; }
    // Of a tile that is there. Throws CodecError for damaged headers.
    TileHeader tileHeader(uint32_t tile) const;
    size_t positionOf(const uint8_t* byte) const { return size_t(byte - file_.data()); }
    // Damage that was survived.
    const Warnings& warnings() const { return warnings_; }

private:
    size_t readMainHeader(size_t at);
    void splitPackedHeaders();
    void readTileParts(size_t at);
    void sortTileParts();
    size_t lastEoc(size_t from) const;
    TilePart readTilePart(const Segment& start, size_t& at);
    void warn(const std::string& what, size_t position);

    Bytes file_; // up to the end of the codestream
    Size size_;
    Parameters parameters_;
    std::vector<uint8_t> packedHeaders_;
    std::vector<Bytes> packedParts_; // of one tile-part after the other
    std::map<uint32_t, std::vector<TilePart>> tileParts_;
    Warnings warnings_;
};

}
