// SPDX-License-Identifier: Apache-2.0
// Files of ours in an independent decoder, and its files in ours.
#include <cmath>
#include <filesystem>
#include <utility>

#include <gtest/gtest.h>

#include "codec/base/compare.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "jpeg_cases.h"
#include "libjpeg_peer.h"
#include "manifest.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

void expectEqual(const std::vector<jpeg::Coefficients>& ours, const std::vector<jpeg::Coefficients>& peers)
{
    ASSERT_EQ(ours.size(), peers.size());
    for (size_t i = 0; i < ours.size(); ++i) {
        EXPECT_EQ(ours[i].blocksAcross, peers[i].blocksAcross);
        EXPECT_EQ(ours[i].blocksDown, peers[i].blocksDown);
        EXPECT_TRUE(ours[i].values == peers[i].values) << "component " << i;
    }
}

// Both decode the file to the same coefficients and, but for the rounding of two inverse transforms and colour
// conversions, to the same picture. The conversion of MCUs, which replicates chroma, always rounds down.
void expectDecodedAlike(Bytes file, bool replicate)
{
    jpeg::DecodedCoefficients ours = jpeg::decodeCoefficients(file);
    EXPECT_TRUE(ours.warnings.empty());
    expectEqual(ours.components, peerCoefficients(file));

    jpeg::Upsampling upsampling = replicate ? jpeg::Upsampling::replicate : jpeg::Upsampling::triangle;
    jpeg::Decoded decoded = jpeg::decode(file, {.upsampling = upsampling});
    EXPECT_TRUE(decoded.warnings.empty());
    Difference d = compare(decoded.picture, peerDecode(file, replicate)).whole;
    EXPECT_LE(d.largestError, replicate ? 4 : 3);
    bool tiny = decoded.picture.width() * decoded.picture.height() < 64;
    EXPECT_LE(d.meanSquaredError, replicate ? (tiny ? 1.5 : 0.6) : (tiny ? 1 : 0.3));

    // By planes or by MCUs, replicated chroma differs by its rounding only.
    jpeg::DecodeOptions options = {.upsampling = jpeg::Upsampling::replicate};
    Picture byPlanes = jpeg::decode(file, options).picture;
    options.fast = true;
    d = compare(jpeg::decode(file, options).picture, byPlanes).whole;
    EXPECT_LE(d.largestError, 1);
    EXPECT_LE(d.meanSquaredError, tiny ? 1 : 0.6);
}

// What twenty codings leave of a picture: error, and how far its colours have wandered.
template <class Encode> std::pair<double, double> afterGenerations(const Picture& original, Encode encode)
{
    Picture picture = peerDecode(encode(original));
    for (int i = 1; i < 20; ++i) picture = peerDecode(encode(picture));
    double shift[3] = {}, samples = double(original.width()) * original.height();
    for (size_t i = 0; i < original.sizeInBytes(); ++i) shift[i % 3] += picture.row(0)[i] - original.row(0)[i];
    auto furthest = std::ranges::max(shift, {}, [](double s) { return std::abs(s); });
    return {compare(picture, original).whole.meanSquaredError, std::abs(furthest) / samples};
}

TEST(JpegGenerations, WanderNoFurtherThanThePeers)
{
    Picture original = drawnPicture(320, 240, ColourSpace::rgb);
    for (const jpeg::Samplings& sampling : {jpeg::kSampling420, jpeg::kSampling422, jpeg::kSampling444}) {
        jpeg::EncodeOptions options = {.sampling = sampling};
        auto [error, shift] = afterGenerations(original, [&](auto& p) { return jpeg::encode(p, options); });
        auto [peersError, peersShift] = afterGenerations(original, [&](auto& p) { return peerEncode(p, options); });
        EXPECT_LE(error, 1.05 * peersError + 0.1); // of files that are 2 % smaller
        EXPECT_LE(shift, peersShift + 0.25);
    }
}

struct Measure {
    double logSize, psnr;
};

