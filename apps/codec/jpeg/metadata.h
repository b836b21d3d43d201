// SPDX-License-Identifier: Apache-2.0
// Metadata in the application and comment segments of a JPEG file: JFIF (density), APP1 (EXIF, XMP), APP2 (ICC), COM.
#pragma once

#include <cstdint>
#include <vector>

#include "codec/base/metadata.h"

namespace qel::codec::jpeg {

// What one segment holds; an ICC profile may be split over 255.
inline constexpr MetadataRoom kMetadataRoom = {.icc = 255 * 65519, .exif = 65527, .xmp = 65504, .comment = 65533};

// What stands before the first scan. Never throws: what is damaged is left out and named among the others.
Metadata readMetadata(Bytes file);

// Appends the segments, but for the density, which is JFIF's own. Everything has to fit kMetadataRoom.
void writeMetadata(std::vector<uint8_t>& file, const Metadata& metadata);

}
