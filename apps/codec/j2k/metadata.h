// SPDX-License-Identifier: Apache-2.0
// Metadata in a JPEG 2000 file: boxes of JP2 (colour profile, resolution, UUID boxes with EXIF and XMP), and comments
// of the codestream.
#pragma once

#include <optional>

#include "codec/base/byte_writer.h"
#include "codec/base/metadata.h"
#include "codec/j2k/boxes.h"

namespace qel::codec::j2k {

inline constexpr MetadataRoom kMetadataRoom = {.comment = 65531, .aspectRatio = false};
inline constexpr MetadataRoom kCodestreamRoom = {
    .icc = 0, .exif = 0, .xmp = 0, .comment = 65531, .density = false, .aspectRatio = false};

// `jp2` is nothing for a bare codestream. Never throws: what is damaged is left out and named among the others.
Metadata readMetadata(Bytes file, const std::optional<Jp2File>& jp2);

// Whether any reader of JP2 understands the profile: grey, or RGB by three curves and a matrix (T.800 I.5.3.3).
bool isRestricted(Bytes profile);

// A resolution box, for inside the JP2 header; UUID boxes, for behind it.
void writeResolution(ByteWriter& out, const Density& density);
void writeUuids(ByteWriter& out, const Metadata& metadata);

}
