// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman encoding and statistics, against the bit-at-a-time coder.
#include <gtest/gtest.h>

#include <algorithm>

#include "argument_faults.h"
#include "huffman_stream.h"

using namespace qel::test;

namespace {

using Block = std::array<int16_t, 64>;

// The library's encoder beside the reference, both fed the same; everything a caller can see is compared.
struct Pair {
    QelEncodeHuffmanSpec dc, ac;
    QelEncodeHuffmanState state = {};
    Guarded<uint8_t> dst;
    int pos = 0;
    int16_t lastDc = 0;
    ReferenceEncoder reference;

    Pair(const Lists& dcLists, const Lists& acLists, int room)
        : dc(encodeSpecOf(dcLists)), ac(encodeSpecOf(acLists)), dst(room), reference(dcLists, acLists, room)
    {}

    int room() const { return (int)dst.size(); }
    QelStatus encode(const Block& block)
    {
        return qeliEncodeHuffman8x8_JPEG_16s1u_C1(block.data(), dst.data(), room(), &pos, &lastDc, &dc, &ac, &state, 0);
    }
    QelStatus flush()
    {
        return qeliEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, dst.data(), room(), &pos, nullptr, nullptr, nullptr, &state,
                                                  1);
    }
    // Compares up to the position, and that the rest of the buffer was left alone.
    void expectSame()
    {
        ASSERT_EQ(pos, (int)reference.bytes.size());
        ASSERT_TRUE(std::equal(reference.bytes.begin(), reference.bytes.end(), dst.data()));
        for (int i = pos; i < room(); ++i) ASSERT_EQ(dst.data()[i], 0xA5) << "byte " << i << " after " << pos;
        ASSERT_TRUE(dst.intact());
        ASSERT_EQ(lastDc, reference.lastDc);
        ASSERT_EQ(state.count, (int)reference.pending.size());
        ASSERT_EQ(state.accumulator[0], reference.word());
        ASSERT_EQ(state.accumulator[1], 0u);
    }
};

// Also where a symbol has no code, where the buffer fills up at any bit, and where bytes 0xFF follow each other. A
// flush without room still resets the state.
TEST(EncodeHuffman8x8, EqualsTheBitwiseCoder)
{
    Random random(1);
    int missing = 0, full = 0;
    for (int round = 0; round < 800; ++round) {
        Lists dcLists = randomLists(random, round % 4), acLists = randomLists(random, round % 4);
        Pair pair(dcLists, acLists, round % 2 ? random.between(1, 500) : 5000);
        int sparsity = 1 << random.between(0, 6), bits = random.between(0, 15);
        for (int i = 0; i < 8; ++i) {
            Block block = randomBlock(random, sparsity, bits);
            if (i == 4) block.fill(2047); // ones only, but for the codes
            QelStatus expected = pair.reference.encode(block);
            missing += expected == qelStsJPEGHuffSpecErr;
            full += expected == qelStsJPEGOutOfBufErr;
            ASSERT_EQ(pair.encode(block), expected);
            ASSERT_NO_FATAL_FAILURE(pair.expectSame()) << round << ' ' << i;
        }
        ASSERT_EQ(pair.flush(), pair.reference.pending.empty() ? qelStsNoErr : pair.reference.write(0x7F, 7));
        ASSERT_EQ(std::vector(pair.dst.data(), pair.dst.data() + pair.pos), pair.reference.bytes);
        ASSERT_EQ(pair.state.count, 0);
    }
    EXPECT_TRUE(missing > 100 && full > 100);
}

TEST(EncodeHuffman, OrderOfFaults)
{
    Random random(8);
    Pair p(randomLists(random), randomLists(random), 100);
    const Block block = {};
    int bits = 0;
    uint32_t counts[256] = {};
    expectFaults(qeliEncodeHuffman8x8_JPEG_16s1u_C1,
                 {block.data(), p.dst.data(), 100, &p.pos, &p.lastDc, &p.dc, &p.ac, &p.state, 0}, null<1>, length<2>,
                 null<3>, null<7>, null<0>, null<4>, null<5>, null<6>);
    expectFaults(qeliEncodeHuffmanOne_JPEG_16s1u_C1, {block.data(), p.dst.data(), 100, &p.pos, &p.dc, &p.state, 0},
                 null<1>, length<2>, null<3>, null<5>, null<0>, null<4>);
    expectFaults(qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1,
                 {block.data(), p.dst.data(), &bits, &p.lastDc, &p.dc, &p.ac}, null<0>, null<1>, null<2>, null<3>,
                 null<4>, null<5>);
    expectFaults(qeliGetHuffmanStatistics8x8_JPEG_16s_C1, {block.data(), counts, counts, &p.lastDc}, null<0>, null<1>,
                 null<2>, null<3>);
    expectFaults(qeliGetHuffmanStatisticsOne_JPEG_16s_C1, {block.data(), counts}, null<0>, null<1>);
    EXPECT_TRUE(p.pos == 0 && bits == 0 && counts[0] == 0 && counts[1] == 0);
    // A negative position is no place in the buffer.
    p.pos = -1;
    p.state.count = 7;
    EXPECT_EQ(p.encode(block), qelStsJPEGOutOfBufErr);
    EXPECT_TRUE(p.dst.intact());
}

