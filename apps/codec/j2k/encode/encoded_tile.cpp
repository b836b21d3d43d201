// Tiles without passes, and how far these are taken.
#include "codec/j2k/encode/encoded_tile.h"

#include <algorithm>
#include <tuple>

namespace qel::codec {

namespace {

J2kEncodedPrecinct makePrecinct(const J2kResolution& resolution, size_t index, int style)
{
    J2kEncodedPrecinct precinct;
    precinct.style = style;
    for (const J2kPrecinctBand& band : makeJ2kPrecinctBands(resolution, index)) {
        J2kEncodedBand& made = precinct.bands.emplace_back(J2kEncodedBand{band.across, band.down, {}});
        for (const J2kCodeBlock& block : band.blocks) {
            J2kEncodedBlock& encoded = made.blocks.emplace_back();
            std::tie(encoded.x, encoded.y, encoded.width, encoded.height) =
                std::tuple(block.x, block.y, block.width, block.height);
        }
    }
    return precinct;
}

}

int J2kEncodedBlock::passesAt(J2kSlope slope) const
{
    if (slope == kJ2kAllPasses) return int(passes.size());
    auto end = std::ranges::partition_point(truncations, [&](const J2kTruncation& t) { return t.slope >= slope; });
    return end == truncations.begin() ? 0 : std::prev(end)->passes;
}

J2kEncodedTile makeEncodedTile(const J2kSize& size, const J2kParameters& parameters, uint32_t index)
{
    J2kEncodedTile tile;
    tile.tile = makeJ2kTile(size, J2kTileParameters(parameters, {}), index);
    for (const J2kTileComponent& component : tile.tile.components) {
        std::vector<size_t>& first = tile.firstPrecincts.emplace_back();
        for (const J2kResolution& resolution : component.resolutions) {
            first.push_back(tile.precincts.size());
            for (size_t p = 0; p < resolution.precincts.size(); ++p)
                tile.precincts.push_back(makePrecinct(resolution, p, component.coding.style));
        }
    }
    return tile;
}

size_t countBlocks(const J2kEncodedTile& tile)
{
    size_t blocks = 0;
    for (const J2kEncodedPrecinct& precinct : tile.precincts)
        for (const J2kEncodedBand& band : precinct.bands) blocks += band.blocks.size();
    return blocks;
}

}
