// SPDX-License-Identifier: Apache-2.0
// Profiles, EXIF, XMP, density and comments through the formats that hold them; profiles in parts, damaged or too long.
#include "codec/base/metadata.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "codec/formats/colour_management.h"
#include "codec/formats/picture_file.h"
#include "codec/formats/png.h"
#include "codec/j2k/encode/writer.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"
#include "codec/jpeg/metadata.h"
#include "ffmpeg_peer.h"
#include "mutations.h"
#include "pictures.h"
#include "profiles.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// A directory of one entry, the orientation.
std::vector<uint8_t> exifOf(int orientation)
{
    return {'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, uint8_t(orientation), 0, 0, 0, 0, 0, 0};
}

Metadata metadataWith(std::vector<uint8_t> icc)
{
    std::string xmp = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
    return {.icc = std::move(icc),
            .exif = exifOf(6),
            .xmp = {xmp.begin(), xmp.end()},
            .density = Density{11811, 5906, true},
            .comments = {"one", "two, gr\xC3\xBCn"},
            .others = {}};
}

using Encode = std::vector<uint8_t> (*)(const Picture&, const Metadata&);
constexpr Encode kEncoders[] = {
    [](const Picture& picture, const Metadata& m) { return jpeg::encode(picture, {.metadata = m}); },
    [](const Picture& picture, const Metadata& m) {
        return jpeg::encode(picture, {.progressive = true, .metadata = m});
    },
    [](const Picture& picture, const Metadata& m) { return j2k::encode(picture, {.metadata = m}); },
    [](const Picture& picture, const Metadata& m) {
        return written([&](auto sink) { EXPECT_TRUE(writePng(picture, sink, m).empty()); });
    }};

// Densities are rounded to whole dots per inch or metre.
void expectAlike(Metadata read, const Metadata& written)
{
    ASSERT_EQ(read.density.has_value(), written.density.has_value());
    if (read.density) {
        EXPECT_NEAR(read.density->x, written.density->x, 20);
        EXPECT_NEAR(read.density->y, written.density->y, 20);
        read.density = written.density;
    }
    EXPECT_EQ(read, written);
}

TEST(Metadata, TravelsBetweenFormats)
{
    Picture picture = drawnPicture(40, 30, ColourSpace::rgb, 8);
    for (Encode first : kEncoders)
        for (Encode second : kEncoders) {
            Metadata metadata = metadataWith(displayProfile());
            Metadata read = loadPicture(first(picture, metadata)).metadata;
            expectAlike(read, metadata);
            expectAlike(loadPicture(second(picture, read)).metadata, metadata);
        }
    if (kHasFfmpeg) {
        j2k::EncodeOptions options = {.isLossless = true, .metadata = metadataWith(displayProfile())};
        expectSame(ffmpegDecode(j2k::encode(picture, options), 8), picture);
    }
    Metadata none = loadPicture(jpeg::encode(picture)).metadata;
    EXPECT_EQ(none, Metadata());
}

// 200 KB in four segments of JPEG; in JP2 a profile that not all readers know stands behind the colour space.
TEST(Metadata, LargeProfiles)
{
    std::vector<uint8_t> icc = inkProfile();
    icc.resize(200000);
    std::fill(icc.begin() + 1000, icc.end(), uint8_t(7));
    Picture cmyk = drawnPicture(16, 16, ColourSpace::cmyk, 8);
    Metadata metadata = {.icc = icc};
    auto file = jpeg::encode(cmyk, {.metadata = metadata});
    EXPECT_EQ(jpeg::readMetadata(file), metadata);
    auto jp2 = loadPicture(j2k::encode(cmyk, {.isLossless = true, .metadata = metadata}));
    EXPECT_EQ(jp2.metadata, metadata);
    expectSame(jp2.picture, cmyk);

    // Parts in another order are joined; a part that is missing, or there twice, makes the profile useless.
    const std::string name("ICC_PROFILE\0", 12);
    auto part = [&](std::vector<uint8_t>& of, int number) {
        std::string text = name + char(number) + char(4);
        return std::search(of.begin(), of.end(), text.begin(), text.end()) - of.begin();
    };
    std::vector<uint8_t> swapped = file, doubled = file, missing = file;
    std::swap_ranges(swapped.begin() + part(swapped, 1) - 4, swapped.begin() + part(swapped, 2) - 4,
                     swapped.begin() + part(swapped, 2) - 4);
    doubled[size_t(part(doubled, 3)) + 12] = 2;
    missing[size_t(part(missing, 4))] = 'X';
    EXPECT_EQ(jpeg::readMetadata(swapped), metadata);
    EXPECT_EQ(jpeg::readMetadata(doubled).others, std::vector<std::string>{"a damaged ICC profile"});
    EXPECT_TRUE(jpeg::readMetadata(missing).icc.empty());
}

TEST(Metadata, WhatDoesNotFitIsNamed)
{
    Metadata metadata = metadataWith(displayProfile());
    metadata.exif.resize(70000);
    metadata.others = {"a UUID box"};
    EXPECT_EQ(limit(metadata, jpeg::kMetadataRoom, ColourSpace::grey),
              (std::vector<std::string>{"a UUID box", "the ICC profile", "EXIF data"}));
    EXPECT_EQ(limit(metadata, kNoMetadata, ColourSpace::grey),
              (std::vector<std::string>{"XMP data", "the density", "2 comments"}));
    EXPECT_EQ(metadata, Metadata());
}

TEST(Metadata, DamageNeverEndsInMoreThanItsLoss)
{
    Picture picture = drawnPicture(8, 8, ColourSpace::rgb, 8);
    for (Encode encode : kEncoders) {
        auto file = encode(picture, metadataWith(displayProfile()));
        everyMutation(file, 1500, [](const std::vector<uint8_t>& damaged) {
            Metadata read = loadPicture(damaged).metadata;
            nameOfProfile(read.icc);
            std::vector<uint8_t> exif = read.exif;
            setUpright(exif);
            int orientation = orientationOf(read.exif);
            EXPECT_TRUE(orientation >= 1 && orientation <= 8);
        });
    }
}

// Where the pixels 0 to 5 of a picture of 3 by 2 go, by the figures of the EXIF standard.
TEST(Metadata, OrientationsAreTurnedUpright)
{
    const std::vector<uint8_t> expected[] = {{0, 1, 2, 3, 4, 5}, {2, 1, 0, 5, 4, 3}, {5, 4, 3, 2, 1, 0},
                                             {3, 4, 5, 0, 1, 2}, {0, 3, 1, 4, 2, 5}, {3, 0, 4, 1, 5, 2},
                                             {5, 2, 4, 1, 3, 0}, {2, 5, 1, 4, 0, 3}};
    for (int precision : {8, 16})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            Picture picture(3, 2, ColourSpace::rgb, precision);
            for (int i = 0; i < 18; ++i) setSample(picture, size_t(i), i);
            std::vector<uint8_t> exif = exifOf(orientation);
            Picture upright = turned(picture, orientationOf(exif));
            EXPECT_EQ(upright.width(), orientation > 4 ? 2 : 3);
            for (int i = 0; i < 18; ++i)
                EXPECT_EQ(sampleAt(upright, size_t(i)), 3 * expected[orientation - 1][size_t(i) / 3] + i % 3)
                    << orientation;
            setUpright(exif);
            EXPECT_EQ(orientationOf(exif), 1);
        }
}

// Pure cyan, 255 and with Adobe's sense 0.
TEST(Metadata, InksBecomeColoursByTheirProfile)
{
    for (bool isInverted : {false, true}) {
        Picture cyan(1, 1, ColourSpace::cmyk, 8);
        for (int i = 0; i < 4; ++i) cyan.row(0)[i] = (i == 0) != isInverted ? 255 : 0;
        Picture plain = rgbOfCmyk(cyan, {}, isInverted), managed = rgbOfCmyk(cyan, inkProfile(), isInverted);
        EXPECT_EQ(std::vector<uint8_t>(plain.row(0), plain.row(0) + 3), (std::vector<uint8_t>{0, 255, 255}));
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(managed.row(0)[i], 185, 12);
    }
    std::vector<uint8_t> none(200);
    EXPECT_NE(errorOf([&] { rgbOfCmyk(Picture(1, 1, ColourSpace::cmyk, 8), none, false); }), "");
}

}
