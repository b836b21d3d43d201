// SPDX-License-Identifier: Apache-2.0
// JPEG 2000 files: an independent decoder reads them, and the reading side finds nothing wrong in them.
#include "codec/j2k/encode/writer.h"

#include <algorithm>

#include "codec/base/compare.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/reader.h"
#include "ffmpeg_peer.h"
#include "j2k_reading.h"
#include "manifest.h"
#include "openjpeg_peer.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using enum ColourSpace;
using File = std::vector<uint8_t>;

struct WriterCase {
    std::string name;
    int width = 97, height = 71;
    ColourSpace space = grey;
    int precision = 8;
    j2k::EncodeOptions options = {};

    friend void PrintTo(const WriterCase& tested, std::ostream* out) { *out << tested.name; }
};

void addStyles(std::vector<WriterCase>& cases)
{
    using namespace j2k::style;
    for (int style : {1, 2, 4, 8, 32, 5, 6, 13, 20, 21, 38, 47, 63})
        cases.push_back(
            {.name = "style_" + std::to_string(style), .precision = 12, .options = {.layers = 3, .style = style}});
    for (auto termination : {j2k::Termination::flush, j2k::Termination::shortest, j2k::Termination::predictable})
        for (int style : {0, kBypass, kTerminateEvery, kBypass | kTerminateEvery})
            cases.push_back({.name = "termination_" + std::to_string(int(termination)) + "_" + std::to_string(style),
                             .options = {.style = style, .termination = termination}});
}

void addOrders(std::vector<WriterCase>& cases)
{
    const char* orders[] = {"lrcp", "rlcp", "rpcl", "pcrl", "cprl"};
    for (int order = 0; order < 5; ++order) {
        WriterCase tested = {orders[order], 130, 101, rgb};
        tested.options = {.layers = 4, .order = j2k::Order(order), .precincts = {{32, 64}, {64, 16}}};
        cases.push_back(tested);
        tested.name += "_tiles";
        tested.options.tile = {50, 39};
        cases.push_back(tested);
    }
}

void addSizes(std::vector<WriterCase>& cases)
{
    const std::pair<int, int> sizes[] = {{1, 1}, {1, 70}, {70, 1}, {2, 3}, {16, 16}, {64, 65}, {300, 5}};
    for (auto [width, height] : sizes) {
        std::string name = "size_" + std::to_string(width) + "_" + std::to_string(height);
        cases.push_back({name, width, height, rgb});
        cases.push_back({name + "_levels", width, height, rgb, 8, {.levels = 7, .tile = {{33, 31}}}});
    }
    for (int precision : {1, 2, 5, 9, 12, 15, 16})
        for (ColourSpace space : {grey, rgb, cmyk})
            cases.push_back({"bits_" + std::to_string(precision) + "_" + std::to_string(channelsOf(space)), 60, 50,
                             space, precision});
    const std::pair<int, int> blocks[] = {{4, 4}, {1024, 4}, {4, 1024}, {32, 64}};
    for (auto [width, height] : blocks)
        cases.push_back({"blocks_" + std::to_string(width) + "_" + std::to_string(height),
                         200,
                         150,
                         grey,
                         8,
                         {.blockWidth = width, .blockHeight = height}});
}

std::vector<WriterCase> writerCases()
{
    std::vector<WriterCase> cases = {
        {"plain"},
        {"colour", 97, 71, rgb},
        {"inks", 97, 71, cmyk},
        {"codestream", 97, 71, rgb, 8, {.isJp2 = false}},
        {"no_levels", 97, 71, rgb, 8, {.levels = 0}},
        {"all_levels", 97, 71, rgb, 8, {.levels = 32}},
        {"many_layers", 97, 71, rgb, 8, {.layers = 40}},
        {"smallest_precincts", 97, 71, rgb, 8, {.precincts = {{2, 2}, {1024, 4}}}},
    };
    addStyles(cases);
    addOrders(cases);
    addSizes(cases);
    return cases;
}

// No warnings, and no packet missing.
void expectComplete(const File& file, const WriterCase& tested)
{
    ReadJ2k read(file);
    EXPECT_EQ(read.warnings, Warnings());
    EXPECT_EQ(read.file.jp2.has_value(), tested.options.isJp2);
    for (auto& tile : read.tiles) {
        EXPECT_EQ(tile.packetsRead, tile.packets);
        EXPECT_EQ(tile.style.layers, tested.options.layers);
    }
    read.forCodedBlocks([&](size_t, const j2k::Band& band, const j2k::CodeBlock& block) { expectSound(band, block); });
}

