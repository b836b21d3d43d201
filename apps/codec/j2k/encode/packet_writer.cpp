// SPDX-License-Identifier: Apache-2.0
// Headers and bodies of packets.
#include "codec/j2k/encode/packet_writer.h"

#include <algorithm>
#include <bit>

#include "codec/j2k/code_segments.h"

namespace qel::codec::j2k {

namespace {

// Table B.4.
void writePasses(PacketBitWriter& bits, int passes)
{
    if (passes == 1) return bits.bit(0);
    if (passes == 2) return bits.bits(2, 2);
    if (passes < 6) return bits.bits(uint32_t(12 + passes - 3), 4);
    if (passes < 37) return bits.bits(uint32_t(0x1E0 + passes - 6), 9);
    bits.bits(uint32_t(0xFF80 + passes - 37), 16);
}

// Calls visit(passes, bytes) for each codeword segment that has some of the passes from `first` up to `end`.
template <class Visit> void forPieces(const EncodedBlock& block, int style, int first, int end, Visit visit)
{
    while (first < end) {
        int together = std::min(end - first, passesToTermination(style, first));
        visit(together, block.bytesOf(first + together) - block.bytesOf(first));
        first += together;
    }
}

// Bits that the length of a piece has beyond Lblock.
int extraBits(int passes) { return std::bit_width(unsigned(passes)) - 1; }

void writeLengths(PacketBitWriter& bits, const EncodedBlock& block, int style, int first, int end, uint8_t& lengthBits)
{
    int needed = lengthBits;
    forPieces(block, style, first, end, [&](int passes, uint32_t bytes) {
        needed = std::max(needed, int(std::bit_width(bytes)) - extraBits(passes));
    });
    for (; lengthBits < needed; ++lengthBits) bits.bit(1);
    bits.bit(0);
    forPieces(block, style, first, end,
              [&](int passes, uint32_t bytes) { bits.bits(bytes, lengthBits + extraBits(passes)); });
}

}

size_t Packet::size() const
{
    size_t size = header.size();
    for (Bytes piece : body) size += piece.size();
    return size;
}

PacketWriter::PacketWriter(const EncodedPrecinct& precinct) : precinct_(&precinct)
{
    for (const EncodedBand& band : precinct.bands) {
        Band& made = bands_.emplace_back();
        made.blocks.resize(band.blocks.size());
        made.inclusion = made.zeroBitPlanes = TagTreeEncoder(band.across, band.down);
        for (uint32_t i = 0; i < band.blocks.size(); ++i)
            made.zeroBitPlanes.set(i % band.across, i / band.across, uint16_t(band.blocks[i].zeroBitPlanes));
    }
}

// Settles what the packet has of each code-block of a band; false if nothing.
bool PacketWriter::choose(size_t band, Slope slope)
{
    const EncodedBand& encoded = precinct_->bands[band];
    bool hasAny = false;
    for (uint32_t i = 0; i < encoded.blocks.size(); ++i) {
        Block& block = bands_[band].blocks[i];
        block.nextPasses = std::max(block.passes, uint16_t(encoded.blocks[i].passesAt(slope)));
        if (block.nextPasses == block.passes) continue;
        hasAny = true;
        if (block.passes == 0) bands_[band].inclusion.set(i % encoded.across, i / encoded.across, uint16_t(layer_));
    }
    return hasAny;
}

void PacketWriter::writeBlock(size_t band, uint32_t index, PacketBitWriter& bits, Packet& packet)
{
    const EncodedBand& encoded = precinct_->bands[band];
    const EncodedBlock& code = encoded.blocks[index];
    Band& state = bands_[band];
    Block& block = state.blocks[index];
    uint32_t x = index % encoded.across, y = index / encoded.across;
    auto put = [&](int bit) { bits.bit(bit); };
    bool isNew = block.passes == 0, hasPasses = block.nextPasses > block.passes;
    isNew ? state.inclusion.encode(x, y, uint32_t(layer_) + 1, put) : put(hasPasses);
    if (!hasPasses) return;
    if (isNew) state.zeroBitPlanes.encode(x, y, uint32_t(code.zeroBitPlanes) + 1, put);
    writePasses(bits, block.nextPasses - block.passes);
    writeLengths(bits, code, precinct_->style, block.passes, block.nextPasses, block.lengthBits);
    uint32_t begin = code.bytesOf(block.passes), end = code.bytesOf(block.nextPasses);
    if (end > begin) packet.body.push_back(Bytes(code.data).subspan(begin, end - begin));
    block.passes = block.nextPasses;
}

void PacketWriter::next(Slope slope, Packet& packet)
{
    packet.header.clear();
    packet.body.clear();
    PacketBitWriter bits(packet.header);
    bool hasAny = false;
    for (size_t b = 0; b < bands_.size(); ++b) hasAny |= choose(b, slope);
    bits.bit(hasAny);
    for (size_t b = 0; hasAny && b < bands_.size(); ++b)
        for (uint32_t i = 0; i < bands_[b].blocks.size(); ++i) writeBlock(b, i, bits, packet);
    bits.finish();
    ++layer_;
}

}
