// SPDX-License-Identifier: Apache-2.0
// JPEG files that are damaged, odd or unsupported: what is survived, what is refused, and that nothing breaks.
#include <gtest/gtest.h>

#include <algorithm>

#include "codec/base/compare.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/markers.h"
#include "jpeg_cases.h"
#include "jpeg_files.h"
#include "libjpeg_peer.h"
#include "mutations.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

File smallFile(jpeg::EncodeOptions options = {}, ColourSpace space = ColourSpace::rgb)
{
    return jpeg::encode(drawnPicture(75, 53, space), options);
}

TEST(JpegDamage, ATruncatedPictureIsDeliveredWithAWarning)
{
    for (bool interleaved : {true, false}) {
        expectCutsToBeDelivered(smallFile({.sampling = jpeg::kSampling420, .interleaved = interleaved}));
        expectCutsToBeDelivered(smallFile({.interleaved = interleaved, .lossless = true, .predictor = 7}));
    }
}

TEST(JpegDamage, DecodingResumesAtTheNextRestartMarker)
{
    const struct {
        jpeg::EncodeOptions options;
        int rows; // of an interval
    } table[] = {{{.sampling = jpeg::kSampling444, .restartRows = 1}, 8},
                 {{.sampling = jpeg::kSampling444, .progressive = true, .restartRows = 1}, 8},
                 {{.restartRows = 10, .lossless = true, .predictor = 5}, 10}};
    for (auto& [options, rows] : table) {
        File file = smallFile(options);
        Picture whole = jpeg::decode(file).picture;
        size_t second = markerAt(file, jpeg::marker::kRst0), third = markerAt(file, jpeg::marker::kRst0 + 1);
        expectSecondIntervalLost(without(file, second + 4, third), whole, rows);
        if (options.progressive) continue;
        expectSecondIntervalLost(without(file, second, third), whole, rows);
        // A marker in the middle of the data, behind the one that is due.
        file.insert(file.begin() + third - 3, {0xFF, jpeg::marker::kRst0});
        EXPECT_EQ(sameRows(jpeg::decode(file).picture, whole) / rows, 1);
    }
}

// A marker that does not belong there ends the scan, whatever the bytes behind it look like.
TEST(JpegDamage, AHeaderInsideTheDataTakesNothingAway)
{
    File file = smallFile({.sampling = jpeg::kSampling444});
    Picture whole = jpeg::decode(file).picture;
    size_t middle = (markerAt(file, jpeg::marker::kSos) + file.size()) / 2;
    for (uint8_t code : {jpeg::marker::kDht, jpeg::marker::kSos, jpeg::marker::kSof0, jpeg::marker::kEoi}) {
        File damaged = file;
        damaged.insert(damaged.begin() + middle, {0xFF, code, 0, 8});
        jpeg::Decoded decoded = jpeg::decode(damaged);
        EXPECT_FALSE(decoded.warnings.empty());
        EXPECT_GE(sameRows(decoded.picture, whole), 16);
    }
}

TEST(JpegDamage, FillBytesAndUnknownSegmentsAreNoDamage)
{
    File file = smallFile({.restartInterval = 3});
    File odd = file;
    odd.insert(odd.begin() + markerAt(odd, jpeg::marker::kEoi), 3, 0xFF);
    odd.insert(odd.begin() + markerAt(odd, jpeg::marker::kRst0 + 2), 2, 0xFF);
    const uint8_t segments[] = {0xFF, 0xFE, 0, 4, 'h', 'i', 0xFF, 0xE5, 0, 2, 0xFF, 0xFF, 0xF3, 0, 3, 9};
    odd.insert(odd.begin() + markerAt(odd, jpeg::marker::kDqt), std::begin(segments), std::end(segments));
    jpeg::Decoded decoded = jpeg::decode(odd);
    EXPECT_TRUE(decoded.warnings.empty());
    expectSame(decoded.picture, jpeg::decode(file).picture);
}

TEST(JpegDamage, MissingHuffmanTablesAreTheTypicalOnes)
{
    File file = smallFile();
    expectSame(jpeg::decode(withoutSegments(file, jpeg::marker::kDht)).picture, jpeg::decode(file).picture);
}

TEST(JpegDamage, TheHeightMayFollowTheScan)
{
    File file = smallFile(), late = file;
    size_t frame = markerAt(late, jpeg::marker::kSof0);
    const uint8_t lines[] = {0xFF, jpeg::marker::kDnl, 0, 4, late[frame + 5], late[frame + 6]};
    late[frame + 5] = late[frame + 6] = 0;
    EXPECT_NE(errorOf([&] { jpeg::decode(late); }), "");
    late.insert(late.end() - 2, std::begin(lines), std::end(lines));
    expectSame(jpeg::decode(late).picture, jpeg::decode(file).picture);
}

