// SPDX-License-Identifier: Apache-2.0
// Marker layer of a JPEG 2000 codestream: marker codes and marker segments (T.800 Annex A).
#pragma once

#include "codec/base/fields.h"

namespace qel::codec::j2k {

namespace marker {
inline constexpr uint8_t kSoc = 0x4F, kSiz = 0x51, kCod = 0x52, kCoc = 0x53, kQcd = 0x5C, kQcc = 0x5D, kRgn = 0x5E,
                         kPoc = 0x5F, kPpm = 0x60, kPpt = 0x61, kCom = 0x64, kSot = 0x90, kSop = 0x91, kEph = 0x92,
                         kSod = 0x93, kEoc = 0xD9;
}

// True if the two bytes at `at` are the marker.
inline bool isMarker(Bytes bytes, size_t at, uint8_t code)
{
    return at <= bytes.size() && bytes.size() - at >= 2 && bytes[at] == 0xFF && bytes[at + 1] == code;
}

// The segment whose marker stands at `at`. Throws CodecError where there is no marker, for a bad length, and where the
// file ends too early.
Segment readSegment(Bytes file, size_t at);

}
