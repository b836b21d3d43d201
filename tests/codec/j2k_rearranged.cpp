// SPDX-License-Identifier: Apache-2.0
// Codestreams of an independent encoder whose packets come in unusual orders: with tile-parts and the headers of
// packets put elsewhere, and with progressions that change.
#include <algorithm>
#include <functional>

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
    OpenJpegCase tiled = {.components = 3, .tileWidth = 48, .tileHeight = 40, .order = j2k::Order::rlcp, .layers = 2};
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

struct J2kTileParts : testing::Test {
    File file = tiledFile();
    CodestreamPieces pieces = takeApart(file);
};

TEST_F(J2kTileParts, MayComeInAnyOrder)
{
    ASSERT_GT(pieces.parts.size(), 8u);
    std::ranges::reverse(pieces.parts);
    expectSame(putTogether(pieces), file);
}

TEST_F(J2kTileParts, MayHaveThePacketHeadersInTheirOwn)
{
    auto headers = [](const TilePartPieces& part) { return segmentsOf(j2k::marker::kPpt, headersOf(part), 17); };
    expectSame(putTogether(pieces, headers, bodiesOf), file);
}

TEST_F(J2kTileParts, MayHaveThePacketHeadersInTheMainOne)
{
    File all;
    for (auto& part : pieces.parts) {
        File headers = headersOf(part);
        all.insert(all.end(), {0, 0, uint8_t(headers.size() >> 8), uint8_t(headers.size())});
        append(all, headers);
    }
    append(pieces.mainHeader, segmentsOf(j2k::marker::kPpm, all, 61));
    expectSame(putTogether(pieces, noSegments, bodiesOf), file);
}

TEST_F(J2kTileParts, AGapHidesOnlyWhatComesBehindItInTheTile)
{
    pieces.parts.erase(pieces.parts.begin() + 1);
    ReadJ2k read(putTogether(pieces)), whole(file);
    EXPECT_EQ(read.warnings.size(), 2u); // one for the tile-part, one for the packets
    ASSERT_EQ(read.tiles.size(), whole.tiles.size());
    for (size_t t = 0; t < read.tiles.size(); ++t)
        EXPECT_EQ(read.tiles[t].packetsRead == whole.tiles[t].packetsRead, t != 0);
}

// Here the first tile-part of the first tile comes last, and of it only the first packet.
TEST_F(J2kTileParts, ACutHidesWhatComesBehindItInTheTile)
{
    std::ranges::reverse(pieces.parts);
    File cut = putTogether(pieces);
    const PacketPieces& first = pieces.parts.back().packets[0];
    cut.resize(cut.size() - 2 - packetsOf(pieces.parts.back()).size() + first.header.size() + first.body.size());
    ReadJ2k read(cut);
    EXPECT_EQ(read.tiles[0].packetsRead, 1u);
    EXPECT_EQ(read.tiles[1].packetsRead, read.tiles[1].packets);
}

// Resolutions and components split between two orders.
TEST(J2kProgressions, MayChange)
{
    OpenJpegCase options = {.components = 3, .layers = 3};
    options.precincts = {{32, 64}, {64, 16}};
    OpenJpegCase other = options;
    other.x0 = 21, other.y0 = 13, other.chromaDx = 3, other.chromaDy = 2;
    other.precincts = {{16, 16}};
    for (OpenJpegCase& tested : {std::ref(options), std::ref(other)}) {
        const File file = openJpegEncode(tested);
        for (int orders = 0; orders < 25; ++orders) {
            j2k::Order a{orders / 5}, b{orders % 5};
            tested.changes = {{2, 4, 0, 3, 3, a}, {0, 2, 0, 3, 3, b}};
            expectSame(openJpegEncode(tested), file);
            tested.changes = {{0, 4, 1, 3, 3, a}, {3, 4, 0, 1, 3, b}, {0, 3, 0, 1, 3, a}};
            expectSame(openJpegEncode(tested), file);
        }
    }
}

// Layers that one change leaves out come with the next; what has come does not come again.
TEST(J2kProgressions, LeaveLayersToLaterOnes)
{
    OpenJpegCase options = {.layers = 3, .levels = 1};
    options.hasSop = options.hasEph = true;
    const File file = openJpegEncode(options);
    CodestreamPieces pieces = takeApart(file);
    // The first layer of the lowest resolution, all of the other one, and what is left; 0 ends the components for all.
    const File changes = {0xFF, j2k::marker::kPoc, 0, 23, 0, 0, 0, 1, 1, 0, 0, 1, 0, 0, 3, 2, 1, 0, 0, 0, 0, 255, 33, 0,
                          0};
    const auto byLayers = pieces.parts[0].packets;
    ASSERT_EQ(byLayers.size(), 6u);
    pieces.parts[0].packets.clear();
    for (size_t i : {0, 1, 3, 5, 2, 4}) pieces.parts[0].packets.push_back(byLayers[i]);
    expectSame(putTogether(pieces, [&](auto&) { return changes; }), file);
    append(pieces.mainHeader, changes);
    expectSame(putTogether(pieces), file);
}

}
