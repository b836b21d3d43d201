// SPDX-License-Identifier: Apache-2.0
// Packets, one after the other through all tile-parts of a tile.
#include "codec/j2k/decode/packet_reader.h"

#include <algorithm>
#include <bit>
#include <string>

#include "codec/j2k/code_segments.h"
#include "codec/j2k/packet_bits.h"
#include "codec/j2k/progression.h"

namespace qel::codec::j2k {

namespace {

// For each byte of a tile, and for each of its code-blocks: a header that says nothing of many code-blocks takes a
// byte, and looking at all of them must not last.
constexpr uint64_t kVisitsPerByte = 32, kVisitsPerBlock = 32;
constexpr uint64_t kMaxBlocks = 1 << 22;
// What a packet has for a code-block: passes of one segment.
struct Contribution {
    CodeBlock* block;
    uint32_t passes, length;
    bool beginsSegment;
};

// Table B.4.
int readPasses(PacketBits& bits)
{
    if (!bits.bit()) return 1;
    if (!bits.bit()) return 2;
    if (uint32_t more = bits.bits(2); more < 3) return int(3 + more);
    if (uint32_t more = bits.bits(5); more < 31) return int(6 + more);
    return int(37 + bits.bits(7));
}

class PacketReader {
public:
    PacketReader(const Codestream& codestream, const ReadOptions& options, Bytes packedHeaders, Tile& tile);

    // Reads the packets of a progression; false when there is nothing left to be read.
    bool read(const Progression& progression);
    void checkEnd();

private:
    bool readPacket(const PacketPlace& place, int layer);
    bool atEnd();
    void skipSop();
    void readHeader(const PacketPlace& place, int layer);
    void readHeader(PacketBits& bits, const PacketPlace& place, int layer);
    void readBlock(PacketBits& bits, const Band& band, PrecinctBand& part, size_t index, int layer);
    void readLengths(PacketBits& bits, CodeBlock& block, BlockState& state, int passes);
    void makeBlocks(const Resolution& resolution, Precinct& precinct, size_t index);
    void takeBody(bool isWanted);
    bool isWanted(const PacketPlace& place, int layer) const;
    [[noreturn]] void fail(const std::string& what) const;