// The bit position stands for the pending bits, which stay in the buffer; nothing is written after the last bit.
TEST(EncodeHuffmanDirect, EqualsTheBitwiseCoder)
{
    Random random(4);
    for (int round = 0; round < 100; ++round) {
        Lists dcLists = randomLists(random), acLists = randomLists(random);
        Pair tables(dcLists, acLists, 1);
        ReferenceEncoder reference(dcLists, acLists, 1 << 20);
        Block block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 14));
        std::vector<uint8_t> before;
        int bits = 0;
        int16_t lastDc = 0;
        for (int i = 0; i < 4; ++i) {
            reference.encode(block);
            std::vector<uint8_t> expected = reference.bytes;
            if (!reference.pending.empty()) expected.push_back(uint8_t(reference.word() >> 16));
            Guarded<uint8_t> dst(expected.size());
            std::copy(before.begin(), before.end(), dst.data());
            ASSERT_EQ(qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(block.data(), dst.data(), &bits, &lastDc, &tables.dc,
                                                                &tables.ac),
                      qelStsNoErr);
            ASSERT_EQ(bits, int(8 * reference.bytes.size() + reference.pending.size()));
            ASSERT_EQ(memcmp(dst.data(), expected.data(), expected.size()), 0);
            ASSERT_TRUE(dst.intact());
            ASSERT_EQ(lastDc, reference.lastDc);
            before = expected;
        }
    }
}

// Lossless differences; near the end of the buffer the call still succeeds, as it is defined to.
TEST(EncodeHuffmanOne, EqualsTheBitwiseCoder)
{
    Random random(5);
    for (int round = 0; round < 300; ++round) {
        Lists lists = randomLists(random, round % 2 == 0);
        Pair pair(lists, lists, random.between(1, 60));
        for (int i = 0; i < 40; ++i) {
            int16_t value = 0;
            random.fill(&value, 1);
            value = int16_t(value >> random.between(0, 15));
            Code code = pair.reference.dc[categoryOf(value)];
            int extraBits = categoryOf(value) & 15;
            if (pair.reference.write(code.word, code.length) == qelStsNoErr && extraBits != 0)
                pair.reference.write(uint32_t(value < 0 ? value - 1 : value), extraBits);
            ASSERT_EQ(qeliEncodeHuffmanOne_JPEG_16s1u_C1(&value, pair.dst.data(), pair.room(), &pair.pos, &pair.dc,
                                                         &pair.state, 0),
                      qelStsNoErr);
            ASSERT_NO_FATAL_FAILURE(pair.expectSame()) << round << ' ' << i;
        }
        ASSERT_EQ(qeliEncodeHuffmanOne_JPEG_16s1u_C1(nullptr, pair.dst.data(), pair.room(), &pair.pos, nullptr,
                                                     &pair.state, 1),
                  qelStsNoErr);
        ASSERT_EQ(pair.state.count, 0);
    }
}

TEST(HuffmanStatistics, CountWhatTheEncoderWrites)
{
    Random random(6);
    std::array<uint32_t, 256> dc{}, ac{}, expectedDc{}, expectedAc{};
    int16_t lastDc = 0;
    for (int round = 0; round < 2000; ++round) {
        Block block = randomBlock(random, 1 << random.between(0, 7), random.between(0, 15));
        for (auto& s : symbolsOf(block, lastDc)) ++(s.dc ? expectedDc : expectedAc)[s.symbol];
        ASSERT_EQ(qeliGetHuffmanStatistics8x8_JPEG_16s_C1(block.data(), dc.data(), ac.data(), &lastDc), qelStsNoErr);
        ASSERT_EQ(lastDc, block[0]);
    }
    EXPECT_EQ(dc, expectedDc);
    EXPECT_EQ(ac, expectedAc);

    std::array<uint32_t, 256> one{};
    for (int16_t value : {0, -1, 255, 256, -32768})
        EXPECT_EQ(qeliGetHuffmanStatisticsOne_JPEG_16s_C1(&value, one.data()), qelStsNoErr);
    for (int category = 0; category < 256; ++category)
        EXPECT_EQ(one[category], category == 0 || category == 1 || category == 8 || category == 9 || category == 16);
}

}
