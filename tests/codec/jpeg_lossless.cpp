// SPDX-License-Identifier: Apache-2.0
// Lossless files: every sample comes back, whatever the precision, predictor and order; what is refused.
#include <gtest/gtest.h>

#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/segment_writer.h"
#include "codec/jpeg/encode/writer.h"
#include "codec/jpeg/layout.h"
#include "huffman_reference.h"
#include "jpeg_cases.h"
#include "jpeg_files.h"
#include "mutations.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

jpeg::EncodeOptions lossless(int predictor = 1, int pointTransform = 0)
{
    return {.lossless = true, .predictor = predictor, .pointTransform = pointTransform};
}

// The picture with all samples s at x, y replaced by change(s, x, y).
template <class Change> Picture changed(const Picture& picture, Change change)
{
    Picture result(picture.width(), picture.height(), picture.space(), picture.precision());
    for (int i = 0, across = picture.width() * picture.channels(); i < across * picture.height(); ++i)
        setSample(result, size_t(i), change(sampleAt(picture, size_t(i)), i % across / picture.channels(), i / across));
    return result;
}

// Slopes, with noise in the lowest bits.
Picture ramp(int width, int height, ColourSpace space, int precision)
{
    int largest = (1 << precision) - 1;
    return changed(randomPicture(width, height, space, precision), [&](int noise, int x, int y) {
        return ((x * 5 + y * 9) * (largest / 64 + 1) + noise % 4) & largest;
    });
}

void expectRoundTrip(const Picture& picture, const jpeg::EncodeOptions& options)
{
    jpeg::Decoded decoded = jpeg::decode(jpeg::encode(picture, options));
    EXPECT_TRUE(decoded.warnings.empty());
    EXPECT_EQ(decoded.info.process, jpeg::Process::lossless);
    EXPECT_EQ(decoded.info.precision, picture.precision());
    int pt = options.pointTransform;
    expectSame(decoded.picture, changed(picture, [&](int sample, int, int) { return sample >> pt << pt; }));
}

TEST(JpegLossless, EveryPredictorPrecisionAndPointTransform)
{
    for (int precision = 2; precision <= 16; ++precision)
        for (int predictor = 1; predictor <= 7; ++predictor)
            for (int pt : {0, 1, precision / 2, precision - 1}) {
                SCOPED_TRACE(testing::Message() << precision << " bits, predictor " << predictor << ", " << pt);
                if (precision - pt == 16 && predictor >= 5) continue;
                expectRoundTrip(randomPicture(23, 9, ColourSpace::grey, precision), lossless(predictor, pt));
                expectRoundTrip(ramp(31, 9, ColourSpace::rgb, precision), lossless(predictor, pt));
            }
}

TEST(JpegLossless, EveryWidth)
{
    std::vector<int> widths = {4099, 65535};
    for (int width = 1; width <= 70; ++width) widths.push_back(width);
    for (int width : widths)
        for (int predictor = 1; predictor <= 7; ++predictor) {
            SCOPED_TRACE(testing::Message() << width << ", predictor " << predictor);
            expectRoundTrip(ramp(width, 3, ColourSpace::grey, 12), lossless(predictor));
            expectRoundTrip(randomPicture(width, 2, ColourSpace::grey, 8), lossless(predictor));
        }
}

TEST(JpegLossless, ColoursScansAndRestarts)
{
    for (auto space : {ColourSpace::grey, ColourSpace::rgb, ColourSpace::cmyk})
        for (int precision : {8, 16})
            for (bool interleaved : {true, false})
                for (int rows : {0, 1, 3, 500}) {
                    jpeg::EncodeOptions options = lossless(4);
                    options.interleaved = interleaved;
                    options.restartRows = rows;
                    expectRoundTrip(randomPicture(41, 19, space, precision), options);
                    expectRoundTrip(ramp(41, 19, space, precision), options);
                    if (precision == 8) expectRoundTrip(drawnPicture(75, 53, space), options);
                    options.restartRows = 0;
                    options.restartInterval = 41 * rows;
                    expectRoundTrip(randomPicture(41, 19, space, precision), options);
                }
}