    const Codestream& codestream_;
    const ReadOptions& options_;
    Tile& tile_;
    const std::vector<TilePart>& parts_;
    const bool arePacked_;
    Bytes headers_, body_; // what is left of the packed headers, and of the current tile-part
    size_t part_ = 0;
    int style_ = 0;                           // of the code-blocks of the current packet
    uint64_t visits_ = 0, blocks_ = 0;        // code-blocks that may still be looked at, and that there are
    std::vector<Contribution> contributions_; // of the current packet
};

PacketReader::PacketReader(const Codestream& codestream, const ReadOptions& options, Bytes packedHeaders, Tile& tile)
    : codestream_(codestream), options_(options), tile_(tile), parts_(codestream.tileParts().at(tile.index)),
      arePacked_(codestream.hasPackedHeaders() || !packedHeaders.empty()), headers_(packedHeaders),
      body_(parts_[0].body)
{
    size_t bytes = headers_.size();
    for (const TilePart& part : parts_) bytes += part.body.size();
    visits_ = kVisitsPerByte * bytes;
}

void PacketReader::fail(const std::string& what) const { throw CodecError(what, codestream_.positionOf(body_.data())); }

bool PacketReader::read(const Progression& progression)
{
    return forPackets(codestream_.size(), tile_, progression, [this](const PacketPlace& place, int layer) {
        if (!readPacket(place, layer)) return false;
        ++tile_.components[place.component].resolutions[place.resolution].precincts[place.precinct].layersRead;
        ++tile_.packetsRead;
        return true;
    });
}

// Passes over tile-parts that are used up.
bool PacketReader::atEnd()
{
    while (body_.empty() && part_ + 1 < parts_.size()) body_ = parts_[++part_].body;
    return arePacked_ ? headers_.empty() : body_.empty();
}

bool PacketReader::readPacket(const PacketPlace& place, int layer)
{
    if (atEnd()) return false;
    skipSop();
    readHeader(place, layer);
    takeBody(isWanted(place, layer));
    return true;
}

// SOP and EPH may be used or not, whatever the coding style says: neither can be the beginning of what comes there
// otherwise.
void PacketReader::skipSop()
{
    if (!isMarker(body_, 0, marker::kSop)) return;
    Segment segment = readSegment(body_, 0);
    if (segment.parameters.size() != 2) fail("a SOP segment of bad length");
    int number = segment.parameters[0] << 8 | segment.parameters[1];
    if (number != int(tile_.packetsRead & 0xFFFF)) fail("packet " + std::to_string(number) + " out of order");
    body_ = body_.subspan(segment.end);
}

void PacketReader::readHeader(const PacketPlace& place, int layer)
{
    Bytes& source = arePacked_ ? headers_ : body_;
    PacketBits bits(source);
    contributions_.clear();
    if (bits.bit()) readHeader(bits, place, layer);
    source = source.subspan(bits.finish());
    if (isMarker(source, 0, marker::kEph)) source = source.subspan(2);
}

void PacketReader::readHeader(PacketBits& bits, const PacketPlace& place, int layer)
{
    TileComponent& component = tile_.components[place.component];
    Resolution& resolution = component.resolutions[place.resolution];
    Precinct& precinct = resolution.precincts[place.precinct];
    style_ = component.coding.style;
    if (precinct.bands.empty()) makeBlocks(resolution, precinct, place.precinct);
    for (size_t b = 0; b < precinct.bands.size(); ++b) {
        PrecinctBand& part = precinct.bands[b];
        if (part.blocks.size() > visits_) fail("packets of many code-blocks without data");
        visits_ -= part.blocks.size();
        for (size_t i = 0; i < part.blocks.size(); ++i) readBlock(bits, resolution.bands[b], part, i, layer);
    }
}

void PacketReader::makeBlocks(const Resolution& resolution, Precinct& precinct, size_t index)
{
    uint64_t count = countBlocks(resolution, index);
    blocks_ += count;
    visits_ += kVisitsPerBlock * count;
    if (blocks_ > kMaxBlocks) fail("more code-blocks in a tile than supported");
    precinct.bands = makePrecinctBands(resolution, index);
}

void PacketReader::readBlock(PacketBits& bits, const Band& band, PrecinctBand& part, size_t index, int layer)
{
    auto bit = [&] { return bits.bit(); };
    uint32_t x = uint32_t(index % part.across), y = uint32_t(index / part.across);
    CodeBlock& block = part.blocks[index];
    BlockState& state = part.states[index];
    bool isNew = state.passes == 0;
    if (isNew ? !part.inclusion.isBelow(x, y, uint32_t(layer) + 1, bit) : !bits.bit()) return;
    while (isNew && !part.zeroBitPlanes.isBelow(x, y, block.zeroBitPlanes + 1u, bit))
        if (++block.zeroBitPlanes >= band.bitPlanes) fail("a code-block without bit planes");
    int passes = readPasses(bits), planes = band.bitPlanes - block.zeroBitPlanes;
    // The first plane has one pass, the others three.
    if (state.passes + passes > 3 * planes - 2) fail("more coding passes than bit planes have");
    while (bits.bit())
        if (++state.lengthBits > 32) fail("a code-block of more than 4 GiB");
    readLengths(bits, block, state, passes);
}

void PacketReader::readLengths(PacketBits& bits, CodeBlock& block, BlockState& state, int passes)
{
    while (passes > 0) {
        int together = std::min(passes, passesToTermination(style_, state.passes));
        int lengthBits = state.lengthBits + std::bit_width(unsigned(together)) - 1;
        if (lengthBits > 32) fail("a code-block of more than 4 GiB");
        contributions_.push_back(
            {&block, uint32_t(together), bits.bits(lengthBits), beginsSegment(style_, state.passes)});
        state.passes = uint16_t(state.passes + together);
        passes -= together;
    }
}

bool PacketReader::isWanted(const PacketPlace& place, int layer) const
{
    int levels = tile_.components[place.component].coding.levels;
    return layer < options_.layers && place.resolution <= std::max(0, levels - options_.reduce);
}

// Bytes that are cut off are worth nothing, and neither are those behind them.
void PacketReader::takeBody(bool isWanted)
{
    if (body_.empty()) atEnd();
    for (const Contribution& contribution : contributions_) {
        if (contribution.length > body_.size()) fail("a packet is cut off");
        Bytes bytes = body_.first(contribution.length);
        body_ = body_.subspan(contribution.length);
        if (!isWanted) continue;
        CodeBlock& block = *contribution.block;
        if (contribution.beginsSegment) block.segments.emplace_back();
        block.segments.back().passes += contribution.passes;
        block.segments.back().length += contribution.length;
        if (!block.data.empty() && block.data.back().data() + block.data.back().size() == bytes.data())
            block.data.back() = {block.data.back().data(), block.data.back().size() + bytes.size()};
        else if (!bytes.empty())
            block.data.push_back(bytes);
    }
}

void PacketReader::checkEnd()
{
    bool isOver = atEnd();
    if (uint64_t missing = tile_.packets - tile_.packetsRead)
        fail(std::to_string(missing) + " of " + std::to_string(tile_.packets) + " packets are missing");
    if (!isOver || !body_.empty()) fail("unused bytes behind the last packet");
}

}

Tile readTile(const Codestream& codestream, uint32_t index, const ReadOptions& options)
{
    TileHeader header = codestream.tileHeader(index);
    TileParameters parameters(codestream.parameters(), header.parameters);
    Tile tile = makeTile(codestream.size(), parameters, index);
    try {
        PacketReader reader(codestream, options, header.packetHeaders, tile);
        for (const Progression& progression : parameters.progressions())
            if (!reader.read(progression)) break;
        reader.checkEnd();
    } catch (const CodecError& error) {
        tile.warnings.push_back("tile " + std::to_string(index) + ": " + error.what());
    }
    return tile;
}

}
