// SPDX-License-Identifier: Apache-2.0
// Codestreams taken to pieces, to be put together in other ways.
#pragma once

#include <algorithm>

#include "j2k_reading.h"

namespace qel::test {

using File = std::vector<uint8_t>;

struct PacketPieces {
    File header, body;
};

struct TilePartPieces {
    File start; // SOT, with a length that is set when it is stored
    std::vector<PacketPieces> packets;
};

struct CodestreamPieces {
    File mainHeader;
    std::vector<TilePartPieces> parts;
};

inline void append(File& file, codec::Bytes more) { file.insert(file.end(), more.begin(), more.end()); }

// Moves the bytes before the marker, or all, from `rest` to the result.
inline File takeUpTo(codec::Bytes& rest, uint8_t code)
{
    size_t at = 0;
    while (at < rest.size() && !codec::j2k::isMarker(rest, at, code)) ++at;
    File taken(rest.begin(), rest.begin() + ptrdiff_t(at));
    rest = rest.subspan(at);
    return taken;
}

// Of a file in which each packet has a SOP before it and an EPH behind its header.
inline CodestreamPieces takeApart(codec::Bytes file)
{
    codec::j2k::Codestream codestream(file, 0, file.size());
    std::vector<codec::j2k::TilePart> parts;
    for (auto& [tile, some] : codestream.tileParts()) parts.insert(parts.end(), some.begin(), some.end());
    std::ranges::sort(parts, {}, &codec::j2k::TilePart::position);
    CodestreamPieces pieces;
    append(pieces.mainHeader, file.first(parts[0].position));
    for (const codec::j2k::TilePart& part : parts) {
        TilePartPieces& taken = pieces.parts.emplace_back();
        append(taken.start, file.subspan(part.position, 12));
        for (codec::Bytes rest = part.body; !rest.empty();) {
            rest = rest.subspan(6);
            PacketPieces& packet = taken.packets.emplace_back();
            packet.header = takeUpTo(rest, codec::j2k::marker::kEph);
            rest = rest.subspan(2);
            packet.body = takeUpTo(rest, codec::j2k::marker::kSop);
        }
    }
    return pieces;
}

// The headers of the packets of a tile-part, their bodies, or both.
inline File headersOf(const TilePartPieces& part)
{
    File headers;
    for (const PacketPieces& packet : part.packets) append(headers, packet.header);
    return headers;
}

inline File bodiesOf(const TilePartPieces& part)
{
    File bodies;
    for (const PacketPieces& packet : part.packets) append(bodies, packet.body);
    return bodies;
}

inline File packetsOf(const TilePartPieces& part)
{
    File packets;
    for (const PacketPieces& packet : part.packets) append(packets, packet.header), append(packets, packet.body);
    return packets;
}

inline File noSegments(const TilePartPieces&) { return {}; }

// A file of the pieces: segmentsOf(part) in the header of each tile-part, and dataOf(part) behind it.
template <class Segments = decltype(noSegments), class Data = decltype(packetsOf)>
File putTogether(const CodestreamPieces& pieces, Segments segmentsOf = noSegments, Data dataOf = packetsOf)
{
    File file = pieces.mainHeader;
    for (const TilePartPieces& part : pieces.parts) {
        const File segments = segmentsOf(part), data = dataOf(part);
        size_t at = file.size(), length = part.start.size() + segments.size() + 2 + data.size();
        append(file, part.start);
        for (size_t i = 0; i < 4; ++i) file[at + 6 + i] = uint8_t(length >> (24 - 8 * i));
        append(file, segments);
        file.insert(file.end(), {0xFF, codec::j2k::marker::kSod});
        append(file, data);
    }
    file.insert(file.end(), {0xFF, codec::j2k::marker::kEoc});
    return file;
}

}
