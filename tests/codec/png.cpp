// SPDX-License-Identifier: Apache-2.0
// PNG: round trips, what libpng is asked to convert, damaged files.
#include "codec/formats/png.h"

#include <png.h>
#include <zlib.h>

#include <algorithm>

#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

std::vector<uint8_t> pngOf(const Picture& picture)
{
    return written([&](auto sink) { writePng(picture, sink); });
}

Picture read(Bytes file)
{
    DecodedPicture decoded = readPng(file);
    EXPECT_TRUE(decoded.warnings.empty());
    return std::move(decoded.picture);
}

// A PNG made by libpng's simplified interface, which has its own path to the file.
std::vector<uint8_t> made(uint32_t format, const std::vector<uint8_t>& samples, int width, int height,
                          const std::vector<uint8_t>& colours = {})
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = width;
    image.height = height;
    image.format = format;
    image.colormap_entries = uint32_t(colours.size() / PNG_IMAGE_SAMPLE_SIZE(format & ~PNG_FORMAT_FLAG_COLORMAP));
    std::vector<uint8_t> file(10000);
    png_alloc_size_t size = file.size();
    EXPECT_TRUE(png_image_write_to_memory(&image, file.data(), &size, 0, samples.data(), 0, colours.data()));
    file.resize(size);
    return file;
}

// Puts `value`, most significant byte first, at `at`, and makes the check sum of the IHDR chunk right.
void putInHeader(std::vector<uint8_t>& file, size_t at, uint32_t value)
{
    constexpr size_t kType = 12, kCheck = 29;
    auto put = [&](size_t where, uint32_t v) {
        for (int i = 0; i < 4; ++i) file[where + i] = uint8_t(v >> (24 - 8 * i));
    };
    put(at, value);
    put(kCheck, uint32_t(crc32(0, &file[kType], kCheck - kType)));
}

TEST(Png, RoundTrips)
{
    for (auto space : {ColourSpace::grey, ColourSpace::rgb})
        for (int precision = 1; precision <= 16; ++precision)
            for (bool hasAlpha : {false, true}) {
                SCOPED_TRACE(precision);
                Picture picture = randomPicture(13, 7, space, precision, hasAlpha);
                expectSame(picture, read(pngOf(picture)));
            }
    EXPECT_EQ(errorOf([] { pngOf(randomPicture(1, 1, ColourSpace::cmyk, 8)); }), "PNG has no CMYK pictures");
}

TEST(Png, PalettesBecomeRgbAndTransparentOnesRgbWithAlpha)
{
    const struct {
        uint32_t format;
        std::vector<uint8_t> samples, colours, expected;
        bool hasAlpha;
    } table[] = {
        {PNG_FORMAT_RGB_COLORMAP, {1, 0}, {9, 8, 7, 6, 5, 4, 3, 2, 1}, {6, 5, 4, 9, 8, 7}, false},
        {PNG_FORMAT_GA, {10, 255, 20, 0}, {}, {10, 255, 20, 0}, true},
        {PNG_FORMAT_RGBA, {1, 2, 3, 99, 4, 5, 6, 255}, {}, {1, 2, 3, 99, 4, 5, 6, 255}, true},
        {PNG_FORMAT_RGBA_COLORMAP, {1, 0}, {1, 2, 3, 99, 4, 5, 6, 255}, {4, 5, 6, 255, 1, 2, 3, 99}, true},
    };
    for (auto& row : table) {
        DecodedPicture decoded = readPng(made(row.format, row.samples, 2, 1, row.colours));
        Picture& picture = decoded.picture;
        EXPECT_TRUE(decoded.warnings.empty());
        EXPECT_EQ(picture.hasAlpha(), row.hasAlpha);
        EXPECT_EQ(picture.space(), row.format == PNG_FORMAT_GA ? ColourSpace::grey : ColourSpace::rgb);
        ASSERT_EQ(picture.sizeInBytes(), row.expected.size());
        EXPECT_TRUE(std::equal(row.expected.begin(), row.expected.end(), picture.row(0)));
    }
}

