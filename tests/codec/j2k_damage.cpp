// SPDX-License-Identifier: Apache-2.0
// Damaged JPEG 2000 files: what is survived, what is refused, and that nothing breaks.
#include <tuple>

#include "codec/base/compare.h"
#include "codec/j2k/decode/reader.h"
#include "j2k_cases.h"
#include "j2k_pieces.h"
#include "mutations.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

size_t markerAt(const File& file, uint8_t code, size_t from = 0)
{
    while (!j2k::isMarker(file, from, code)) ++from;
    return from;
}

void put(File& file, size_t at, uint64_t value, int bytes)
{
    while (bytes-- > 0) file[at++] = uint8_t(value >> 8 * bytes);
}

TEST(J2kDamage, ATruncatedFileIsReadAsFarAsItGoes)
{
    OpenJpegCase options = {.width = 60, .height = 50, .components = 3, .layers = 3, .transformsComponents = true};
    File file = openJpegEncode(options);
    auto whole = codedIn(ReadJ2k(file));
    size_t data = markerAt(file, j2k::marker::kSod) + 2, last = 0;
    for (size_t keep = data; keep < file.size() - 2; ++keep) {
        ReadJ2k cut(Bytes(file).first(keep));
        ASSERT_FALSE(cut.warnings.empty()) << keep;
        ASSERT_GE(cut.tiles[0].packetsRead, last);
        last = cut.tiles[0].packetsRead;
        for (auto& coded : codedIn(cut))
            ASSERT_TRUE(std::ranges::any_of(whole, [&](auto& other) {
                return std::tie(coded.component, coded.kind, coded.level, coded.x, coded.y, coded.zeroBitPlanes) ==
                           std::tie(other.component, other.kind, other.level, other.x, other.y, other.zeroBitPlanes) &&
                       coded.data.size() <= other.data.size() &&
                       std::equal(coded.data.begin(), coded.data.end(), other.data.begin());
            }));
    }
    EXPECT_GE(last, 35u); // of 36: the last one may be empty
    EXPECT_EQ(ReadJ2k(Bytes(file).first(file.size() - 2)).tiles[0].packetsRead, 36u);
    for (size_t keep = 0; keep < data - 14; ++keep)
        EXPECT_NE(errorOf([&] { j2k::open(Bytes(file).first(keep)); }), "") << keep;
}

TEST(J2kDamage, PacketsThatAreLostAreNoticed)
{
    OpenJpegCase options = {.components = 3};
    options.hasSop = options.hasEph = true;
    File file = openJpegEncode(options);
    size_t third = markerAt(file, j2k::marker::kSod);
    for (int i = 0; i < 3; ++i) third = markerAt(file, j2k::marker::kSop, third + 1);
    file[third + 5] = 4;
    ReadJ2k read(file);
    EXPECT_EQ(read.warnings, Warnings{"tile 0: packet 4 out of order (at byte " + std::to_string(third) + ")"});
    EXPECT_EQ(read.tiles[0].packetsRead, 2u);
}