// Of the same size, photographs of ours are as true as the peer's, whatever steps a quality has.
TEST(JpegQuality, ReachesThePeersAtEqualSize)
{
    auto path = dataFolder() / "photos" / "lake.ppm";
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "there are no photographs";
    Picture picture = loadPicture(readFile(path)).picture;
    auto measure = [&](const std::vector<uint8_t>& file) {
        return Measure{std::log(double(file.size())), compare(peerDecode(file), picture).whole.psnr(8)};
    };
    for (const jpeg::Samplings& sampling : {jpeg::kSampling420, jpeg::kSampling444})
        for (int quality : {75, 85, 90, 95, 97}) {
            auto ours = [&](int q) { return measure(jpeg::encode(picture, {.quality = q, .sampling = sampling})); };
            Measure peers = measure(peerEncode(picture, {.quality = quality, .sampling = sampling}));
            Measure below = ours(quality - 2), above = below;
            for (int q = quality - 1; q <= 100 && above.logSize < peers.logSize; ++q)
                below = std::exchange(above, ours(q));
            double at = (peers.logSize - below.logSize) / (above.logSize - below.logSize);
            ASSERT_TRUE(0 < at && at <= 1) << quality;
            EXPECT_GE(std::lerp(below.psnr, above.psnr, at), peers.psnr - 0.005) << quality;
        }
}

Picture luminanceOf(const Picture& rgb)
{
    Picture grey(rgb.width(), rgb.height(), ColourSpace::grey, 8);
    for (int i = 0; i < rgb.width() * rgb.height(); ++i) {
        const uint8_t* pixel = rgb.row(0) + 3 * i;
        grey.row(0)[i] = uint8_t(0.299 * pixel[0] + 0.587 * pixel[1] + 0.114 * pixel[2] + 0.5);
    }
    return grey;
}

class JpegInterop : public testing::TestWithParam<JpegCase> {
protected:
    // Calls `test` with pictures of many sizes, and whether the peer replicates chroma of one that is so narrow.
    template <class Test> void forEachSize(Test test)
    {
        const std::pair<int, int> sizes[] = {{1, 1},   {2, 3},   {3, 40},   {7, 5},   {8, 8},
                                             {16, 16}, {17, 33}, {101, 80}, {8207, 9}};
        for (auto [width, height] : sizes) {
            SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
            test(drawnPicture(width, height, GetParam().space), width <= 4);
        }
    }
};

TEST_P(JpegInterop, OurFilesInThePeer)
{
    forEachSize([](const Picture& picture, bool replicate) {
        jpeg::EncodeOptions options = GetParam().options;
        auto file = jpeg::encode(picture, options);
        expectDecodedAlike(file, replicate);
        if (options.quality < 90) return; // where a rounding may be a large step
        options.fast = true; // which rounds chroma down, and coefficients in the middle between two to the even one
        Picture decoded = jpeg::decode(jpeg::encode(picture, options)).picture;
        EXPECT_LE(compare(decoded, jpeg::decode(file).picture).whole.meanSquaredError, 5);
    });
}

TEST_P(JpegInterop, PeersFilesInOurs)
{
    forEachSize([](const Picture& picture, bool replicate) {
        expectDecodedAlike(peerEncode(picture, GetParam().options), replicate);
    });
}

// As true to the picture as the peer, and no longer.
TEST_P(JpegInterop, EncodesAsWellAsThePeer)
{
    Picture picture = drawnPicture(320, 240, GetParam().space);
    auto ours = jpeg::encode(picture, GetParam().options), peers = peerEncode(picture, GetParam().options);
    if (GetParam().options.target == jpeg::Target::grey) picture = luminanceOf(picture);
    double ourError = compare(peerDecode(ours), picture).whole.meanSquaredError;
    double peersError = compare(peerDecode(peers), picture).whole.meanSquaredError;
    EXPECT_LE(ourError, 1.02 * peersError + 0.1);
    EXPECT_LE(double(ours.size()), 1.01 * double(peers.size()) + 16);
}

INSTANTIATE_TEST_SUITE_P(Cases, JpegInterop, testing::ValuesIn(jpegCases()),
                         [](const auto& tested) { return tested.param.name; });

}
