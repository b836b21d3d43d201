// SPDX-License-Identifier: Apache-2.0
// Writes the marker segments of a JPEG 2000 codestream (T.800 Annex A).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "codec/base/byte_writer.h"
#include "codec/j2k/headers.h"

namespace qel::codec::j2k {

inline constexpr std::string_view kComment = "written by qelpic";

// SOC, SIZ, COD, QCD, a comment that names the program, and others. The parameters have a style, a coding and a
// quantization, with steps for all bands; nothing else of them is written.
void writeMainHeader(ByteWriter& out, const Size& size, const Parameters& parameters,
                     const std::vector<std::string>& comments);

// Bytes of a tile besides its packets, and of the end.
inline constexpr size_t kTileOverhead = 14, kEndOverhead = 2;

// SOT and SOD of a tile's only tile-part. Returns its position, for finishTile, which comes behind its packets.
size_t beginTile(ByteWriter& out, uint32_t tile);
void finishTile(ByteWriter& out, size_t begin);

// EOC.
void writeEnd(ByteWriter& out);

}