TEST(J2kDamage, RefusalsSayWhatAndWhere)
{
    OpenJpegCase options = {.components = 3, .layers = 2};
    options.precincts = {{32, 32}};
    const File sound = openJpegEncode(options);
    size_t siz = 2, cod = markerAt(sound, j2k::marker::kCod), qcd = markerAt(sound, j2k::marker::kQcd),
           sot = markerAt(sound, j2k::marker::kSot);
    const struct {
        size_t at;
        uint64_t value;
        int bytes;
        std::string message;
        size_t position;
    } table[] = {
        {0, 0, 1, "not a JPEG 2000 codestream", 0},
        {siz + 1, 0x52, 1, "no SIZ at the beginning", siz},
        {siz + 2, 1, 2, "marker segment: a length of 1", siz + 4},
        {siz + 2, 40, 2, "SIZ: too short", siz + 40},
        {siz + 6, 0, 4, "SIZ: a picture without samples", siz + 38},
        {siz + 14, 200, 4, "SIZ: a picture without samples", siz + 38},
        {siz + 22, 0, 4, "SIZ: tiles without samples", siz + 38},
        {siz + 22, 1, 8, "SIZ: tiles without samples", siz + 38},
        {siz + 30, 7, 4, "SIZ: the first tile is not where the picture begins", siz + 38},
        {siz + 38, 0, 2, "SIZ: 0 components", siz + 40},
        {siz + 38, 16384, 2, "SIZ: too short", siz + 40},
        {siz + 38, 2, 2, "SIZ: too long", siz + 46},
        {siz + 40, 38, 1, "SIZ: samples of 39 bits", siz + 43},
        {siz + 41, 0, 1, "SIZ: subsampling by 0", siz + 43},
        {cod + 4, 8, 1, "COD: unknown coding style 8", cod + 5},
        {cod + 5, 5, 1, "COD: unknown progression order 5", cod + 6},
        {cod + 6, 0, 2, "COD: no layers", cod + 9},
        {cod + 8, 2, 1, "COD: unknown component transform 2", cod + 9},
        {cod + 9, 33, 1, "COD: 33 decomposition levels", cod + 14},
        {cod + 9, 4, 1, "COD: too short", cod + 18},
        {cod + 9, 2, 1, "COD: too long", cod + 17},
        {cod + 10, 9, 1, "COD: code-blocks that are too large", cod + 14},
        {cod + 12, 64, 1, "COD: unknown code-block style 64", cod + 14},
        {cod + 13, 2, 1, "COD: unknown wavelet 2", cod + 14},
        {cod + 15, 0x50, 1, "COD: precincts of one sample", cod + 16},
        {qcd + 4, 3, 1, "QCD: unknown quantization 3", qcd + 5},
        {qcd + 1, 0x30, 1, "no marker where one must stand", qcd + 2},
        {sot + 4, 1, 2, "SOT: tile 1 of none", sot + 12},
        {sot + 6, 13, 4, "SOT: a tile-part of 13 bytes", sot + 12},
    };
    for (auto& row : table) {
        File file = sound;
        put(file, row.at, row.value, row.bytes);
        EXPECT_EQ(errorOf([&] { j2k::open(file); }), row.message + " (at byte " + std::to_string(row.position) + ")");
    }
    File file = sound;
    put(file, cod + 1, 0x64, 1);
    EXPECT_EQ(errorOf([&] { j2k::open(file); }), "COD is missing (at byte " + std::to_string(sot) + ")");
    file = sound;
    put(file, siz + 22, 1, 4);
    put(file, siz + 26, 1, 4);
    put(file, siz + 10, 5000, 4);
    EXPECT_EQ(errorOf([&] { j2k::open(file); }), "SIZ: 485000 tiles (at byte " + std::to_string(siz + 38) + ")");
}

// Sizes and counts that are told in few bytes must not cost memory or time before the data for them is there.
TEST(J2kDamage, HugeClaimsTakeLittle)
{
    OpenJpegCase options = {.components = 3};
    options.precincts = {{32, 32}};
    const File sound = openJpegEncode(options);
    size_t siz = 2, cod = markerAt(sound, j2k::marker::kCod);
    // The error, or else the last warning.
    auto complaint = [&](auto change) {
        File file = sound;
        change(file);
        std::string warning;
        std::string error = errorOf([&] {
            Warnings warnings = ReadJ2k(file).warnings;
            if (!warnings.empty()) warning = warnings.back();
        });
        return error + warning;
    };
    auto setSize = [&](File& file, uint32_t size) {
        for (size_t at : {siz + 6, siz + 10, siz + 22, siz + 26}) put(file, at, size, 4);
    };
    auto setPrecincts = [&](File& file, int bits) {
        for (size_t r = 0; r < 4; ++r) put(file, cod + 14 + r, uint64_t(bits), 1);
    };
    EXPECT_EQ(complaint([&](File& file) { setSize(file, UINT32_MAX); }), "more precincts in a tile than supported");
    EXPECT_EQ(complaint([&](File& file) { setSize(file, UINT32_MAX), setPrecincts(file, 0xFF); }),
              "more precincts in a tile than supported");
    EXPECT_NE(complaint([&](File& file) { setSize(file, 1800), setPrecincts(file, 0x11); }), "");
    std::string layers = complaint([&](File& file) { put(file, cod + 6, 65535, 2); });
    // 65534 for each of 12 precincts of 4 resolutions of 3 components.
    EXPECT_TRUE(layers.starts_with("tile 0: 9436896 of 9437040 packets are missing")) << layers;
    // Code-blocks of 4 x 4 in one precinct, and packets that say in a byte that they have nothing for any of them.
    std::string packets = complaint([&](File& file) {
        setSize(file, 2000);
        setPrecincts(file, 0xFF);
        put(file, cod + 6, 65535, 2);
        put(file, cod + 10, 0, 2);
        file.resize(markerAt(file, j2k::marker::kSod) + 2);
        put(file, markerAt(file, j2k::marker::kSot) + 6, 0, 4);
        file.insert(file.end(), 60000, 0x80);
    });
    EXPECT_TRUE(packets.starts_with("tile 0: packets of many code-blocks without data")) << packets;
}

