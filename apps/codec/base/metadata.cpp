// SPDX-License-Identifier: Apache-2.0
// Profiles and EXIF data, as far as they are looked into.
#include "codec/base/metadata.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace qel::codec {
namespace {

constexpr size_t kIccHeader = 128, kIccSpaceAt = 16, kIccSignatureAt = 36;
constexpr size_t kTiffHeader = 8, kTiffEntry = 12;
constexpr uint32_t kOrientation = 0x0112, kShort = 3;

bool standsAt(Bytes bytes, size_t at, const char* text)
{
    return bytes.size() >= at + 4 && memcmp(bytes.data() + at, text, 4) == 0;
}

uint32_t number(Bytes bytes, size_t at, size_t count, bool isBigEndian)
{
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | bytes[at + (isBigEndian ? i : count - 1 - i)];
    return value;
}

bool isBigEndian(Bytes exif) { return exif[0] == 'M'; }

// Where the value of the orientation stands; 0 where there is none.
size_t orientationAt(Bytes exif)
{
    if (exif.size() < kTiffHeader || (!standsAt(exif, 0, "II*\0") && !standsAt(exif, 0, "MM\0*"))) return 0;
    bool big = isBigEndian(exif);
    size_t directory = number(exif, 4, 4, big);
    if (directory > exif.size() || exif.size() - directory < 2) return 0;
    size_t count = number(exif, directory, 2, big);
    count = std::min(count, (exif.size() - directory - 2) / kTiffEntry);
    for (size_t i = 0; i < count; ++i) {
        size_t entry = directory + 2 + i * kTiffEntry;
        if (number(exif, entry, 2, big) == kOrientation && number(exif, entry + 2, 2, big) == kShort) return entry + 8;
    }
    return 0;
}

template <class T> void turnInto(const Picture& from, Picture& to, int orientation)
{
    bool isTransposed = orientation > 4,
         flipsX = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8,
         flipsY = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    // Of the source, for each place of the result: turned ones walk down columns.
    flipsX = isTransposed ? orientation == 7 || orientation == 8 : flipsX;
    flipsY = isTransposed ? orientation == 6 || orientation == 7 : flipsY;
    int channels = from.channels();
    for (int y = 0; y < to.height(); ++y)
        for (int x = 0; x < to.width(); ++x) {
            int sx = isTransposed ? y : x, sy = isTransposed ? x : y;
            if (flipsX) sx = from.width() - 1 - sx;
            if (flipsY) sy = from.height() - 1 - sy;
            std::copy_n(from.row<T>(sy) + ptrdiff_t(channels) * sx, channels, to.row<T>(y) + ptrdiff_t(channels) * x);
        }
}

}

bool isIccProfile(Bytes profile)
{
    return profile.size() >= kIccHeader && standsAt(profile, kIccSignatureAt, "acsp") &&
           number(profile, 0, 4, true) <= profile.size();
}

bool suits(Bytes profile, ColourSpace space)
{
    const char* names[] = {"GRAY", "RGB ", "CMYK"};
    return standsAt(profile, kIccSpaceAt, names[int(space)]);
}

std::vector<std::string> limit(Metadata& metadata, const MetadataRoom& room, ColourSpace space)
{
    std::vector<std::string> left = std::exchange(metadata.others, {});
    auto fit = [&](std::vector<uint8_t>& bytes, size_t most, const char* name) {
        if (bytes.empty() || bytes.size() <= most) return;
        left.push_back(name);
        bytes.clear();
    };
    fit(metadata.icc, suits(metadata.icc, space) ? room.icc : 0, "the ICC profile");
    fit(metadata.exif, room.exif, "EXIF data");
    fit(metadata.xmp, room.xmp, "XMP data");
    if (metadata.density && !(metadata.density->isPerMetre ? room.density : room.aspectRatio)) {
        left.push_back(metadata.density->isPerMetre ? "the density" : "the aspect ratio of pixels");
        metadata.density.reset();
    }
    size_t tooLong = std::erase_if(metadata.comments, [&](auto& comment) { return comment.size() > room.comment; });
    if (tooLong) left.push_back(tooLong > 1 ? std::to_string(tooLong) + " comments" : "a comment");
    return left;
}

int orientationOf(Bytes exif)
{
    size_t at = orientationAt(exif);
    uint32_t value = at ? number(exif, at, 2, isBigEndian(exif)) : 1;
    return value >= 1 && value <= 8 ? int(value) : 1;
}

void setUpright(std::vector<uint8_t>& exif)
{
    size_t at = orientationAt(exif);
    if (!at) return;
    bool big = isBigEndian(exif);
    exif[at] = big ? 0 : 1;
    exif[at + 1] = big ? 1 : 0;
}

Picture turned(const Picture& picture, int orientation)
{
    bool isTransposed = orientation > 4;
    Picture upright(isTransposed ? picture.height() : picture.width(),
                    isTransposed ? picture.width() : picture.height(), picture.space(), picture.precision(),
                    picture.hasAlpha());
    upright.setSigned(picture.isSigned());
    picture.bytesPerSample() == 1 ? turnInto<uint8_t>(picture, upright, orientation)
                                  : turnInto<uint16_t>(picture, upright, orientation);
    return upright;
}

}
