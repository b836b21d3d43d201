// SPDX-License-Identifier: Apache-2.0
// What files say beside the picture: colour profile, EXIF, XMP, density, comments. It is kept as bytes, and understood
// only as far as other formats need.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/picture.h"

namespace qel::codec {

// Pixels per metre, or only how their sides relate.
struct Density {
    double x = 1, y = 1;
    bool isPerMetre = false;

    bool operator==(const Density&) const = default;
};
inline constexpr double kMetresPerInch = 0.0254;

struct Metadata {
    std::vector<uint8_t> icc = {};  // colour profile
    std::vector<uint8_t> exif = {}; // from the TIFF header on
    std::vector<uint8_t> xmp = {};  // the packet
    std::optional<Density> density = {};
    std::vector<std::string> comments = {};
    std::vector<std::string> others = {}; // names of what was found and is not kept

    bool operator==(const Metadata&) const = default;
};

// What a format has room for.
struct MetadataRoom {
    size_t icc = SIZE_MAX, exif = SIZE_MAX, xmp = SIZE_MAX, comment = SIZE_MAX; // bytes
    bool density = true, aspectRatio = true;
};
inline constexpr MetadataRoom kNoMetadata = {
    .icc = 0, .exif = 0, .xmp = 0, .comment = 0, .density = false, .aspectRatio = false};

// Leaves out what the format has no room for, or does not suit the colour space, and `others`. The names of these.
std::vector<std::string> limit(Metadata& metadata, const MetadataRoom& room, ColourSpace space);

// Whether these bytes are an ICC profile of a whole: its header (ICC.1 7.2) says its length and what it is.
bool isIccProfile(Bytes profile);
// Whether the profile is for such pictures.
bool suits(Bytes profile, ColourSpace space);

// How the picture is to be turned to be seen upright: 1 (as it is) to 8, as EXIF has it (tag 0x0112).
int orientationOf(Bytes exif);
// Says that the picture is upright.
void setUpright(std::vector<uint8_t>& exif);
// The picture as it is to be seen.
Picture turned(const Picture& picture, int orientation);

}
