// Codestreams of an independent encoder, put together anew: tile-parts and packets in other orders, and the headers of
// packets elsewhere.
#include <map>
#include <set>
#include <tuple>

#include "j2k_pieces.h"
#include "openjpeg_peer.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

void expectSame(const File& file, const File& expected)
{
    ReadJ2k read(file);
    EXPECT_EQ(read.warnings, Warnings());
    EXPECT_TRUE(codedIn(read) == codedIn(ReadJ2k(expected)));
}

File tiledFile()
{
    OpenJpegCase tiled = {.name = "tiled", .components = 3, .tileWidth = 48, .tileHeight = 40, .layers = 2};
    tiled.order = J2kOrder::rlcp;
    tiled.hasSop = tiled.hasEph = true;
    tiled.tileParts = 'R';
    return openJpegEncode(tiled);
}

// Marker segments of a few bytes each, numbered, the last one first.
File segmentsOf(uint8_t code, const File& data, size_t most)
{
    File segments;
    for (size_t count = (data.size() + most - 1) / most; count-- > 0;) {
        auto piece = Bytes(data).subspan(count * most, std::min(most, data.size() - count * most));
        size_t length = piece.size() + 3;
        segments.insert(segments.end(), {0xFF, code, uint8_t(length >> 8), uint8_t(length), uint8_t(count)});
        append(segments, piece);
    }
    return segments;
}

TEST(J2kTileParts, MayComeInAnyOrder)
{
    File file = tiledFile();
    CodestreamPieces pieces = takeApart(file);
    ASSERT_GT(pieces.parts.size(), 8u);
    File reversed = pieces.mainHeader;
    for (auto part = pieces.parts.rbegin(); part != pieces.parts.rend(); ++part)
        appendPart(reversed, *part, {}, packetsOf(*part));
    appendEoc(reversed);
    expectSame(reversed, file);
}

TEST(J2kTileParts, MayHaveThePacketHeadersInTheirOwn)
{
    File file = tiledFile();
    CodestreamPieces pieces = takeApart(file);
    File packed = pieces.mainHeader;
    for (auto& part : pieces.parts)
        appendPart(packed, part, segmentsOf(j2k_marker::kPpt, headersOf(part), 17), bodiesOf(part));
    appendEoc(packed);
    expectSame(packed, file);
}

TEST(J2kTileParts, MayHaveThePacketHeadersInTheMainOne)
{
    File file = tiledFile(), all;
    CodestreamPieces pieces = takeApart(file);
    for (auto& part : pieces.parts) {
        File headers = headersOf(part);
        all.insert(all.end(), {0, 0, uint8_t(headers.size() >> 8), uint8_t(headers.size())});
        append(all, headers);
    }
    File packed = pieces.mainHeader;
    append(packed, segmentsOf(j2k_marker::kPpm, all, 61));
    for (auto& part : pieces.parts) appendPart(packed, part, {}, bodiesOf(part));
    appendEoc(packed);
    expectSame(packed, file);
}

TEST(J2kTileParts, AGapHidesOnlyWhatComesBehindItInTheTile)
{
    File file = tiledFile();
    CodestreamPieces pieces = takeApart(file);
    File gap = pieces.mainHeader;
    for (size_t i = 0; i < pieces.parts.size(); ++i)
        if (i != 1) appendPart(gap, pieces.parts[i], {}, packetsOf(pieces.parts[i]));
    appendEoc(gap);
    ReadJ2k read(gap), whole(file);
    EXPECT_EQ(read.warnings.size(), 2u); // one for the tile-part, one for the packets
    ASSERT_EQ(read.tiles.size(), whole.tiles.size());
    for (size_t t = 0; t < read.tiles.size(); ++t)
        EXPECT_EQ(read.tiles[t].packetsRead == whole.tiles[t].packetsRead, t != 0);
}