TEST(JpegLossless, TheBestPredictorMakesTheSmallestFile)
{
    std::vector<Picture> pictures;
    pictures.push_back(drawnPicture(60, 60, ColourSpace::rgb));
    pictures.push_back(ramp(60, 60, ColourSpace::grey, 10));
    pictures.push_back(changed(randomPicture(60, 60, ColourSpace::grey, 16),
                               [](int noise, int x, int y) { return (x * x * 300 + y * 900 + noise % 256) % 32768; }));
    for (auto& picture : pictures) {
        size_t smallest = SIZE_MAX;
        for (int predictor = 1; predictor <= 7; ++predictor)
            smallest = std::min(smallest, jpeg::encode(picture, lossless(predictor)).size());
        // The estimate leaves out stuffed bytes.
        EXPECT_LE(double(jpeg::encode(picture, lossless(jpeg::kBestPredictor)).size()), 1.002 * double(smallest));
        expectRoundTrip(picture, lossless(jpeg::kBestPredictor));
    }
}

// Decoders differ in how they halve samples of 32768 and more.
TEST(JpegLossless, PredictorsThatHalveAreNotWrittenForSixteenBits)
{
    Picture deep = randomPicture(30, 30, ColourSpace::grey, 16);
    Picture shallow = changed(deep, [](int sample, int, int) { return sample & 0x7FFF; });
    for (int predictor = 5; predictor <= 7; ++predictor) {
        EXPECT_NE(errorOf([&] { jpeg::encode(deep, lossless(predictor)); }), "");
        expectRoundTrip(shallow, lossless(predictor));
        expectRoundTrip(deep, lossless(predictor, 1));
    }
    expectRoundTrip(deep, lossless(jpeg::kBestPredictor));
    EXPECT_LT(jpeg::decode(jpeg::encode(deep, lossless(jpeg::kBestPredictor))).info.predictor, 5);
}

// The file of predictor 1 with another one in its scan header: the last sample becomes 1000 more than what that
// predicts from 40000 to the left, 20000 above and c above to the left, all without a sign.
TEST(JpegLossless, SamplesOfSixteenBitsHaveNoSign)
{
    const struct {
        int predictor, c, expected;
    } table[] = {{5, 60000, 21000}, {6, 10000, 36000}, {7, 60000, 31000}};
    for (auto& row : table) {
        Picture picture(2, 2, ColourSpace::grey, 16);
        const int samples[] = {row.c, 20000, 40000, 41000};
        std::copy(samples, samples + 4, picture.row<uint16_t>(0));
        File file = jpeg::encode(picture, lossless(1));
        file[markerAt(file, jpeg::marker::kSos) + 7] = uint8_t(row.predictor);
        picture.row<uint16_t>(1)[1] = uint16_t(row.expected);
        expectSame(jpeg::decode(file).picture, picture);
    }
}

// What the components of different sizes hold at x, y, and the difference there by predictor 1.
int sampleOf(int component, int x, int y) { return 40 + 30 * component + x + 2 * y; }
int differenceAt(int component, int x, int y)
{
    int prediction = x > 0 ? sampleOf(component, x - 1, y) : y > 0 ? sampleOf(component, 0, y - 1) : 128;
    return sampleOf(component, x, y) - prediction;
}

// The code of a category is its number in five bits.
jpeg::HuffmanLists flatTable()
{
    jpeg::HuffmanLists flat;
    flat.bits[4] = 17;
    for (int i = 0; i < 17; ++i) flat.values[i] = uint8_t(i);
    return flat;
}

void appendScan(File& file, const jpeg::Info& info, const std::vector<int>& components)
{
    jpeg::ScanHeader scan;
    scan.kind = jpeg::ScanKind::lossless;
    scan.predictor = 1;
    for (int i : components) scan.components.push_back({i, 0, 0});
    jpeg::SegmentWriter(file).scan(info, scan);
    ReferenceWriter writer{1 << 20, {}, {}, 0};
    jpeg::ScanLayout layout(info, components);
    for (int row = 0; row < layout.mcusDown; ++row)
        for (int column = 0; column < layout.mcusAcross; ++column)
            for (const jpeg::McuBlock& place : layout.blocks) {
                const jpeg::ScanShare& share = layout.shares[place.slot];
                int difference =
                    differenceAt(share.component, column * share.across + place.dx, row * share.down + place.dy);
                writer.write(uint32_t(categoryOf(difference)), 5);
                if (difference != 0)
                    writer.write(uint32_t(difference < 0 ? difference - 1 : difference), categoryOf(difference));
            }
    writer.write(0x7F, 7);
    file.insert(file.end(), writer.bytes.begin(), writer.bytes.end());
}

