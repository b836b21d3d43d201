// SPDX-License-Identifier: Apache-2.0
// Reading of marker segments.
#include "codec/j2k/markers.h"

namespace qel::codec::j2k {

namespace {

// Markers without a length: delimiters, and those reserved as such (T.800 table A.1).
bool standsAlone(uint8_t code)
{
    using namespace marker;
    return code == kSoc || code == kEph || code == kSod || code == kEoc || (code >= 0x30 && code <= 0x3F);
}

}

Segment readSegment(Bytes file, size_t at)
{
    Fields fields(file.subspan(at), at, "marker segment");
    if (fields.left() < 2) throw CodecError("the file ends where a marker is expected", file.size());
    Segment segment;
    segment.position = at;
    if (fields.u8() != 0xFF) throw CodecError("no marker where one must stand", at);
    segment.code = uint8_t(fields.u8());
    if (!standsAlone(segment.code)) {
        if (fields.left() < 2) throw CodecError("the file ends inside a marker segment", file.size());
        size_t length = size_t(fields.u16());
        if (length < 2) fields.fail("a length of " + std::to_string(length));
        if (fields.left() < length - 2) throw CodecError("the file ends inside a marker segment", file.size());
        segment.parameters = fields.take(length - 2);
    }
    segment.end = fields.position();
    return segment;
}

}
