// Where things lie: numbers worked out by hand.
#include "codec/j2k_geometry.h"

#include <gtest/gtest.h>

#include "codec/j2k_tile.h"

namespace qel::codec {

inline void PrintTo(const J2kRect& r, std::ostream* out) { *out << r.x0 << ',' << r.y0 << ".." << r.x1 << ',' << r.y1; }

}

namespace {

using namespace qel::codec;
using enum J2kBandKind;

J2kSize sizeOf(J2kRect picture, J2kRect firstTile, std::vector<J2kComponent> components)
{
    J2kSize size;
    size.picture = picture;
    size.firstTile = firstTile;
    size.components = std::move(components);
    return size;
}

// The picture of T.800 B.4: 4:2:0, tiles of 396 x 297, and an offset that leaves the first tiles smaller.
TEST(J2kGeometry, TilesAndComponents)
{
    J2kSize size = sizeOf({152, 234, 1432, 954}, {0, 0, 396, 297}, {{8, false, 1, 1}, {8, false, 2, 2}});
    EXPECT_EQ(size.tilesAcross(), 4u);
    EXPECT_EQ(size.tilesDown(), 4u);
    EXPECT_EQ(size.tile(0), (J2kRect{152, 234, 396, 297}));
    EXPECT_EQ(size.tile(5), (J2kRect{396, 297, 792, 594}));
    EXPECT_EQ(size.tile(15), (J2kRect{1188, 891, 1432, 954}));
    EXPECT_EQ(subsampled(size.tile(0), 2, 2), (J2kRect{76, 117, 198, 149}));
    EXPECT_EQ(subsampled(size.tile(5), 2, 2), (J2kRect{198, 149, 396, 297}));
    EXPECT_EQ(size.component(1), (J2kRect{76, 117, 716, 477}));
}

TEST(J2kGeometry, TilesUpToTheEndOfTheGrid)
{
    J2kSize size = sizeOf({0, 0, UINT32_MAX, 1}, {0, 0, UINT32_MAX, UINT32_MAX}, {{}});
    EXPECT_EQ(size.tiles(), 1u);
    EXPECT_EQ(size.tile(0), size.picture);
    size.firstTile.x1 = 0x80000000;
    EXPECT_EQ(size.tiles(), 2u);
    EXPECT_EQ(size.tile(1), (J2kRect{0x80000000, 0, UINT32_MAX, 1}));
}

TEST(J2kGeometry, Bands)
{
    J2kRect odd = {17, 5, 30, 6};
    EXPECT_EQ(resolutionRect(odd, 0), odd);
    EXPECT_EQ(resolutionRect(odd, 1), (J2kRect{9, 3, 15, 3})); // no row is low
    EXPECT_EQ(bandRect(odd, 1, hl), (J2kRect{8, 3, 15, 3}));
    EXPECT_EQ(bandRect(odd, 1, lh), (J2kRect{9, 2, 15, 3}));
    EXPECT_EQ(bandRect(odd, 1, hh), (J2kRect{8, 2, 15, 3}));
    EXPECT_EQ(bandRect(odd, 3, ll), (J2kRect{3, 1, 4, 1}));
    EXPECT_EQ(bandRect(odd, 3, hh), (J2kRect{2, 1, 4, 1})); // ceil(13 / 8), ceil(1 / 8), ceil(26 / 8), ceil(2 / 8)
    EXPECT_EQ(bandRect({0, 0, UINT32_MAX, 1}, 32, ll), (J2kRect{0, 0, 1, 1}));
    EXPECT_EQ(bandRect({0, 0, UINT32_MAX, 1}, 32, hh), (J2kRect{0, 0, 1, 0}));
}

TEST(J2kGeometry, CellsOfAPartition)
{
    J2kRect rect = {5, 8, 17, 9};
    J2kGrid grid(rect, 3, 2);
    EXPECT_EQ(grid.across, 3u);
    EXPECT_EQ(grid.down, 1u);
    EXPECT_EQ(grid.cell(rect, 0, 0), (J2kRect{5, 8, 8, 9}));
    EXPECT_EQ(grid.cell(rect, 1, 0), (J2kRect{8, 8, 16, 9}));
    EXPECT_EQ(grid.cell(rect, 2, 0), (J2kRect{16, 8, 17, 9}));
    EXPECT_EQ(J2kGrid({5, 8, 5, 9}, 3, 2).cells(), 0u);
    EXPECT_EQ(J2kGrid({0, 0, UINT32_MAX, UINT32_MAX}, 15, 15).cells(), uint64_t(1) << 34);
}

// One level below: precincts of 8 x 8 there and of 16 x 8 above, where each band has cells of 8 x 4. Code-blocks of
// 8 x 4 fit both.
TEST(J2kGeometry, PrecinctsAndCodeBlocks)
{
    J2kSize size = sizeOf({3, 2, 23, 14}, {0, 0, 100, 100}, {{}});
    J2kParameters parameters;
    parameters.style.emplace().layers = 3;
    J2kCoding& coding = parameters.coding.emplace();
    coding.levels = 1;
    coding.blockWidthBits = 3;
    coding.blockHeightBits = 5;
    coding.precinctWidthBits = {3, 4};
    coding.precinctHeightBits = {3, 3};
    J2kQuantization& quantization = parameters.quantization.emplace();
    quantization.guardBits = 2;
    quantization.steps = {{8, 0}, {9, 0}, {10, 0}, {11, 0}};
    parameters.roiShifts[0] = 5;
    J2kTile tile = makeJ2kTile(size, {parameters, J2kParameters()}, 0);
    auto& resolutions = tile.components[0].resolutions;

    // From (2, 1) to (12, 7): cells meet at x = 8, and nowhere in y.
    EXPECT_EQ(resolutions[0].rect, (J2kRect{2, 1, 12, 7}));
    EXPECT_EQ(resolutions[0].precincts.size(), 2u);
    // From (3, 2) to (23, 14): at x = 16 and y = 8.
    EXPECT_EQ(resolutions[1].precincts.size(), 4u);
    EXPECT_EQ(tile.packets, 3u * (2 + 4));
    EXPECT_EQ(resolutions[0].bands[0].bitPlanes, 2 + 8 - 1 + 5);
    const J2kBand& hl = resolutions[1].bands[0];
    EXPECT_EQ(hl.rect, (J2kRect{1, 1, 11, 7}));
    EXPECT_EQ(hl.bitPlanes, 2 + 9 - 1 + 5);
    EXPECT_EQ(resolutions[1].bands[1].bitPlanes, 2 + 10 - 1 + 5);

    // The upper right precinct of HL: from (8, 1) to (11, 4).
    auto bands = makeJ2kPrecinctBands(resolutions[1], 1);
    ASSERT_EQ(bands[0].blocks.size(), 1u);
    EXPECT_EQ(bands[0].blocks[0].x, 7u);
    EXPECT_EQ(bands[0].blocks[0].y, 0u);
    EXPECT_EQ(bands[0].blocks[0].width, 3);
    EXPECT_EQ(bands[0].blocks[0].height, 3);
    // The lower left one: from (1, 4) to (8, 7).
    bands = makeJ2kPrecinctBands(resolutions[1], 2);
    EXPECT_EQ(bands[0].blocks[0].y, 3u);
    EXPECT_EQ(bands[0].blocks[0].width, 7);
    EXPECT_EQ(countJ2kBlocks(resolutions[1], 2), 3u);
}

// The samples of all code-blocks are those of the tile-component, once.
TEST(J2kGeometry, CodeBlocksCoverTheTile)
{
    J2kSize size = sizeOf({13, 7, 90, 75}, {0, 0, 100, 100}, {{8, false, 2, 1}});
    J2kParameters parameters;
    parameters.style.emplace();
    J2kCoding& coding = parameters.coding.emplace();
    coding.levels = 3;
    coding.blockWidthBits = 2;
    coding.blockHeightBits = 3;
    coding.precinctWidthBits = {1, 2, 4, 3};
    coding.precinctHeightBits = {3, 15, 2, 4};
    parameters.quantization.emplace().steps.resize(10);
    J2kTile tile = makeJ2kTile(size, {parameters, J2kParameters()}, 0);
    uint64_t samples = 0;
    for (auto& resolution : tile.components[0].resolutions)
        for (size_t p = 0; p < resolution.precincts.size(); ++p)
            for (auto& band : makeJ2kPrecinctBands(resolution, p))
                for (auto& block : band.blocks) samples += uint64_t(block.width) * block.height;
    EXPECT_EQ(samples, tile.components[0].rect.area());
    EXPECT_EQ(samples, 38u * 68);
}

}
