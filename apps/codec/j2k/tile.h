// SPDX-License-Identifier: Apache-2.0
// A tile of a JPEG 2000 picture with all that is coded of it: components, resolutions, subbands, and the code-blocks
// with the bytes that the packets bring for them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "codec/j2k/headers.h"
#include "codec/j2k/tag_tree.h"

namespace qel::codec::j2k {

// Coding passes that share one termination.
struct CodeSegment {
    uint32_t length = 0; // bytes
    uint32_t passes = 0;
};

struct CodeBlock {
    uint32_t x = 0, y = 0; // within its band
    uint16_t width = 0, height = 0;
    uint16_t zeroBitPlanes = 0; // of those of its band that it has no passes for
    std::vector<CodeSegment> segments;
    std::vector<Bytes> data; // of all segments one after the other, in pieces of the file

    uint32_t passes() const;
};

// What the headers of packets have told so far about a code-block.
struct BlockState {
    uint16_t passes = 0;
    uint8_t lengthBits = 3; // Lblock (T.800 B.10.7.1)
};

struct PrecinctBand {
    uint32_t across = 0, down = 0; // code-blocks
    std::vector<CodeBlock> blocks;
    std::vector<BlockState> states;
    TagTree inclusion, zeroBitPlanes;
};

struct Precinct {
    std::vector<PrecinctBand> bands; // as in the resolution; none before a packet has something for them
    int layersRead = 0;
};

struct Band {
    BandKind kind = BandKind::ll;
    int level = 0; // of decomposition
    Rect rect;
    int blockWidthBits = 0, blockHeightBits = 0; // of this band: no larger than its part of a precinct
    Step step;
    int bitPlanes = 0; // Mb, and those that a region of interest is shifted by: block planes are these less zero ones
};

struct Resolution {
    Rect rect;
    Grid precinctGrid;
    std::vector<Band> bands;         // LL, or HL, LH, HH: the order of the packets
    std::vector<Precinct> precincts; // row by row

    // Calls visit(band, block) for every code-block that has passes.
    template <class Visit> void forCodedBlocks(Visit visit) const
    {
        for (const Precinct& precinct : precincts)
            for (size_t b = 0; b < precinct.bands.size(); ++b)
                for (const CodeBlock& block : precinct.bands[b].blocks)
                    if (!block.segments.empty()) visit(bands[b], block);
    }
};

struct TileComponent {
    Rect rect;
    Coding coding;
    Quantizer quantizer = Quantizer::none;
    int roiShift = 0;
    std::vector<Resolution> resolutions; // coding.levels + 1, from the smallest
};

struct Tile {
    uint32_t index = 0;
    Rect rect;
    TileStyle style;
    std::vector<TileComponent> components;
    uint64_t packets = 0;     // that make up the tile
    uint64_t packetsRead = 0; // all of them in a sound file
    Warnings warnings;
};

// The tile without its packets. Throws CodecError for more precincts than supported, and for missing quantization.
Tile makeTile(const Size& size, const TileParameters& parameters, uint32_t index);

// The code-blocks of a precinct, none with passes.
std::vector<PrecinctBand> makePrecinctBands(const Resolution& resolution, size_t precinct);

// How many code-blocks these would be.
uint64_t countBlocks(const Resolution& resolution, size_t precinct);

}
