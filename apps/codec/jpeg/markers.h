// SPDX-License-Identifier: Apache-2.0
// Marker layer of a JPEG file: marker codes and marker segments (T.81 Annex B).
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/base/fields.h"

namespace qel::codec::jpeg {

namespace marker {
inline constexpr uint8_t kSof0 = 0xC0, kSof1 = 0xC1, kSof2 = 0xC2, kSof3 = 0xC3, kDht = 0xC4, kJpg = 0xC8, kDac = 0xCC,
                         kSof15 = 0xCF, kRst0 = 0xD0, kRst7 = 0xD7, kSoi = 0xD8, kEoi = 0xD9, kSos = 0xDA, kDqt = 0xDB,
                         kDnl = 0xDC, kDri = 0xDD, kApp0 = 0xE0, kApp14 = 0xEE, kTem = 0x01;

inline bool isRestart(uint32_t code) { return code >= kRst0 && code <= kRst7; }
inline bool isFrame(uint8_t code)
{
    return code >= kSof0 && code <= kSof15 && code != kDht && code != kJpg && code != kDac;
}
inline bool standsAlone(uint8_t code) { return (code >= kRst0 && code <= kEoi) || code == kTem; }
}

// Position of the first marker (its 0xFF) at or behind `from`, or the size of the file.
size_t findMarker(Bytes file, size_t from);

// Position of the marker that ends the entropy-coded data from `dataAt` on, or the size of the file. Nothing where
// others than restart markers stand before it, so that what a decoder makes of them decides.
std::optional<size_t> endOfScan(Bytes file, size_t dataAt);

// The segment whose marker is the first at or behind `from`. Throws CodecError where the file ends
// too early, and for a bad length.
Segment readSegment(Bytes file, size_t from);

}