// Here the first tile-part of the first tile comes last, and of it only the first packet.
TEST(J2kTileParts, ACutHidesWhatComesBehindItInTheTile)
{
    File file = tiledFile();
    CodestreamPieces pieces = takeApart(file);
    File cut = pieces.mainHeader;
    for (auto part = pieces.parts.rbegin(); part != pieces.parts.rend(); ++part)
        appendPart(cut, *part, {}, packetsOf(*part));
    TilePartPieces& last = pieces.parts[0];
    size_t whole = packetsOf(last).size();
    last.packets.resize(1);
    cut.resize(cut.size() - (whole - packetsOf(last).size()));
    ReadJ2k read(cut);
    EXPECT_EQ(read.tiles[0].packetsRead, 1u);
    EXPECT_EQ(read.tiles[1].packetsRead, read.tiles[1].packets);
}

// Layer, resolution, component, precinct.
using Packet = std::tuple<int, int, int, uint32_t>;

// The order of packets by loops over all samples of the reference grid, as the standard writes them (T.800 B.12.1).
class PlainOrder {
public:
    PlainOrder(const J2kSize& size, const J2kTile& tile) : size_(size), tile_(tile) {}

    void add(const J2kProgression& progression)
    {
        auto layers = [&](auto body) {
            for (int l = 0; l < std::min(progression.endLayer, tile_.style.layers); ++l) body(l);
        };
        auto resolutions = [&](auto body) {
            for (int r = progression.firstResolution; r < progression.endResolution; ++r) body(r);
        };
        auto components = [&](auto body) {
            for (int c = progression.firstComponent; c < std::min(progression.endComponent, 3); ++c) body(c);
        };
        auto all = [&](int l, int r, int c) {
            for (uint32_t p = 0; p < precinctsOf(r, c); ++p) put({l, r, c, p});
        };
        auto at = [&](uint32_t x, uint32_t y, int r, int c) {
            if (auto precinct = precinctAt(x, y, r, c)) layers([&](int l) { put({l, r, c, *precinct}); });
        };
        switch (progression.order) {
        case J2kOrder::lrcp:
            return layers([&](int l) { resolutions([&](int r) { components([&](int c) { all(l, r, c); }); }); });
        case J2kOrder::rlcp:
            return resolutions([&](int r) { layers([&](int l) { components([&](int c) { all(l, r, c); }); }); });
        case J2kOrder::rpcl:
            return resolutions(
                [&](int r) { places([&](uint32_t x, uint32_t y) { components([&](int c) { at(x, y, r, c); }); }); });
        case J2kOrder::pcrl:
            return places([&](uint32_t x, uint32_t y) {
                components([&](int c) { resolutions([&](int r) { at(x, y, r, c); }); });
            });
        case J2kOrder::cprl:
            return components(
                [&](int c) { places([&](uint32_t x, uint32_t y) { resolutions([&](int r) { at(x, y, r, c); }); }); });
        }
    }

    const std::vector<Packet>& packets() const { return packets_; }

private:
    const J2kResolution* resolution(int r, int c) const
    {
        auto& all = tile_.components[size_t(c)].resolutions;
        return r < int(all.size()) ? &all[size_t(r)] : nullptr;
    }
    uint32_t precinctsOf(int r, int c) const
    {
        return resolution(r, c) ? uint32_t(resolution(r, c)->precincts.size()) : 0;
    }

    template <class Body> void places(Body body) const
    {
        for (uint32_t y = tile_.rect.y0; y < tile_.rect.y1; ++y)
            for (uint32_t x = tile_.rect.x0; x < tile_.rect.x1; ++x) body(x, y);
    }

    // Column or row of the precinct that begins at a coordinate of the reference grid, if there is one.
    static std::optional<uint32_t> startingAt(uint64_t x, uint64_t tile, uint64_t resolution, uint64_t scale, int bits)
    {
        bool isStart = x % (scale << bits) == 0 || (x == tile && resolution % (1u << bits) != 0);
        if (!isStart) return std::nullopt;
        return uint32_t((ceilDivide(x, scale) >> bits) - (resolution >> bits));
    }

