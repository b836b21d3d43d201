// SPDX-License-Identifier: Apache-2.0
// A region of a JPEG 2000 picture is what the whole picture has there, and takes no more than it needs.
#include "codec/base/error.h"
#include "codec/j2k/decode/reader.h"
#include "codec/j2k/encode/writer.h"
#include "openjpeg_peer.h"
#include "pictures.h"
#include "random.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using j2k::Rect;

std::vector<uint8_t> samplesOf(const Picture& picture, const Rect& rect)
{
    std::vector<uint8_t> samples;
    size_t pixel = picture.step() / size_t(picture.width());
    for (uint32_t y = rect.y0; y < rect.y1; ++y)
        samples.insert(samples.end(), picture.row(int(y)) + rect.x0 * pixel, picture.row(int(y)) + rect.x1 * pixel);
    return samples;
}

int largestDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b)
{
    int largest = a.size() == b.size() ? 0 : 255;
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
    return largest;
}

// `at` is where the picture lies on the reference grid.
void expectRegions(Bytes file, const Rect& at, int reduce, int tolerance)
{
    const Picture whole = j2k::decode(file, {.reduce = reduce}).picture;
    const Rect first = j2k::resolutionRect(at, reduce);
    Random random(7);
    auto below = [&](uint32_t end) { return uint32_t(random.between(0, int(end) - 1)); };
    for (int i = 0; i < 40; ++i) {
        uint32_t x = below(at.width()), y = below(at.height());
        Rect region = {x, y, x + 1 + below(i % 2 ? 300 : 9), y + 1 + below(i % 2 ? 300 : 9)};
        Rect onGrid = {at.x0 + region.x0, at.y0 + region.y0, std::min(at.x0 + region.x1, at.x1),
                       std::min(at.y0 + region.y1, at.y1)};
        Rect rect = j2k::resolutionRect(onGrid, reduce);
        if (rect.isEmpty()) continue;
        Picture part = j2k::decode(file, {.reduce = reduce, .region = region}).picture;
        ASSERT_EQ(part.width(), int(rect.width()));
        ASSERT_EQ(part.height(), int(rect.height()));
        Rect inWhole = {rect.x0 - first.x0, rect.y0 - first.y0, rect.x1 - first.x0, rect.y1 - first.y0};
        std::vector<uint8_t> samples = samplesOf(part, {0, 0, rect.width(), rect.height()});
        ASSERT_LE(largestDifference(samples, samplesOf(whole, inWhole)), tolerance) << x << ", " << y << ", " << reduce;
    }
}

class J2kRegion : public testing::TestWithParam<OpenJpegCase> {};

TEST_P(J2kRegion, IsThatPartOfTheWhole)
{
    const OpenJpegCase& tested = GetParam();
    std::vector<uint8_t> file = openJpegEncode(tested);
    Rect at = {uint32_t(tested.x0), uint32_t(tested.y0), uint32_t(tested.x0 + tested.width),
               uint32_t(tested.y0 + tested.height)};
    // Of YCbCr the last columns of each row are rounded otherwise, wherever the row ends.
    int tolerance = tested.chromaDx > 1 ? 1 : 0;
    for (int reduce = 0; reduce <= std::min(2, tested.levels); ++reduce) expectRegions(file, at, reduce, tolerance);
}

std::vector<OpenJpegCase> regionCases()
{
    const OpenJpegCase large = {.name = "reversible", .width = 301, .height = 260, .levels = 5, .blockWidth = 16};
    OpenJpegCase irreversible = large;
    irreversible.name = "irreversible";
    irreversible.isReversible = false;
    OpenJpegCase tiles = {.name = "tiles", .width = 200, .height = 190, .x0 = 13, .y0 = 7, .components = 3};
    tiles.tileWidth = 37, tiles.tileHeight = 41, tiles.tx0 = 5, tiles.ty0 = 3;
    tiles.blockWidth = 8;
    OpenJpegCase halved = tiles;
    halved.name = "halved_chroma";
    halved.chromaDx = halved.chromaDy = 2;
    halved.isReversible = false;
    tiles.transformsComponents = true;
    return {large,
            irreversible,
            tiles,
            halved,
            {.name = "no_levels", .width = 90, .height = 80, .levels = 0, .blockHeight = 8}};
}
INSTANTIATE_TEST_SUITE_P(All, J2kRegion, testing::ValuesIn(regionCases()),
                         [](const auto& tested) { return tested.param.name; });

TEST(J2kRegions, NeedNothingElsewhere)
{
    Picture picture = drawnPicture(600, 500, ColourSpace::grey, 8);
    for (auto tile : {std::optional<std::pair<uint32_t, uint32_t>>(), {{256, 256}}}) {
        j2k::EncodeOptions options = {.isLossless = true, .tile = tile};
        options.termination = j2k::Termination::predictable;
        std::vector<uint8_t> file = j2k::encode(picture, options);
        for (size_t i = file.size() - 400; i < file.size() - 200; ++i) file[i] ^= 0x55;
        EXPECT_TRUE(j2k::decode(file).isDamaged);
        EXPECT_TRUE(j2k::decode(file, {.region = Rect{400, 400, 600, 500}}).isDamaged);
        DecodedPicture sound = j2k::decode(file, {.region = Rect{0, 0, 200, 100}});
        EXPECT_FALSE(sound.isDamaged);
        EXPECT_EQ(samplesOf(sound.picture, {0, 0, 200, 100}), samplesOf(picture, {0, 0, 200, 100}));
    }
}

TEST(J2kRegions, AreWithinThePicture)
{
    std::vector<uint8_t> file = j2k::encode(drawnPicture(30, 20, ColourSpace::grey, 8));
    EXPECT_EQ(j2k::decode(file, {.region = Rect{29, 0, UINT32_MAX, UINT32_MAX}}).picture.width(), 1);
    for (Rect outside : {Rect{30, 0, 40, 10}, {0, 20, 10, 30}, {4, 4, 4, 8}, {9, 9, 8, 8}})
        EXPECT_THROW(j2k::decode(file, {.region = outside}), CodecError);
}

}
