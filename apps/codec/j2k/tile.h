// A tile of a JPEG 2000 picture with all that is coded of it: components, resolutions, subbands, and the code-blocks
// with the bytes that the packets bring for them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "codec/j2k/headers.h"
#include "codec/j2k/tag_tree.h"

namespace qel::codec {

// Coding passes that share one termination.
struct J2kCodeSegment {
    uint32_t length = 0; // bytes
    uint32_t passes = 0;
};

struct J2kCodeBlock {
    uint32_t x = 0, y = 0; // within its band
    uint16_t width = 0, height = 0;
    uint16_t zeroBitPlanes = 0; // of those of its band that it has no passes for
    std::vector<J2kCodeSegment> segments;
    std::vector<Bytes> data; // of all segments one after the other, in pieces of the file

    uint32_t passes() const;
};

// What the headers of packets have told so far about a code-block.
struct J2kBlockState {
    uint16_t passes = 0;
    uint8_t lengthBits = 3; // Lblock (T.800 B.10.7.1)
};

struct J2kPrecinctBand {
    uint32_t across = 0, down = 0; // code-blocks
    std::vector<J2kCodeBlock> blocks;
    std::vector<J2kBlockState> states;
    TagTree inclusion, zeroBitPlanes;
};

struct J2kPrecinct {
    std::vector<J2kPrecinctBand> bands; // as in the resolution; none before a packet has something for them
    int layersRead = 0;
};

struct J2kBand {
    J2kBandKind kind = J2kBandKind::ll;
    int level = 0; // of decomposition
    J2kRect rect;
    int blockWidthBits = 0, blockHeightBits = 0; // of this band: no larger than its part of a precinct
    J2kStep step;
    int bitPlanes = 0; // Mb, and those that a region of interest is shifted by: block planes are these less zero ones
};

struct J2kResolution {
    J2kRect rect;
    J2kGrid precinctGrid;
    std::vector<J2kBand> bands;         // LL, or HL, LH, HH: the order of the packets
    std::vector<J2kPrecinct> precincts; // row by row

    // Calls visit(band, block) for every code-block that has passes.
    template <class Visit> void forCodedBlocks(Visit visit) const
    {
        for (const J2kPrecinct& precinct : precincts)
            for (size_t b = 0; b < precinct.bands.size(); ++b)
                for (const J2kCodeBlock& block : precinct.bands[b].blocks)
                    if (!block.segments.empty()) visit(bands[b], block);
    }
};

struct J2kTileComponent {
    J2kRect rect;
    J2kCoding coding;
    J2kQuantizer quantizer = J2kQuantizer::none;
    int roiShift = 0;
    std::vector<J2kResolution> resolutions; // coding.levels + 1, from the smallest
};

struct J2kTile {
    uint32_t index = 0;
    J2kRect rect;
    J2kTileStyle style;
    std::vector<J2kTileComponent> components;
    uint64_t packets = 0;     // that make up the tile
    uint64_t packetsRead = 0; // all of them in a sound file
    Warnings warnings;
};

// The tile without its packets. Throws CodecError for more precincts than supported, and for missing quantization.
J2kTile makeJ2kTile(const J2kSize& size, const J2kTileParameters& parameters, uint32_t index);

// The code-blocks of a precinct, none with passes.
std::vector<J2kPrecinctBand> makeJ2kPrecinctBands(const J2kResolution& resolution, size_t precinct);

// How many code-blocks these would be.
uint64_t countJ2kBlocks(const J2kResolution& resolution, size_t precinct);

}