    std::optional<uint32_t> precinctAt(uint32_t x, uint32_t y, int r, int c) const
    {
        if (precinctsOf(r, c) == 0) return std::nullopt;
        const J2kResolution& here = *resolution(r, c);
        const J2kCoding& coding = tile_.components[size_t(c)].coding;
        int halvings = coding.levels - r;
        auto column = startingAt(x, tile_.rect.x0, here.rect.x0, uint64_t(size_.components[size_t(c)].dx) << halvings,
                                 coding.precinctWidthBits[size_t(r)]);
        auto row = startingAt(y, tile_.rect.y0, here.rect.y0, uint64_t(size_.components[size_t(c)].dy) << halvings,
                              coding.precinctHeightBits[size_t(r)]);
        if (!column || !row || *column >= here.precinctGrid.across || *row >= here.precinctGrid.down)
            return std::nullopt;
        return *row * here.precinctGrid.across + *column;
    }

    // Unless it came before.
    void put(const Packet& packet)
    {
        if (done_.insert(packet).second) packets_.push_back(packet);
    }

    const J2kSize& size_;
    const J2kTile& tile_;
    std::set<Packet> done_;
    std::vector<Packet> packets_;
};

File progressionSegment(const std::vector<J2kProgression>& changes)
{
    size_t length = 2 + 7 * changes.size();
    File segment = {0xFF, j2k_marker::kPoc, uint8_t(length >> 8), uint8_t(length)};
    for (const J2kProgression& change : changes)
        segment.insert(segment.end(),
                       {uint8_t(change.firstResolution), uint8_t(change.firstComponent), 0, uint8_t(change.endLayer),
                        uint8_t(change.endResolution), uint8_t(change.endComponent), uint8_t(change.order)});
    return segment;
}

// One tile of three components, the packets by layers.
struct Source {
    explicit Source(const OpenJpegCase& options) : file(openJpegEncode(options)), read(file), pieces(takeApart(file))
    {
        PlainOrder order(read.file.codestream->size(), read.tiles[0]);
        order.add({.endComponent = 3, .endLayer = options.layers});
        EXPECT_EQ(order.packets().size(), pieces.parts[0].packets.size());
        for (size_t i = 0; i < order.packets().size(); ++i) packets[order.packets()[i]] = pieces.parts[0].packets[i];
    }

    // The same with POC, in the main header or in that of the tile-part.
    File with(const std::vector<J2kProgression>& changes, bool inMainHeader) const
    {
        PlainOrder order(read.file.codestream->size(), read.tiles[0]);
        for (auto& change : changes) order.add(change);
        TilePartPieces part = pieces.parts[0];
        part.packets.clear();
        for (auto& packet : order.packets()) part.packets.push_back(packets.at(packet));
        File changed = pieces.mainHeader, segment = progressionSegment(changes);
        if (inMainHeader) append(changed, segment);
        appendPart(changed, part, inMainHeader ? File() : segment, packetsOf(part));
        appendEoc(changed);
        return changed;
    }

    File file;
    ReadJ2k read;
    CodestreamPieces pieces;
    std::map<Packet, PacketPieces> packets;
};

TEST(J2kProgressions, MayChangeAtAnyPacket)
{
    OpenJpegCase options = {.components = 3, .layers = 3};
    options.hasSop = options.hasEph = true;
    options.precincts = {{32, 64}, {64, 16}};
    OpenJpegCase other = options;
    std::tie(other.x0, other.y0, other.chromaDx, other.chromaDy) = std::tuple(21, 13, 3, 2);
    other.precincts = {{16, 16}};
    for (auto& source : {Source(options), Source(other)})
        for (int first = 0; first < 5; ++first)
            for (int second = 0; second < 5; ++second) {
                J2kOrder a{first}, b{second};
                J2kProgression all = {.endComponent = 3, .endLayer = 3, .order = a};
                // The end of the components is 0 for all of them.
                expectSame(source.with({all}, first % 2), source.file);
                expectSame(source.with({{0, 2, 0, 3, 1, a}, {1, 4, 1, 2, 2, b}, {0, 33, 0, 255, 3, a}}, second % 2),
                           source.file);
                expectSame(source.with({{2, 4, 2, 3, 3, b}, {0, 3, 0, 2, 2, a}, {0, 33, 0, 3, 9, b}}, first % 2),
                           source.file);
            }
}

}