double psnr(const Picture& a, const Picture& b) { return compare(a, b).whole.psnr(a.precision()); }

class J2kWriter : public testing::TestWithParam<WriterCase> {};

TEST_P(J2kWriter, LosslessFilesAreThePicture)
{
    WriterCase tested = GetParam();
    tested.options.isLossless = true;
    for (bool isNoise : {false, true}) {
        Picture picture = (isNoise ? randomPicture : drawnPicture)(tested.width, tested.height, tested.space,
                                                                   tested.precision, false);
        File file = j2k::encode(picture, tested.options);
        expectComplete(file, tested);
        expectSame(openJpegDecode(file), picture);
        expectSame(j2k::decode(file).picture, picture);
    }
}

TEST_P(J2kWriter, LossyFilesAreCloseToThePicture)
{
    WriterCase tested = GetParam();
    Picture picture = drawnPicture(tested.width, tested.height, tested.space, tested.precision);
    tested.options.psnr = 40;
    File file = j2k::encode(picture, tested.options);
    expectComplete(file, tested);
    // Errors of neighbouring coefficients and of the components are not quite independent.
    EXPECT_GT(psnr(openJpegDecode(file), picture), 38);
    EXPECT_GT(psnr(j2k::decode(file).picture, picture), 38);
}

INSTANTIATE_TEST_SUITE_P(Cases, J2kWriter, testing::ValuesIn(writerCases()),
                         [](const auto& tested) { return tested.param.name; });

TEST_P(J2kWriter, SecondPeerReadsFiles)
{
    if (!kHasFfmpeg) GTEST_SKIP() << "FFmpeg's libavcodec is not installed";
    WriterCase tested = GetParam();
    Picture picture = drawnPicture(tested.width, tested.height, tested.space, tested.precision);
    auto read = [&] { return ffmpegDecode(j2k::encode(picture, tested.options), tested.precision); };
    tested.options.isLossless = true;
    expectSame(read(), picture);
    tested.options.isLossless = false;
    tested.options.psnr = 40;
    EXPECT_GT(psnr(read(), picture), 38);
}

// A file from its rows of tiles, each made of its own part of the picture.
File fromRows(const Picture& picture, const j2k::EncodeOptions& options)
{
    j2k::TileRows rows(picture, options);
    File tiles;
    for (uint32_t row = 0; row < rows.count(); ++row) {
        j2k::Rect rect = rows.rect(row);
        std::vector<uint8_t> own(picture.row(int(rect.y0)), picture.row(int(rect.y0)) + picture.step() * rect.height());
        auto part =
            Picture::over(own.data(), int(rect.width()), int(rect.height()), picture.space(), picture.precision());
        File made = rows.encode(row, part);
        tiles.insert(tiles.end(), made.begin(), made.end());
    }
    File file = rows.header(tiles.size()), end = j2k::TileRows::end();
    file.insert(file.end(), tiles.begin(), tiles.end());
    file.insert(file.end(), end.begin(), end.end());
    return file;
}

TEST(J2kTileRows, MakeTheSameFile)
{
    std::vector<WriterCase> cases = {
        {"grey", 97, 71, grey, 8, {.tile = {{33, 20}}, .metadata = {.xmp = {'x'}, .comments = {"rows"}}}},
        {"colour", 300, 200, rgb, 12, {.tile = {{64, 64}}, .order = j2k::Order::rpcl, .isJp2 = false}},
        {"one", 60, 50, cmyk, 16, {.levels = 2}},
        {"larger", 60, 50, rgb, 8, {.tile = {{4000, 17}}, .style = j2k::style::kBypass}}};
    for (WriterCase& tested : cases) {
        SCOPED_TRACE(tested.name);
        Picture picture = drawnPicture(tested.width, tested.height, tested.space, tested.precision);
        for (int quality : {0, 1, 20, 50, 90, 99, 100}) {
            tested.options.isLossless = quality == 0;
            tested.options.quality = std::max(quality, 1);
            EXPECT_EQ(fromRows(picture, tested.options), j2k::encode(picture, tested.options)) << quality;
        }
    }
}

