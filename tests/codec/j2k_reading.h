// SPDX-License-Identifier: Apache-2.0
// Reading all of a JPEG 2000 file, and whether what was read makes sense.
#pragma once

#include <gtest/gtest.h>

#include "codec/j2k/decode/file.h"
#include "codec/j2k/decode/packet_reader.h"

namespace qel::test {

// Codeword segments have no marker in them, so that most ways to cut them wrongly show.
inline void expectSound(const codec::j2k::Band& band, const codec::j2k::CodeBlock& block)
{
    EXPECT_LE(block.x + block.width, band.rect.width());
    EXPECT_LE(block.y + block.height, band.rect.height());
    EXPECT_GT(block.width * block.height, 0);
    std::vector<uint8_t> data;
    for (codec::Bytes piece : block.data) data.insert(data.end(), piece.begin(), piece.end());
    size_t at = 0;
    for (const codec::j2k::CodeSegment& segment : block.segments) {
        ASSERT_GT(segment.passes, 0u);
        ASSERT_LE(at + segment.length, data.size());
        for (size_t i = 1; i < segment.length; ++i) EXPECT_FALSE(data[at + i - 1] == 0xFF && data[at + i] > 0x8F);
        at += segment.length;
    }
    EXPECT_EQ(at, data.size());
}

// All tiles. Warnings of the file and of the tiles are in `warnings`.
struct ReadJ2k {
    explicit ReadJ2k(codec::Bytes bytes, const codec::j2k::ReadOptions& options = {})
        : file(codec::j2k::open(bytes)), warnings(file.warnings)
    {
        for (auto& [index, parts] : file.codestream->tileParts()) {
            tiles.push_back(codec::j2k::readTile(*file.codestream, index, options));
            auto& more = tiles.back().warnings;
            warnings.insert(warnings.end(), more.begin(), more.end());
        }
    }

    // visit(component, band, block) for every code-block with passes.
    template <class Visit> void forCodedBlocks(Visit visit) const
    {
        for (auto& tile : tiles)
            for (size_t c = 0; c < tile.components.size(); ++c)
                for (auto& resolution : tile.components[c].resolutions)
                    resolution.forCodedBlocks([&](auto& band, auto& block) { visit(c, band, block); });
    }

    codec::j2k::File file;
    codec::Warnings warnings;
    std::vector<codec::j2k::Tile> tiles;
};

// What is coded, without where it is stored.
struct Coded {
    size_t component;
    codec::j2k::BandKind kind;
    int level;
    uint32_t x, y;
    int zeroBitPlanes;
    std::vector<std::pair<uint32_t, uint32_t>> segments;
    std::vector<uint8_t> data;

    bool operator==(const Coded&) const = default;
};

inline std::vector<Coded> codedIn(const ReadJ2k& read)
{
    std::vector<Coded> all;
    read.forCodedBlocks([&](size_t component, const codec::j2k::Band& band, const codec::j2k::CodeBlock& block) {
        Coded& coded =
            all.emplace_back(Coded{component, band.kind, band.level, block.x, block.y, block.zeroBitPlanes, {}, {}});
        for (auto& segment : block.segments) coded.segments.push_back({segment.passes, segment.length});
        for (codec::Bytes piece : block.data) coded.data.insert(coded.data.end(), piece.begin(), piece.end());
    });
    return all;
}

}
