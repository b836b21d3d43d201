// SPDX-License-Identifier: Apache-2.0
// The main header, and the tile-parts without looking into them.
#include "codec/j2k/decode/codestream.h"

#include <algorithm>
#include <string>

namespace qel::codec::j2k {

namespace {

// SOT with its parameters, and SOD.
constexpr size_t kSmallestTilePart = 14;

// Contents of PPM or PPT segments by their index.
using PackedHeaders = std::map<int, Bytes>;

void collect(const Segment& segment, const char* name, PackedHeaders& packed)
{
    Fields fields(segment, name);
    int index = fields.u8();
    if (!packed.emplace(index, fields.takeRest()).second) fields.fail("a second one of this number");
}

void append(const PackedHeaders& packed, std::vector<uint8_t>& all)
{
    for (auto& [index, bytes] : packed) all.insert(all.end(), bytes.begin(), bytes.end());
}

}

Codestream::Codestream(Bytes file, size_t begin, size_t end) : file_(file.first(end))
{
    readTileParts(readMainHeader(begin));
    sortTileParts();
    if (tileParts_.empty()) throw CodecError("the codestream holds no tile", file_.size());
}

void Codestream::warn(const std::string& what, size_t position)
{
    warnings_.push_back(what + " (at byte " + std::to_string(position) + ")");
}

// Returns the position of the first SOT.
size_t Codestream::readMainHeader(size_t at)
{
    if (!isMarker(file_, at, marker::kSoc)) throw CodecError("not a JPEG 2000 codestream", at);
    Segment segment = readSegment(file_, at + 2);
    if (segment.code != marker::kSiz) throw CodecError("no SIZ at the beginning", segment.position);
    size_ = readSize(segment);
    PackedHeaders packed;
    for (;;) {
        segment = readSegment(file_, segment.end);
        if (segment.code == marker::kSot) break;
        if (segment.code == marker::kEoc) throw CodecError("the codestream holds no tile", segment.position);
        if (segment.code == marker::kPpm) collect(segment, "PPM", packed);
        parameters_.read(segment, size_);
    }
    if (!parameters_.style) throw CodecError("COD is missing", segment.position);
    if (!parameters_.quantization) throw CodecError("QCD is missing", segment.position);
    append(packed, packedHeaders_);
    splitPackedHeaders();
    return segment.position;
}

// One tile-part after the other has the number of bytes of its packets' headers, and these (T.800 A.7.4).
void Codestream::splitPackedHeaders()
{
    for (Bytes rest = packedHeaders_; !rest.empty();) {
        uint64_t length = rest.size() < 4 ? UINT64_MAX : Fields(rest, 0, "PPM").u32();
        if (length > rest.size() - 4) {
            warnings_.push_back("PPM: packet headers are missing");
            break;
        }
        packedParts_.push_back(rest.subspan(4, length));
        rest = rest.subspan(4 + length);
    }
}

// What is damaged behind the first tile-part costs only what comes later.
void Codestream::readTileParts(size_t at)
{
    size_t count = 0;
    try {
        for (;; ++count) {
            Segment segment = readSegment(file_, at);
            if (segment.code == marker::kEoc) return;
            if (segment.code != marker::kSot) throw CodecError("no tile-part where one must begin", at);
            TilePart part = readTilePart(segment, at);
            if (count < packedParts_.size()) part.packetHeaders = packedParts_[count];
            tileParts_[part.tile].push_back(part);
            if (part.isCut) return warn("the file ends inside a tile-part of tile " + std::to_string(part.tile), at);
        }
    } catch (const CodecError& error) {
        if (count == 0) throw;
        warnings_.push_back(error.what());
    }
}

// Position of the last EOC from `from` on, or the end of the file. No packet has such bytes.
size_t Codestream::lastEoc(size_t from) const
{
    for (size_t at = file_.size(); at-- > from;)
        if (isMarker(file_, at, marker::kEoc)) return at;
    return file_.size();
}

// Sets `at` to where the next one begins.
TilePart Codestream::readTilePart(const Segment& start, size_t& at)
{
    Fields fields(start, "SOT");
    TilePart part;
    part.position = start.position;
    part.tile = uint32_t(fields.u16());
    size_t length = fields.u32();
    part.index = fields.u8();
    part.count = fields.u8();
    fields.finish();
    if (part.tile >= size_.tiles()) fields.fail("tile " + std::to_string(part.tile) + " of none");
    if (length != 0 && length < kSmallestTilePart) fields.fail("a tile-part of " + std::to_string(length) + " bytes");

    size_t end = file_.size();
    part.isCut = length > end - start.position;
    if (length == 0) end = lastEoc(start.end);
    if (length != 0 && !part.isCut) end = start.position + length;
    Segment segment = start;
    do segment = readSegment(file_.first(end), segment.end);
    while (segment.code != marker::kSod);
    part.header = file_.subspan(start.end, segment.position - start.end);
    part.body = file_.subspan(segment.end, end - segment.end);
    at = end;
    return part;
}

// The tile-parts of a tile may be stored in any order here, but a gap hides what comes behind it, and so does a cut.
void Codestream::sortTileParts()
{
    for (auto tile = tileParts_.begin(); tile != tileParts_.end();) {
        std::vector<TilePart>& parts = tile->second;
        std::ranges::stable_sort(parts, {}, &TilePart::index);
        size_t kept = 0;
        auto follows = [&] { return parts[kept].index == int(kept) && (kept == 0 || !parts[kept - 1].isCut); };
        while (kept < parts.size() && follows()) ++kept;
        int count = std::ranges::max(parts, {}, &TilePart::count).count;
        if (kept < parts.size() || int(kept) < count)
            warn("tile-part " + std::to_string(kept) + " of tile " + std::to_string(tile->first) + " is missing",
                 kept < parts.size() ? parts[kept].position : file_.size());
        parts.resize(kept);
        tile = kept ? std::next(tile) : tileParts_.erase(tile);
    }
}

TileHeader Codestream::tileHeader(uint32_t tile) const
{
    TileHeader header;
    for (const TilePart& part : tileParts_.at(tile)) {
        append({{0, part.packetHeaders}}, header.packetHeaders);
        PackedHeaders packed;
        size_t end = positionOf(part.header.data()) + part.header.size();
        for (size_t at = end - part.header.size(); at < end;) {
            Segment segment = readSegment(file_.first(end), at);
            if (segment.code == marker::kPpt) collect(segment, "PPT", packed);
            header.parameters.read(segment, size_);
            at = segment.end;
        }
        append(packed, header.packetHeaders);
    }
    return header;
}

}
