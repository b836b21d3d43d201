// SPDX-License-Identifier: Apache-2.0
// Tiles without passes, and how far these are taken.
#include "codec/j2k/encode/encoded_tile.h"

#include <algorithm>
#include <tuple>

namespace qel::codec::j2k {

namespace {

EncodedPrecinct makePrecinct(const Resolution& resolution, size_t index, int style)
{
    EncodedPrecinct precinct;
    precinct.style = style;
    for (const PrecinctBand& band : makePrecinctBands(resolution, index)) {
        EncodedBand& made = precinct.bands.emplace_back(EncodedBand{band.across, band.down, {}});
        for (const CodeBlock& block : band.blocks) {
            EncodedBlock& encoded = made.blocks.emplace_back();
            std::tie(encoded.x, encoded.y, encoded.width, encoded.height) =
                std::tuple(block.x, block.y, block.width, block.height);
        }
    }
    return precinct;
}

}

int EncodedBlock::passesAt(Slope slope) const
{
    if (slope == kAllPasses) return int(passes.size());
    auto end = std::ranges::partition_point(truncations, [&](const Truncation& t) { return t.slope >= slope; });
    return end == truncations.begin() ? 0 : std::prev(end)->passes;
}

EncodedTile makeEncodedTile(const Size& size, const Parameters& parameters, uint32_t index)
{
    EncodedTile tile;
    tile.tile = makeTile(size, TileParameters(parameters, {}), index);
    for (const TileComponent& component : tile.tile.components) {
        std::vector<size_t>& first = tile.firstPrecincts.emplace_back();
        for (const Resolution& resolution : component.resolutions) {
            first.push_back(tile.precincts.size());
            for (size_t p = 0; p < resolution.precincts.size(); ++p)
                tile.precincts.push_back(makePrecinct(resolution, p, component.coding.style));
        }
    }
    return tile;
}

size_t countBlocks(const EncodedTile& tile)
{
    size_t blocks = 0;
    for (const EncodedPrecinct& precinct : tile.precincts)
        for (const EncodedBand& band : precinct.bands) blocks += band.blocks.size();
    return blocks;
}

}
