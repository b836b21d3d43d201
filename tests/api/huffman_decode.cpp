// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman decoding, against the bit-at-a-time decoder: values, positions, states, and damaged streams.
#include <gtest/gtest.h>

#include <algorithm>

#include "argument_faults.h"
#include "huffman_stream.h"
#include "jpeg/entropy/huffman_decode_doors.h"

using namespace qel::test;

namespace {

using Block = std::array<int16_t, 64>;

// The library's decoder beside the reference.
struct Pair : Stream {
    QelDecodeHuffmanSpec dc, ac;
    int16_t lastDc = 0;
    Guarded<int16_t> block;
    ReferenceDecoder reference;

    Pair(const Lists& dcLists, const Lists& acLists, const std::vector<uint8_t>& stream, int largestPiece = 0)
        : Stream(stream, largestPiece), dc(specOf(dcLists)), ac(specOf(acLists)), block(64)
    {
        reference.src = stream;
        reference.dc = dcLists;
        reference.ac = acLists;
        for (int i = 0; i < 64; ++i) block.data()[i] = -1;
    }

    // One block by both; the status that both gave.
    QelStatus decode()
    {
        auto call = [&] {
            return qeliDecodeHuffman8x8_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &lastDc, &marker, &dc, &ac,
                                                      &state);
        };
        QelStatus status = whenEnough(call, lastDc);
        EXPECT_EQ(status, reference.decode());
        EXPECT_EQ(memcmp(block.data(), reference.block.data(), 128), 0);
        EXPECT_EQ(lastDc, reference.lastDc);
        EXPECT_EQ(state.positionsLeft, (uint32_t)reference.positionsLeft);
        EXPECT_TRUE(block.intact());
        expectAt(reference, status);
        return status;
    }
    // Until no progress is made, from marker to marker.
    void decodeAll()
    {
        for (int i = 0; i < 10000 && !testing::Test::HasFailure(); ++i) {
            int before = pos, held = state.count;
            QelStatus status = decode();
            if (status == qelStsNoErr && before == pos && held == state.count) return;
            if (status == qelStsJPEGOutOfBufErr && !restart(reference)) return;
            if (status == qelStsJPEGOutOfBufErr) lastDc = 0, reference.lastDc = reference.positionsLeft = 0;
        }
    }
};

std::vector<uint8_t> encoded(const Lists& dc, const Lists& ac, const std::vector<Block>& blocks)
{
    ReferenceEncoder encoder(dc, ac, 1 << 24);
    for (auto& block : blocks) EXPECT_EQ(encoder.encode(block), qelStsNoErr);
    encoder.write(0x7F, 7);
    return encoder.bytes;
}

std::vector<Block> randomBlocks(Random& random, int count)
{
    int sparsity = 1 << random.between(0, 6), bits = random.between(0, 13);
    std::vector<Block> blocks;
    for (int i = 0; i < count; ++i) blocks.push_back(randomBlock(random, sparsity, bits));
    return blocks;
}

// What encoders write and any bytes, whole or in pieces, with markers or without; any table, also of lists that
// describe more codes than there are.
TEST(DecodeHuffman8x8, EqualsTheBitwiseDecoder)
{
    Random random(3);
    for (int round = 0; round < 5000; ++round) {
        Lists dc = randomLists(random, round % 2), ac = randomLists(random, round % 2);
        if (round % 8 == 0) {
            random.fill(ac.values.data(), 256);
            for (int left = 256; auto& n : ac.bits) {
                n = uint8_t(random.between(0, std::min(left, 1 << random.between(0, 8))));
                left -= n;
            }
        }
        auto stream = round % 2 ? encoded(dc, ac, randomBlocks(random, 5)) : randomStream(random, 300);
        stream.resize(size_t(random.between(0, int(stream.size()))));
        if (round % 3 == 0) stream.insert(stream.end(), {0xFF, 0xD9});
        stream.resize(stream.size() + size_t(random.between(0, 12)));
        Pair(dc, ac, stream, random.between(0, 2) * random.between(1, 9)).decodeAll();
        ASSERT_FALSE(HasFailure()) << round;
    }
}

TEST(DecodeHuffman, OrderOfFaults)
{
    Random random(2);
    Pair p(randomLists(random), randomLists(random), {0x00});
    int before = -1, bitPosition = 0, count = 0, tooMany = 33;
    uint32_t bits = 0;
    expectFaults(qeliDecodeHuffman8x8_JPEG_1u16s_C1,
                 {p.src.data(), 1, &p.pos, p.block.data(), &p.lastDc, &p.marker, &p.dc, &p.ac, &p.state}, null<0>,
                 bad<1>(-1), null<2>, null<3>, null<4>, null<5>, null<6>, null<7>, null<8>, bad<2>(&before));
    expectFaults(qeliDecodeHuffmanOne_JPEG_1u16s_C1,
                 {p.src.data(), 1, &p.pos, p.block.data(), &p.marker, &p.dc, &p.state}, null<0>, bad<1>(-1), null<2>,
                 null<3>, null<4>, null<5>, null<6>, bad<2>(&before));
    expectFaults(qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1,
                 {p.src.data(), &bitPosition, p.block.data(), &p.lastDc, &p.marker, &bits, &count, &p.dc, &p.ac},
                 null<0>, null<1>, null<2>, null<3>, null<4>, null<5>, null<6>, null<7>, null<8>, bad<1>(&before),
                 bad<6>(&before, &tooMany));
    EXPECT_EQ(p.block.data()[0], -1);
}