// Bytes that an error detecting style was not made of: concealed, and told.
TEST(J2kDamage, ErrorsInCodeBlocksAreConcealed)
{
    for (int style :
         {j2k::style::kSegmentationSymbols, j2k::style::kPredictableTermination | j2k::style::kTerminateEvery}) {
        Picture drawn = drawnPicture(64, 64, ColourSpace::grey, 8);
        File file = openJpegEncode({.levels = 1, .style = style}, drawn);
        for (size_t at = file.size() - 400; at < file.size() - 390; ++at) file[at] ^= 0x55;
        DecodedPicture decoded = j2k::decode(file);
        EXPECT_EQ(decoded.warnings, Warnings{"tile 0: 1 code-blocks are damaged"});
        EXPECT_TRUE(decoded.isDamaged);
        EXPECT_LT(compare(decoded.picture, drawn).whole.meanSquaredError, 100);
    }
}

TEST(J2kDamage, TilesThatAreMissingAreGrey)
{
    Picture drawn = drawnPicture(40, 20, ColourSpace::grey, 8);
    File file = openJpegEncode({.tileWidth = 20, .tileHeight = 20, .levels = 1}, drawn);
    size_t second = markerAt(file, j2k::marker::kSot, markerAt(file, j2k::marker::kSot) + 1);
    file.erase(file.begin() + ptrdiff_t(second), file.end() - 2);
    DecodedPicture decoded = j2k::decode(file);
    EXPECT_EQ(decoded.warnings, Warnings{"tile 1 is missing"});
    for (int y = 0; y < 20; ++y) {
        EXPECT_EQ(std::memcmp(decoded.picture.row(y), drawn.row(y), 20), 0);
        for (int x = 20; x < 40; ++x) EXPECT_EQ(decoded.picture.row(y)[x], 128);
    }
}

TEST(J2kDamage, WhatCannotBeDecodedIsRefused)
{
    const File sound = openJpegEncode({.levels = 2});
    auto complaint = [&](const File& file, const j2k::DecodeOptions& options) {
        return errorOf([&] { j2k::decode(file, options); });
    };
    EXPECT_EQ(complaint(sound, {.reduce = 3}), "tile 0: 2 resolutions can be left out");
    EXPECT_EQ(complaint(sound, {.maxPixels = 97 * 71 - 1}), "a picture of 97 x 71 pixels is too large");
    EXPECT_EQ(errorOf([&] { j2k::decodeComponent(sound, 1); }), "the picture has 1 components");
    size_t siz = 2;
    File file = sound;
    put(file, siz + 40, 37, 1);
    EXPECT_EQ(complaint(file, {}), "samples of 38 bits are not supported");
    file = sound;
    for (size_t at : {siz + 6, siz + 10, siz + 22, siz + 26}) put(file, at, 20000, 4);
    EXPECT_EQ(complaint(file, {}), "a picture of 20000 x 20000 pixels is too large");
}

class J2kMutations : public testing::TestWithParam<OpenJpegCase> {};

TEST_P(J2kMutations, NeverBreakTheReader)
{
    const File sound = openJpegEncode(GetParam());
    everyMutation(sound, markerAt(sound, j2k::marker::kSod) + 30,
                  [](const File& file) { j2k::decode(file, {.maxPixels = 1 << 20}); });
}

INSTANTIATE_TEST_SUITE_P(Cases, J2kMutations, testing::ValuesIn(openJpegCases()),
                         [](const auto& tested) { return tested.param.name; });

}
