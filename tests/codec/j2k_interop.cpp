// Files of an independent encoder: everything in them is found.
#include <algorithm>

#include "j2k_cases.h"
#include "j2k_reading.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using File = std::vector<uint8_t>;

class J2kInterop : public testing::TestWithParam<OpenJpegCase> {};

TEST_P(J2kInterop, AllPacketsAreRead)
{
    const OpenJpegCase& tested = GetParam();
    File bytes = openJpegEncode(tested);
    ReadJ2k read(bytes);
    EXPECT_EQ(read.warnings, Warnings());
    EXPECT_EQ(read.file.jp2.has_value(), tested.isJp2);
    const J2kSize& size = read.file.codestream->size();
    EXPECT_EQ(int(size.picture.width()), tested.width);
    EXPECT_EQ(int(size.picture.y0), tested.y0);
    EXPECT_EQ(int(size.components.size()), tested.components);
    EXPECT_EQ(read.tiles.size(), size.tiles());
    int smallestPlane = 99;
    for (auto& tile : read.tiles) {
        EXPECT_EQ(tile.packetsRead, tile.packets);
        EXPECT_EQ(tile.style.layers, tested.layers);
        EXPECT_EQ(tile.style.order, tested.order);
    }
    read.forCodedBlocks([&](size_t, const J2kBand& band, const J2kCodeBlock& block) {
        expectSound(band, block);
        int planes = band.bitPlanes - block.zeroBitPlanes;
        smallestPlane = std::min(smallestPlane, planes - int(block.passes() + 2) / 3);
    });
    // The last layer of a reversible file has everything, down to the last bit plane of some code-block; the peer does
    // not shift down what is no region of interest.
    EXPECT_TRUE(smallestPlane == 0 || !tested.isReversible || tested.roiShift);
}

TEST_P(J2kInterop, FewerLayersAndResolutionsAreTheBeginningOfAll)
{
    File bytes = openJpegEncode(GetParam());
    int half = (GetParam().layers + 1) / 2;
    auto all = codedIn(ReadJ2k(bytes)), part = codedIn(ReadJ2k(bytes, {.reduce = 1, .layers = half}));
    for (const Coded& coded : part) {
        auto same = std::ranges::find_if(all, [&](const Coded& other) {
            return coded.component == other.component && coded.kind == other.kind && coded.level == other.level &&
                   coded.x == other.x && coded.y == other.y && coded.data.size() <= other.data.size() &&
                   std::equal(coded.data.begin(), coded.data.end(), other.data.begin());
        });
        EXPECT_NE(same, all.end());
        EXPECT_TRUE(coded.level > 1 || coded.kind == J2kBandKind::ll || GetParam().levels == 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, J2kInterop, testing::ValuesIn(openJpegCases()),
                         [](const auto& tested) { return tested.param.name; });

}
