// SPDX-License-Identifier: Apache-2.0
// PGM, PPM and PAM: round trips, the forms that the formats allow, damaged files.
#include "codec/formats/pnm.h"

#include "codec/base/convert.h"
#include "pictures.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

TEST(Pnm, RoundTrips)
{
    for (auto [space, hasAlpha] : {std::pair(ColourSpace::grey, false),
                                   {ColourSpace::grey, true},
                                   {ColourSpace::rgb, false},
                                   {ColourSpace::rgb, true},
                                   {ColourSpace::cmyk, false}})
        for (int precision = 1; precision <= 16; ++precision) {
            SCOPED_TRACE(precision);
            Picture picture = randomPicture(13, 7, space, precision, hasAlpha);
            expectSame(picture, readPnm(written([&](auto sink) { writePnm(picture, sink); })));
            expectSame(picture, readPnm(written([&](auto sink) { writePam(picture, sink); })));
        }
}

TEST(Pnm, Forms)
{
    const struct {
        std::string file;
        int width, height, channels, precision;
        std::vector<int> samples;
    } table[] = {
        {"P2\n# made by hand\n2 1 # two\n255\n7 255", 2, 1, 1, 8, {7, 255}},
        {"P3 1 2 1023 1 2 3\n1023 0\t9", 1, 2, 3, 10, {1, 2, 3, 1023, 0, 9}},
        {"P2#c\r1 1 15 #c\n 9", 1, 1, 1, 4, {9}},
        {std::string("P5 2 1 255\n\n\x20", 13), 2, 1, 1, 8, {'\n', ' '}},
        {std::string("P5 1 1 65535 \x01\x02", 15), 1, 1, 1, 16, {0x102}},
        // Other maxima are scaled: 50 of 100 in 7 bits, 1000 in 10 bits.
        {"P2 3 1 100 0 50 100", 3, 1, 1, 7, {0, 64, 127}},
        {std::string("P5 1 1 1000 \x03\xE8", 14), 1, 1, 1, 10, {1023}},
        {"P7\n# c\nHEIGHT 1\nWIDTH 1\nMAXVAL 255\nDEPTH 4\nTUPLTYPE CMYK\nENDHDR\nabcd", 1, 1, 4, 8, {97, 98, 99, 100}},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nMAXVAL 255\nENDHDR\nabc", 1, 1, 3, 8, {97, 98, 99}},
        {"P5 1 1 255 abehind the picture", 1, 1, 1, 8, {'a'}},
    };
    for (auto& row : table) {
        SCOPED_TRACE(row.file);
        Picture picture = readPnm(bytesOf(row.file));
        EXPECT_EQ(picture.width(), row.width);
        EXPECT_EQ(picture.height(), row.height);
        EXPECT_EQ(picture.channels(), row.channels);
        ASSERT_EQ(picture.precision(), row.precision);
        for (size_t i = 0; i < row.samples.size(); ++i) EXPECT_EQ(sampleAt(picture, i), row.samples[i]) << i;
    }
}

// What is wrong, and where. Sizes that the file cannot hold are refused before memory is taken for them.
TEST(Pnm, Errors)
{
    const struct {
        std::string file, message;
    } table[] = {
        {"", "not a PGM, PPM or PAM picture (at byte 0)"},
        {"P8 1 1 255 a", "not a PGM, PPM or PAM picture (at byte 0)"},
        {"P4 1 1 a", "bitmaps (PBM) are not supported (at byte 0)"},
        {"P5 0 1 255 a", "the width is not within 1 to 2147483647 (at byte 3)"},
        {"P5 1 -1 255 a", "the height is not a number (at byte 5)"},
        {"P5 1 99999999999999999999999 255 a", "the height is not within 1 to 2147483647 (at byte 5)"},
        {"P5 1 1 65536 a", "the largest sample value is not within 1 to 65535 (at byte 7)"},
        {"P5 1", "the file ends where the height should stand (at byte 4)"},
        {"P5 1 1 255", "the header does not end in white space (at byte 10)"},
        {"P5 1 1 255#c\na", "the header does not end in white space (at byte 10)"},
        {"P6 2 1 255\nabcde", "the file is too short for its picture (at byte 16)"},
        {"P6 20000 20000 255\nabcde", "the file is too short for its picture (at byte 24)"},
        {"P6 2147483647 2147483647 65535\nabcde", "the file is too short for its picture (at byte 36)"},
        {"P3 2147483647 2147483647 65535\nabcde", "the file is too short for its picture (at byte 36)"},
        {"P2 2 1 255 1 256", "a sample is not within 0 to 255 (at byte 13)"},
        {"P2 2 1 255 1 x  ", "a sample is not a number (at byte 13)"},
        {"P2 2 1 255 123   ", "the file ends where a sample should stand (at byte 17)"},
        {"P5 2 1 99 ad", "a sample is above the stated largest value (at byte 11)"},
        {"P5 1 1 1023 \x04\x7F", "a sample is above the stated largest value (at byte 12)"},
        {"P7\nWIDTH 1\nSIZE 3", "unknown word in the header (at byte 11)"},
        {"P7\nWIDTH 1\n", "the file ends within its header (at byte 11)"},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 3\nENDHDR\nabc",
         "the header lacks the width, height, depth or largest sample value (at byte 35)"},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE CMYK_ALPHA\nENDHDR\nabcd",
         "only pictures of type GRAYSCALE, RGB, these with _ALPHA, and CMYK are supported (at byte 48)"},
        {"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\nabcd",
         "the depth does not suit the type of picture (at byte 48)"},
    };
    for (auto& row : table)
        EXPECT_EQ(errorOf([&] { readPnm(bytesOf(row.file)); }), row.message) << row.file.substr(0, 60);
}

TEST(Convert, Precision)
{
    Picture picture(3, 1, ColourSpace::grey, 16);
    uint16_t samples[] = {0, 32768, 65535};
    std::memcpy(picture.row(0), samples, sizeof(samples));
    Picture narrow = withPrecision(picture, 8);
    EXPECT_EQ(narrow.row(0)[0], 0);
    EXPECT_EQ(narrow.row(0)[1], 128);
    EXPECT_EQ(narrow.row(0)[2], 255);
    for (int precision = 1; precision < 16; ++precision) {
        Picture original = randomPicture(50, 2, ColourSpace::rgb, precision);
        expectSame(original, withPrecision(withPrecision(original, 16), precision));
    }
}

}
