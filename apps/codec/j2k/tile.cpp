// SPDX-License-Identifier: Apache-2.0
// Construction of tiles: how components are cut up (T.800 B.5 to B.7).
#include "codec/j2k/tile.h"

#include <numeric>

namespace qel::codec::j2k {

namespace {

// Of one tile. Pictures of usual precincts have a few thousand.
constexpr uint64_t kMaxPrecincts = 1 << 22;

Band makeBand(const TileComponent& component, const Quantization& quantization, int resolution, BandKind kind)
{
    const Coding& coding = component.coding;
    int halved = resolution > 0; // of each precinct a band has half the width and height
    Band band;
    band.kind = kind;
    band.level = coding.levels - resolution + halved;
    band.rect = bandRect(component.rect, band.level, kind);
    band.blockWidthBits = std::min(coding.blockWidthBits, coding.precinctWidthBits[resolution] - halved);
    band.blockHeightBits = std::min(coding.blockHeightBits, coding.precinctHeightBits[resolution] - halved);
    band.step = quantization.step(resolution, kind);
    band.bitPlanes = std::max(0, quantization.guardBits + band.step.exponent - 1) + component.roiShift;
    return band;
}

Resolution makeResolution(const TileComponent& component, const Quantization& quantization, int index)
{
    using enum BandKind;
    const Coding& coding = component.coding;
    Resolution resolution;
    resolution.rect = resolutionRect(component.rect, coding.levels - index);
    resolution.precinctGrid = Grid(resolution.rect, coding.precinctWidthBits[index], coding.precinctHeightBits[index]);
    if (index == 0)
        resolution.bands = {makeBand(component, quantization, 0, ll)};
    else
        for (BandKind kind : {hl, lh, hh}) resolution.bands.push_back(makeBand(component, quantization, index, kind));
    return resolution;
}

TileComponent makeComponent(const Rect& rect, const TileParameters& parameters, int index)
{
    TileComponent component;
    const Quantization& quantization = parameters.quantization(index);
    component.rect = rect;
    component.coding = parameters.coding(index);
    component.quantizer = quantization.kind;
    component.roiShift = parameters.roiShift(index);
    for (int r = 0; r <= component.coding.levels; ++r)
        component.resolutions.push_back(makeResolution(component, quantization, r));
    return component;
}

// The code-blocks of a band that lie in a precinct of its resolution.
struct PrecinctPart {
    PrecinctPart(const Resolution& resolution, const Band& band, size_t precinct)
    {
        // The same cells of the partition, of half the size in a band.
        int halved = resolution.bands.size() > 1;
        Grid cells = resolution.precinctGrid;
        cells.widthBits -= halved;
        cells.heightBits -= halved;
        rect = cells.cell(band.rect, uint32_t(precinct % cells.across), uint32_t(precinct / cells.across));
        if (!rect.isEmpty()) blocks = Grid(rect, band.blockWidthBits, band.blockHeightBits);
    }

    Rect rect;
    Grid blocks;
};

PrecinctBand makePrecinctBand(const PrecinctPart& part, const Band& band)
{
    PrecinctBand made;
    made.across = part.blocks.across;
    made.down = part.blocks.down;
    made.blocks.reserve(part.blocks.cells());
    for (uint32_t row = 0; row < made.down; ++row)
        for (uint32_t column = 0; column < made.across; ++column) {
            Rect rect = part.blocks.cell(part.rect, column, row);
            CodeBlock& block = made.blocks.emplace_back();
            block.x = rect.x0 - band.rect.x0;
            block.y = rect.y0 - band.rect.y0;
            block.width = uint16_t(rect.width());
            block.height = uint16_t(rect.height());
        }
    made.states.resize(made.blocks.size());
    made.inclusion = made.zeroBitPlanes = TagTree(made.across, made.down);
    return made;
}

}

uint32_t CodeBlock::passes() const
{
    return std::accumulate(segments.begin(), segments.end(), 0u,
                           [](uint32_t sum, const CodeSegment& segment) { return sum + segment.passes; });
}

Tile makeTile(const Size& size, const TileParameters& parameters, uint32_t index)
{
    Tile tile;
    tile.index = index;
    tile.rect = size.tile(index);
    tile.style = parameters.style();
    uint64_t precincts = 0;
    for (size_t c = 0; c < size.components.size(); ++c) {
        Rect rect = subsampled(tile.rect, size.components[c].dx, size.components[c].dy);
        tile.components.push_back(makeComponent(rect, parameters, int(c)));
        for (const Resolution& resolution : tile.components.back().resolutions)
            precincts += resolution.precinctGrid.cells();
        if (precincts > kMaxPrecincts) throw CodecError("more precincts in a tile than supported");
    }
    for (TileComponent& component : tile.components)
        for (Resolution& resolution : component.resolutions)
            resolution.precincts.resize(resolution.precinctGrid.cells());
    tile.packets = precincts * uint64_t(tile.style.layers);
    return tile;
}

std::vector<PrecinctBand> makePrecinctBands(const Resolution& resolution, size_t precinct)
{
    std::vector<PrecinctBand> bands;
    for (const Band& band : resolution.bands)
        bands.push_back(makePrecinctBand(PrecinctPart(resolution, band, precinct), band));
    return bands;
}

uint64_t countBlocks(const Resolution& resolution, size_t precinct)
{
    uint64_t blocks = 0;
    for (const Band& band : resolution.bands) blocks += PrecinctPart(resolution, band, precinct).blocks.cells();
    return blocks;
}

}