TEST(JpegDamage, RefusalsSayWhatAndWhere)
{
    const File sound = smallFile();
    size_t dqt = markerAt(sound, jpeg::marker::kDqt), sof = markerAt(sound, jpeg::marker::kSof0),
           dht = markerAt(sound, jpeg::marker::kDht), sos = markerAt(sound, jpeg::marker::kSos);
    expectRefusals(sound, {
                              {0, 0, "not a JPEG file", 0},
                              {dqt + 3, 1, "a marker segment of length 1", dqt + 2},
                              {dqt + 3, 60, "quantization table: too short", dqt + 62},
                              {dqt + 4, 4, "quantization table: unknown kind or number 4", dqt + 5},
                              {sof + 1, 0xC9, "the coding process SOF9 (other) is not supported", sof},
                              {sof + 4, 12, "samples of 12 bits are not supported", sof},
                              {sof + 8, 0, "frame header: a picture without pixels", sof + 9},
                              {sof + 9, 4, "frame header: too short", sof + 19},
                              {sof + 9, 2, "frame header: too long", sof + 16},
                              {sof + 11, 0x02, "frame header: sampling factors 0x2", sof + 13},
                              {sof + 11, 0x25, "frame header: sampling factors 2x5", sof + 13},
                              {sof + 12, 7, "frame header: quantization table 7", sof + 13},
                              {dht + 4, 0x20, "Huffman table: unknown kind or number 32", dht + 5},
                              {dht + 5, 3, "Huffman table: more codes than fit", dht + 21},
                              {sos + 4, 5, "scan header: 5 components", sos + 5},
                              {sos + 5, 9, "scan header: component 9 is not in the frame", sos + 7},
                              {sos + 6, 0x40, "scan header: Huffman tables 64", sos + 7},
                              {sof + 11, 0x33, "scan header: MCUs of 11 blocks, at most 10 are allowed", sos + 11},
                          });
    File wide = sound;
    wide[dht + 21] = 16;
    EXPECT_EQ(errorOf([&] { jpeg::decode(wide); }),
              "a Huffman table for DC coefficients has category 16, at most 15 is allowed");
    EXPECT_EQ(errorOf([&] { jpeg::decode(withoutSegments(sound, jpeg::marker::kDqt)); }),
              "quantization table 0 is missing");
    EXPECT_EQ(errorOf([&] { jpeg::decode(Bytes(sound).first(sos)); }),
              "the file ends where a marker is expected (at byte " + std::to_string(sos) + ")");
    EXPECT_EQ(errorOf([&] { jpeg::decode(sound, {.maxPixels = 74 * 53}); }),
              "the picture has more pixels than allowed (at byte " + std::to_string(sof) + ")");
}

TEST(JpegDamage, ProgressiveScansThatBreakTheRulesAreRefused)
{
    const File sound = smallFile({.progressive = true});
    size_t dc = markerAt(sound, jpeg::marker::kSos), ac = markerAt(sound, jpeg::marker::kSos, 1);
    expectRefusals(sound, {
                              {dc + 12, 5, "scan header: coefficients 0 to 5", dc + 14},
                              {dc + 11, 1, "scan header: coefficients 1 to 0", dc + 14},
                              {dc + 13, 14, "scan header: approximation by 14 bits", dc + 14},
                          });
    File file = sound;
    file[ac + 8] = 64;
    EXPECT_TRUE(jpeg::decode(file).warnings.at(0).starts_with("scan header: coefficients 1 to 64"));
}

// What the scans so far tell is a picture, less true the fewer they are.
TEST(JpegDamage, AProgressivePictureIsDeliveredAsFarAsItCame)
{
    Picture original = drawnPicture(75, 53, ColourSpace::rgb);
    File file = jpeg::encode(original, {.sampling = jpeg::kSampling444, .progressive = true});
    double last = 1e9;
    for (int scans = 1; scans <= 10; ++scans) {
        size_t end = markerAt(file, jpeg::marker::kSos, scans),
               middle = (markerAt(file, jpeg::marker::kSos, scans - 1) + end) / 2;
        for (size_t keep : {middle, end}) {
            File cut(file.begin(), file.begin() + ptrdiff_t(keep));
            if (keep == end && scans < 10) cut.insert(cut.end(), {0xFF, jpeg::marker::kEoi});
            jpeg::Decoded decoded = jpeg::decode(cut);
            bool whole = scans == 10 && keep == end;
            EXPECT_EQ(decoded.warnings.empty(), whole) << scans;
            double error = compare(decoded.picture, original).whole.meanSquaredError;
            EXPECT_LT(error, 1.05 * last) << scans;
            last = error;
        }
    }
    EXPECT_LT(last, 40);
}

