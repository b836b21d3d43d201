// SPDX-License-Identifier: Apache-2.0
// Finding and reading marker segments.
#include "codec/jpeg/markers.h"

#include <cstring>

namespace qel::codec::jpeg {

size_t findMarker(Bytes file, size_t from)
{
    while (from + 1 < file.size()) {
        auto* found = static_cast<const uint8_t*>(memchr(file.data() + from, 0xFF, file.size() - 1 - from));
        if (!found) break;
        from = size_t(found - file.data());
        if (found[1] != 0 && found[1] != 0xFF) return from;
        ++from;
    }
    return file.size();
}

std::optional<size_t> endOfScan(Bytes file, size_t dataAt)
{
    size_t at = findMarker(file, dataAt);
    while (at < file.size() && marker::isRestart(file[at + 1])) at = findMarker(file, at + 2);
    if (at < file.size() && file[at + 1] < marker::kSof0) return {};
    return at;
}

Segment readSegment(Bytes file, size_t from)
{
    Segment segment;
    segment.position = findMarker(file, from);
    if (segment.position == file.size()) throw CodecError("the file ends where a marker is expected", file.size());
    segment.code = file[segment.position + 1];
    segment.end = segment.position + 2;
    if (marker::standsAlone(segment.code)) return segment;

    auto rest = file.subspan(segment.end);
    if (rest.size() < 2) throw CodecError("the file ends inside a marker segment", file.size());
    size_t length = size_t(rest[0]) << 8 | rest[1];
    if (length < 2) throw CodecError("a marker segment of length " + std::to_string(length), segment.end);
    if (rest.size() < length) throw CodecError("the file ends inside a marker segment", file.size());
    segment.parameters = rest.subspan(2, length - 2);
    segment.end += length;
    return segment;
}

}