TEST(J2kTileRows, TakeWhatTheyCan)
{
    using Options = j2k::EncodeOptions;
    PictureForm huge(400000, 300000, rgb, 8);
    for (const Options& options : {Options{.bitsPerPixel = 1, .tile = {{4096, 4096}}}, Options{.psnr = 40},
                                   Options{.layers = 2}, Options{.quality = 0}, Options{.tile = {{64, 64}}}})
        EXPECT_NE(errorOf([&] { j2k::TileRows rows(huge, options); }), "");
    j2k::TileRows rows(huge, {.isLossless = true, .tile = {{4096, 4096}}});
    EXPECT_EQ(rows.count(), 74U);
    EXPECT_NE(errorOf([&] { rows.encode(0, drawnPicture(64, 64, rgb)); }), "");
    // The length of the box with the codestream, where four bytes hold it; else it goes on to the end.
    File header = rows.header(1000), endless = rows.header(uint64_t(1) << 33);
    ASSERT_EQ(header.size(), endless.size());
    const std::string_view name = "jp2c";
    auto at = std::search(header.begin(), header.end(), name.begin(), name.end()) - header.begin();
    EXPECT_EQ(
        File(&header[size_t(at) - 2], &header[size_t(at)]),
        (File{uint8_t((header.size() - size_t(at) + 4 + 1002) >> 8), uint8_t(header.size() - size_t(at) + 4 + 1002)}));
    EXPECT_EQ(File(&endless[size_t(at) - 4], &endless[size_t(at)]), File(4));
}

// Three photographs where the collection is, else drawn pictures.
std::vector<Picture> pictures()
{
    std::vector<Picture> all;
    for (const char* name : {"astronaut.ppm", "coffee.ppm", "camera.pgm"})
        if (auto path = dataFolder() / "photos" / name; std::filesystem::exists(path))
            all.push_back(loadPicture(readFile(path)).picture);
    if (all.empty()) {
        all.push_back(drawnPicture(320, 200, rgb, 8));
        all.push_back(drawnPicture(256, 256, grey, 12));
    }
    return all;
}

OpenJpegCase peerCase(const Picture& picture)
{
    return {.components = picture.channels(),
            .levels = 5,
            .blockWidth = 64,
            .blockHeight = 64,
            .transformsComponents = picture.space() == rgb};
}

TEST(J2kWriterAndPeer, LosslessFilesAreAsSmall)
{
    for (const Picture& picture : pictures())
        for (int style : {0, j2k::style::kBypass, j2k::style::kTerminateEvery}) {
            OpenJpegCase peer = peerCase(picture);
            j2k::EncodeOptions options = {.isLossless = true, .isJp2 = false};
            peer.style = options.style = style;
            EXPECT_LT(double(j2k::encode(picture, options).size()),
                      1.005 * double(openJpegEncode(peer, picture).size()));
        }
}

TEST(J2kWriterAndPeer, LossyFilesOfTheSameSizeAreAsGood)
{
    for (const Picture& picture : pictures())
        for (double rate : {0.25, 0.5, 1.0, 2.0}) {
            OpenJpegCase peer = peerCase(picture);
            peer.isReversible = false;
            peer.ratio = float(picture.channels() * picture.precision() / rate);
            File theirs = openJpegEncode(peer, picture);
            double pixels = double(picture.width()) * picture.height();
            File ours = j2k::encode(picture, {.bitsPerPixel = 8 * double(theirs.size()) / pixels, .isJp2 = false});
            EXPECT_LE(ours.size(), theirs.size());
            EXPECT_GE(psnr(openJpegDecode(ours), picture), psnr(openJpegDecode(theirs), picture)) << rate;
        }
}

// A file can be cut to fewer layers, each better than the one before.
TEST(J2kWriterLayers, SharpenThePicture)
{
    Picture picture = drawnPicture(300, 200, rgb, 8);
    for (bool isLossless : {false, true}) {
        j2k::EncodeOptions options = {.isLossless = isLossless, .layers = 5};
        if (!isLossless) options.bitsPerPixel = 2;
        File file = j2k::encode(picture, options);
        double last = 0;
        for (int layers = 1; layers <= 5; ++layers) {
            double now = psnr(openJpegDecode(file, layers), picture);
            EXPECT_GT(now, last) << layers;
            last = now;
        }
    }
}

}