// One grey, or one colour, may be told to be transparent, in samples of any depth.
TEST(Png, AColourThatIsTransparentBecomesAlpha)
{
    for (auto space : {ColourSpace::grey, ColourSpace::rgb})
        for (int precision : {1, 2, 4, 8, 16}) {
            if (space == ColourSpace::rgb && precision < 8) continue;
            Picture picture = randomPicture(9, 5, space, precision);
            int channels = picture.channels(), factor = precision < 8 ? 255 / ((1 << precision) - 1) : 1;
            std::vector<uint8_t> file = pngOf(picture), chunk = {0, 0, 0, uint8_t(2 * channels), 't', 'R', 'N', 'S'};
            for (int c = 0; c < channels; ++c) {
                int sample = sampleAt(picture, size_t(channels + c)); // the second pixel's
                chunk.insert(chunk.end(), {uint8_t(sample >> 8), uint8_t(sample)});
            }
            uint32_t check = uint32_t(crc32(0, &chunk[4], uInt(chunk.size() - 4)));
            for (int shift = 24; shift >= 0; shift -= 8) chunk.push_back(uint8_t(check >> shift));
            file.insert(file.begin() + 33, chunk.begin(), chunk.end()); // behind the header
            Picture shown = read(file);
            ASSERT_TRUE(shown.hasAlpha());
            ASSERT_EQ(shown.precision(), std::max(precision, 8));
            for (size_t i = 0; i < 45; ++i) {
                bool isSame = true;
                for (size_t c = 0; c < size_t(channels); ++c) {
                    int sample = sampleAt(picture, size_t(channels) * i + c);
                    isSame &= sample == sampleAt(picture, size_t(channels) + c);
                    EXPECT_EQ(sampleAt(shown, size_t(channels + 1) * i + c), factor * sample) << precision;
                }
                int alpha = sampleAt(shown, size_t(channels + 1) * i + size_t(channels));
                EXPECT_EQ(alpha, isSame ? 0 : (1 << shown.precision()) - 1) << precision;
            }
        }
}

TEST(Png, DamageIsReportedWithItsPlace)
{
    std::vector<uint8_t> file = pngOf(randomPicture(40, 30, ColourSpace::rgb, 8));
    for (size_t length = 0; length < file.size(); length += 1 + length / 20) {
        std::string message = errorOf([&] { read({file.data(), length}); });
        EXPECT_EQ(message, "damaged PNG: the file ends too soon (at byte " + std::to_string(length) + ")");
    }
    file[file.size() / 2] ^= 1;
    EXPECT_NE(errorOf([&] { read(file); }).find("damaged PNG: IDAT: "), std::string::npos);
}

TEST(Png, HugeSizesAreRefusedBeforeMemoryIsTaken)
{
    constexpr size_t kWidth = 16, kHeight = 20;
    std::vector<uint8_t> file = pngOf(randomPicture(4, 4, ColourSpace::rgb, 8));
    putInHeader(file, kWidth, 15000);
    putInHeader(file, kHeight, 15000);
    std::string length = std::to_string(file.size());
    EXPECT_EQ(errorOf([&] { read(file); }), "the file is too short for its picture (at byte " + length + ")");
    putInHeader(file, kWidth, 0x7FFFFFFF);
    putInHeader(file, kHeight, 0x7FFFFFFF);
    EXPECT_NE(errorOf([&] { read(file); }), "");
}

// An exception of the sink passes by libpng and arrives as it was.
TEST(Png, SinkFailuresArrive)
{
    Picture picture = randomPicture(200, 200, ColourSpace::rgb, 8);
    int calls = 0;
    auto sink = [&](Bytes) {
        if (++calls == 3) throw CodecError("disk full");
    };
    EXPECT_EQ(errorOf([&] { writePng(picture, sink); }), "disk full");
}

}