// A block leaves more bits behind than the steps of the reader take in by themselves.
TEST(DecodeHuffmanSteps, GoOnWithWhatABlockHasLeft)
{
    Random random(6);
    Lists dc = randomLists(random), ac = randomLists(random);
    auto stream = encoded(dc, ac, randomBlocks(random, 100));
    Pair pair(dc, ac, stream);
    bool hadMany = false;
    for (int i = 0; i < 50; ++i) {
        // Out of step with the blocks, any run may come.
        ASSERT_NE(pair.decode(), qelStsJPEGOutOfBufErr);
        int pos = pair.pos, count = pair.state.count, symbol = 0;
        hadMany = hadMany || count > 32;
        ASSERT_EQ(ownqj_FillBitBuffer(pair.src.data(), pair.len(), &pair.pos, &pair.marker, 25, &pair.state),
                  qelStsNoErr);
        ASSERT_EQ(pair.pos == pos, count >= 25);
        ASSERT_EQ(ownqj_DecodeHuffSymbol(pair.src.data(), pair.len(), &pair.pos, &pair.marker, &pair.dc, &pair.state,
                                         &symbol),
                  qelStsNoErr);
        ASSERT_EQ(symbol, pair.reference.symbol(dc));
        pair.expectAt(pair.reference, qelStsJPEGMarkerWarn);
        ASSERT_FALSE(HasFailure()) << i;
    }
    EXPECT_TRUE(hadMany);
}

TEST(DecodeHuffmanDirect, EqualsTheBitwiseDecoder)
{
    Random random(4);
    for (int round = 0; round < 1500; ++round) {
        Lists dc = randomLists(random, round % 3), ac = randomLists(random, round % 3);
        auto stream = round % 3 == 1 ? encoded(dc, ac, randomBlocks(random, 8)) : randomStream(random, 100);
        stream.insert(stream.end(), {0xFF, 0xD9});
        Pair pair(dc, ac, stream);
        pair.reference.direct = true;
        int bitPosition = 0, count = 0, decoded = 0;
        uint32_t bits = 0;
        for (QelStatus status = qelStsNoErr; status == qelStsNoErr && decoded < 8; ++decoded) {
            auto before = pair.reference;
            int bitsBefore = bitPosition;
            status = qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1(pair.src.data(), &bitPosition, pair.block.data(),
                                                               &pair.lastDc, &pair.marker, &bits, &count, &pair.dc,
                                                               &pair.ac);
            ASSERT_EQ(status, pair.reference.decode());
            ASSERT_EQ(memcmp(pair.block.data(), pair.reference.block.data(), 128), 0);
            ASSERT_EQ(pair.marker, pair.reference.marker);
            ASSERT_EQ(pair.lastDc, pair.reference.lastDc);
            if (pair.reference.endedAtDc) {
                // Only the marker is handed over.
                ASSERT_EQ(bitPosition, bitsBefore);
                ASSERT_EQ(count, (int)before.held.size());
                break;
            }
            ASSERT_EQ(bitPosition, 8 * pair.reference.pos);
            ASSERT_EQ(count, (int)pair.reference.held.size());
            ASSERT_EQ(bits, pair.reference.word);
        }
    }
}

TEST(DecodeHuffmanOne, EqualsTheBitwiseDecoder)
{
    Random random(5);
    for (int round = 0; round < 500; ++round) {
        Lists lists = randomLists(random, round % 2 == 0);
        Pair pair(lists, lists, randomStream(random, random.between(0, 80)), random.between(0, 9));
        for (int i = 0; i < 400; ++i) {
            int16_t value = 77, expected = 77;
            int s = pair.reference.symbol(lists);
            bool whole = s >= 0 && (s == 0 || s > 15 || pair.reference.has(s));
            if (whole) expected = int16_t(s == 0 ? 0 : s > 15 ? -32768 : pair.reference.value(s));
            QelStatus status = pair.whenEnough([&] {
                return qeliDecodeHuffmanOne_JPEG_1u16s_C1(pair.src.data(), pair.len(), &pair.pos, &value, &pair.marker,
                                                          &pair.dc, &pair.state);
            });
            ASSERT_EQ(status, whole ? qelStsNoErr : qelStsJPEGOutOfBufErr);
            ASSERT_EQ(value, expected);
            pair.expectAt(pair.reference, status);
            ASSERT_FALSE(HasFailure()) << round << ' ' << i;
            if (!whole && !pair.restart(pair.reference)) break;
        }
    }
}

}
