// Writes the marker segments of a JPEG 2000 codestream (T.800 Annex A).
#pragma once

#include "codec/base/byte_writer.h"
#include "codec/j2k/headers.h"

namespace qel::codec {

// SOC, SIZ, COD, QCD and a comment that names the program. The parameters have a style, a coding and a quantization,
// with steps for all bands; nothing else of them is written.
void writeJ2kMainHeader(ByteWriter& out, const J2kSize& size, const J2kParameters& parameters);

// Bytes of a tile besides its packets, and of the end.
inline constexpr size_t kJ2kTileOverhead = 14, kJ2kEndOverhead = 2;

// SOT and SOD of a tile's only tile-part. Returns its position, for finishJ2kTile, which comes behind its packets.
size_t beginJ2kTile(ByteWriter& out, uint32_t tile);
void finishJ2kTile(ByteWriter& out, size_t begin);

// EOC.
void writeJ2kEnd(ByteWriter& out);

}