// Scans cost few bytes: an endless row of them must not keep the decoder busy, nor may a huge picture.
TEST(JpegDamage, EndlessScansAreBounded)
{
    File file = smallFile({.progressive = true});
    size_t first = markerAt(file, jpeg::marker::kDht, 1), end = markerAt(file, jpeg::marker::kSos, 2);
    File scan(file.begin() + ptrdiff_t(first), file.begin() + ptrdiff_t(end)), many;
    for (int i = 0; i < 3000; ++i) many.insert(many.end(), scan.begin(), scan.end());
    file.insert(file.begin() + ptrdiff_t(end), many.begin(), many.end());
    jpeg::Decoded decoded = jpeg::decode(file);
    ASSERT_FALSE(decoded.warnings.empty());
    EXPECT_EQ(decoded.warnings[0], "scans from number 501 on are left out");

    // The more blocks, the fewer scans.
    size_t frame = markerAt(file, jpeg::marker::kSof2);
    file[frame + 5] = file[frame + 7] = 0x20;
    decoded = jpeg::decode(file);
    EXPECT_NE(std::ranges::find_if(decoded.warnings, [](auto& line) { return line.starts_with("scans from number "); }),
              decoded.warnings.end());
}

TEST(JpegDamage, AHugeSizeOverLittleDataTakesLittle)
{
    const jpeg::EncodeOptions table[] = {{},
                                         {.interleaved = false},
                                         {.progressive = true},
                                         {.interleaved = false, .progressive = true},
                                         {.lossless = true}};
    for (auto& options : table) {
        File file = hugeVersionOf(smallFile(options));
        EXPECT_NE(errorOf([&] { jpeg::decode(file); }), "");
        EXPECT_NE(errorOf([&] { jpeg::decodePlanes(file); }), "");
        EXPECT_NE(errorOf([&] { jpeg::decodeCoefficients(file); }), "");
    }
}

TEST(JpegDamage, OptionsThatDoNotFitAreRefused)
{
    constexpr jpeg::Samplings kTooMany = {{{2, 2}, {2, 2}, {2, 2}, {2, 2}}};
    constexpr jpeg::Samplings kThree = {{{3, 1}, {1, 1}, {1, 1}, {1, 1}}};
    const jpeg::EncodeOptions table[] = {{.quality = 0},
                                         {.quality = 101},
                                         {.target = jpeg::Target::cmyk},
                                         {.sampling = kTooMany},
                                         {.sampling = kThree},
                                         {.restartInterval = -1},
                                         {.restartInterval = 65536},
                                         {.restartInterval = 2, .restartRows = 2},
                                         {.scans = {{{0}}, {{1}}}},
                                         {.lossless = true, .predictor = -1},
                                         {.lossless = true, .predictor = 8},
                                         {.lossless = true, .pointTransform = -1},
                                         {.lossless = true, .pointTransform = 8},
                                         {.target = jpeg::Target::ycbcr, .lossless = true},
                                         {.target = jpeg::Target::grey, .lossless = true},
                                         {.sampling = jpeg::kSampling420, .lossless = true},
                                         {.progressive = true, .lossless = true},
                                         {.restartInterval = 76, .lossless = true},
                                         {.restartInterval = -75, .lossless = true},
                                         {.restartRows = 874, .lossless = true}};
    for (auto& options : table) EXPECT_NE(errorOf([&] { smallFile(options); }), "");
    EXPECT_NE(errorOf([&] { jpeg::encode(Picture(9, 9, ColourSpace::grey, 1), {.lossless = true}); }), "");
    EXPECT_NE(errorOf([&] { jpeg::encode(Picture(9, 9, ColourSpace::rgb, 12), {}); }), "");
}

class JpegMutations : public testing::TestWithParam<JpegCase> {};

TEST_P(JpegMutations, NeverBreakTheDecoder)
{
    const File sound = jpeg::encode(drawnPicture(41, 27, GetParam().space), GetParam().options);
    everyMutation(sound, sound.size(), [](const File& file) {
        jpeg::Decoded decoded = jpeg::decode(file, {.maxPixels = 1 << 20});
        jpeg::encode(decoded.picture, {.optimiseTables = true});
        jpeg::encode(decoded.picture, {.progressive = true});
        jpeg::decodeCoefficients(file);
    });
}

INSTANTIATE_TEST_SUITE_P(Cases, JpegMutations, testing::ValuesIn(jpegCases()),
                         [](const auto& tested) { return tested.param.name; });

}