File fileOfSampledComponents(const jpeg::Info& info, const std::vector<std::vector<int>>& scans)
{
    File file;
    jpeg::SegmentWriter segments(file);
    segments.marker(jpeg::marker::kSoi);
    segments.frame(info);
    segments.huffmanTable(0, 0, flatTable());
    for (auto& components : scans) appendScan(file, info, components);
    segments.marker(jpeg::marker::kEoi);
    return file;
}

// As RGB, where each sample shows: small components are repeated over what they stand for.
TEST(JpegLossless, ReadsComponentsOfDifferentSizes)
{
    for (auto [h, v] : {std::pair(2, 1), {1, 2}, {2, 2}, {4, 1}})
        for (auto& scans : {std::vector<std::vector<int>>{{0, 1, 2}}, {{0}, {1}, {2}}, {{0, 1}, {2}}}) {
            jpeg::Info info;
            info.process = jpeg::Process::lossless;
            info.frameMarker = jpeg::marker::kSof3;
            info.width = 13, info.height = 7, info.precision = 8;
            info.components = {{'R', h, v, 0, 0, 0}, {'G', 1, 1, 0, 0, 0}, {'B', 1, 1, 0, 0, 0}};
            jpeg::setComponentSizes(info);
            jpeg::Decoded decoded = jpeg::decode(fileOfSampledComponents(info, scans), {jpeg::Upsampling::replicate});
            EXPECT_TRUE(decoded.warnings.empty());
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < 13; ++x) {
                    const uint8_t* pixel = decoded.picture.row(y) + 3 * x;
                    ASSERT_EQ(pixel[0], sampleOf(0, x, y)) << x << ' ' << y;
                    ASSERT_EQ(pixel[1], sampleOf(1, x / h, y / v)) << x << ' ' << y;
                    ASSERT_EQ(pixel[2], sampleOf(2, x / h, y / v)) << x << ' ' << y;
                }
        }
}

TEST(JpegLossless, RefusalsSayWhatAndWhere)
{
    jpeg::EncodeOptions options = lossless();
    options.restartRows = 1;
    const File sound = jpeg::encode(drawnPicture(75, 53, ColourSpace::rgb), options);
    size_t sof = markerAt(sound, jpeg::marker::kSof3), dri = markerAt(sound, jpeg::marker::kDri),
           sos = markerAt(sound, jpeg::marker::kSos);
    expectRefusals(sound, {
                              {sof + 4, 1, "samples of 1 bits are not supported", sof},
                              {sof + 4, 17, "samples of 17 bits are not supported", sof},
                              {sos + 11, 0, "scan header: predictor 0 of a lossless scan", sos + 14},
                              {sos + 11, 8, "scan header: predictor 8 of a lossless scan", sos + 14},
                              {sos + 13, 8, "scan header: a point transform of 8 bits", sos + 14},
                              {dri + 5, 74, "a restart interval of 74 MCUs in rows of 75", sos + 14},
                          });
    EXPECT_NE(errorOf([&] { jpeg::decodePlanes(sound); }), "");
    EXPECT_NE(errorOf([&] { jpeg::decodeCoefficients(sound); }), "");
    // An interval that the picture does not fill has no markers, so nothing is wrong with it.
    File file = sound;
    file[dri + 4] = file[dri + 5] = 0xFF;
    EXPECT_EQ(jpeg::decode(file).picture.height(), 53);
}

TEST(JpegLossless, MutationsNeverBreakTheDecoder)
{
    int round = 0;
    for (int precision : {3, 8, 16})
        for (auto space : {ColourSpace::grey, ColourSpace::rgb, ColourSpace::cmyk})
            for (int predictor : {1, 4, 7}) {
                jpeg::EncodeOptions options = lossless(predictor, predictor == 7);
                options.interleaved = round % 2;
                options.restartRows = round++ % 3;
                const File sound = jpeg::encode(ramp(41, 27, space, precision), options);
                everyMutation(sound, sound.size(), [](const File& file) {
                    jpeg::Decoded decoded = jpeg::decode(file, {.maxPixels = 1 << 20});
                    jpeg::encode(decoded.picture, lossless(jpeg::kBestPredictor));
                });
            }
}

}
