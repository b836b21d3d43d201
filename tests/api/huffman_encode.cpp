// Sequential Huffman encoding and statistics, against the bit-at-a-time coder.
#include <gtest/gtest.h>

#include <algorithm>

#include "guarded.h"
#include "huffman_reference.h"
#include "jpeg/huffman_tables.h"

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

    Pair(const Lists& dcLists, const Lists& acLists, int room) : dst(room), reference(dcLists, acLists, room)
    {
        EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(dcLists.bits.data(), dcLists.values.data(), &dc), qelStsNoErr);
        EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(acLists.bits.data(), acLists.values.data(), &ac), qelStsNoErr);
    }

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
        for (int i = pos; i < room(); ++i) ASSERT_EQ(dst.data()[i], 0xA5) << "byte " << i << " behind " << pos;
        ASSERT_TRUE(dst.intact());
        ASSERT_EQ(lastDc, reference.lastDc);
        ASSERT_EQ(state.count, (int)reference.pending.size());
        ASSERT_EQ(state.accumulator[0], reference.word());
        ASSERT_EQ(state.accumulator[1], 0u);
    }
};

TEST(EncodeHuffman8x8, EqualsTheBitwiseCoder)
{
    Random random(1);
    for (int round = 0; round < 60; ++round) {
        Lists dcLists = randomLists(random), acLists = randomLists(random);
        Pair pair(dcLists, acLists, 40000);
        int sparsity = 1 << random.between(0, 6), bits = random.between(0, 15);
        for (int i = 0; i < 60; ++i) {
            Block block = randomBlock(random, sparsity, bits);
            QelStatus expected = pair.reference.encode(block);
            ASSERT_EQ(pair.encode(block), expected);
            ASSERT_NO_FATAL_FAILURE(pair.expectSame()) << round << ' ' << i;
        }
        ASSERT_EQ(pair.flush(), qelStsNoErr);
        pair.reference.write(0x7F, 7);
        ASSERT_EQ(pair.pos, (int)pair.reference.bytes.size());
        ASSERT_EQ(memcmp(pair.dst.data(), pair.reference.bytes.data(), pair.pos), 0);
    }
}

// Every length of the buffer, so that it fills up at each bit of some code, and long runs of bytes 0xFF.
TEST(EncodeHuffman8x8, FillsEveryBuffer)
{
    Random random(2);
    Lists dcLists = randomLists(random), acLists = randomLists(random);
    std::vector<Block> blocks;
    for (int i = 0; i < 4; ++i) blocks.push_back(randomBlock(random, 3, 12));
    blocks.push_back(Block{});
    blocks.back().fill(2047); // ones only, but for the codes
    for (int room = 1; room < 500; ++room) {
        Pair pair(dcLists, acLists, room);
        for (auto& block : blocks) {
            QelStatus expected = pair.reference.encode(block);
            ASSERT_EQ(pair.encode(block), expected) << room;
            ASSERT_NO_FATAL_FAILURE(pair.expectSame()) << room;
        }
    }
}

TEST(EncodeHuffman8x8, SymbolsWithoutACode)
{
    Random random(3);
    int missing = 0;
    for (int round = 0; round < 200; ++round) {
        Pair pair(randomLists(random, false), randomLists(random, false), 2000);
        for (int i = 0; i < 4; ++i) {
            Block block = randomBlock(random, 8, 10);
            QelStatus expected = pair.reference.encode(block);
            missing += expected == qelStsJPEGHuffSpecErr;
            ASSERT_EQ(pair.encode(block), expected);
            ASSERT_EQ(pair.state.count, (int)pair.reference.pending.size());
            ASSERT_NO_FATAL_FAILURE(pair.expectSame());
        }
    }
    EXPECT_GT(missing, 100);
}

// T.81 K.3 gives the luminance tables; the bits are put together by hand.
struct StandardTables : testing::Test {
    Lists dc{{0, 1, 5, 1, 1, 1, 1, 1, 1}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}};
    // End of block 00, 1 bit after no zeros 01, sixteen zeros 100, four bits after 14 zeros 101, one bit after 3 zeros
    // 110, sixteen bits after no zeros 1110.
    Lists ac{{0, 2, 3, 1}, {0x00, 0x01, 0xF0, 0xE4, 0x31, 0x10}};
    Pair pair{dc, ac, 100};

    // Spaces are for the reader.
    void expectBits(std::string bits)
    {
        std::erase(bits, ' ');
        std::string text;
        for (int i = 0; i < pair.pos; ++i) {
            for (int b = 7; b >= 0; --b) text += char('0' + ((pair.dst.data()[i] >> b) & 1));
            if (pair.dst.data()[i] == 0xFF) ++i;
        }
        for (int i = 0; i < pair.state.count; ++i) text += char('0' + ((pair.state.accumulator[0] >> (23 - i)) & 1));
        EXPECT_EQ(text, bits);
    }
};

TEST_F(StandardTables, AllZeroBlock)
{
    Block block = {5};
    pair.lastDc = 5;
    EXPECT_EQ(pair.encode(block), qelStsNoErr);
    expectBits("0000");
    EXPECT_EQ(pair.flush(), qelStsNoErr);
    EXPECT_EQ(pair.pos, 1);
    EXPECT_EQ(pair.dst.data()[0], 0x0F);
    EXPECT_EQ(pair.flush(), qelStsNoErr); // nothing is pending
    EXPECT_EQ(pair.pos, 1);
}

TEST_F(StandardTables, LastCoefficientOnly)
{
    Block block = {};
    block[63] = -8;
    EXPECT_EQ(pair.encode(block), qelStsNoErr);
    expectBits("00 100 100 100 101 0111");
}

TEST_F(StandardTables, DcDifferences)
{
    const struct {
        int16_t last, dc;
        const char* bits;
    } table[] = {{10, 9, "010 0 00"},
                 {0, 255, "111110 11111111 00"},
                 {0, 256, "1111110 100000000 00"},
                 {0, -256, "1111110 011111111 00"}};
    for (auto& row : table) {
        pair.state = {};
        pair.pos = 0;
        pair.lastDc = row.last;
        Block block = {row.dc};
        EXPECT_EQ(pair.encode(block), qelStsNoErr);
        EXPECT_EQ(pair.lastDc, row.dc);
        expectBits(row.bits);
    }
}

// -32768 has category 16, which runs into the bits of the run; its bits are those of -32769.
TEST_F(StandardTables, LowestCoefficient)
{
    Block block = {};
    block[1] = -32768;
    EXPECT_EQ(pair.encode(block), qelStsNoErr);
    expectBits("00 1110 0111111111111111 00");
}

TEST_F(StandardTables, FlushWithoutRoomStillResets)
{
    Block block = {};
    pair.pos = 100;
    EXPECT_EQ(pair.encode(block), qelStsNoErr);
    EXPECT_EQ(pair.state.count, 4);
    EXPECT_EQ(pair.flush(), qelStsJPEGOutOfBufErr);
    EXPECT_EQ(pair.state.count, 0);
    // A negative position is no place in the buffer either.
    pair.pos = -1;
    EXPECT_EQ(pair.encode(block), qelStsNoErr);
    EXPECT_EQ(pair.encode(block), qelStsJPEGOutOfBufErr);
    EXPECT_TRUE(pair.dst.intact());
}

TEST_F(StandardTables, OrderOfFaults)
{
    Block block = {};
    auto call = [&](const int16_t* src, uint8_t* dst, int len, int* pos, int16_t* last, QelEncodeHuffmanState* state) {
        return qeliEncodeHuffman8x8_JPEG_16s1u_C1(src, dst, len, pos, last, &pair.dc, &pair.ac, state, 0);
    };
    EXPECT_EQ(call(nullptr, nullptr, 0, nullptr, nullptr, nullptr), qelStsNullPtrErr);
    EXPECT_EQ(call(nullptr, pair.dst.data(), 0, nullptr, nullptr, nullptr), qelStsSizeErr);
    EXPECT_EQ(call(block.data(), pair.dst.data(), 1, nullptr, &pair.lastDc, &pair.state), qelStsNullPtrErr);
    EXPECT_EQ(call(nullptr, pair.dst.data(), 1, &pair.pos, &pair.lastDc, &pair.state), qelStsNullPtrErr);
    EXPECT_EQ(call(block.data(), pair.dst.data(), 1, &pair.pos, nullptr, &pair.state), qelStsNullPtrErr);
    EXPECT_EQ(qeliEncodeHuffmanOne_JPEG_16s1u_C1(0, pair.dst.data(), 0, nullptr, nullptr, nullptr, 0), qelStsSizeErr);
    EXPECT_EQ(qeliEncodeHuffmanOne_JPEG_16s1u_C1(0, pair.dst.data(), 9, &pair.pos, nullptr, &pair.state, 0),
              qelStsNullPtrErr);
    EXPECT_EQ(pair.pos, 0);
}

// The bit position stands for the pending bits, which stay in the buffer; nothing is written behind the last bit.
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
    int bits = 0;
    EXPECT_EQ(qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(nullptr, nullptr, &bits, nullptr, nullptr, nullptr),
              qelStsNullPtrErr);
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
            ASSERT_EQ(qeliEncodeHuffmanOne_JPEG_16s1u_C1(value, pair.dst.data(), pair.room(), &pair.pos, &pair.dc,
                                                         &pair.state, 0),
                      qelStsNoErr);
            ASSERT_NO_FATAL_FAILURE(pair.expectSame()) << round << ' ' << i;
        }
        ASSERT_EQ(
            qeliEncodeHuffmanOne_JPEG_16s1u_C1(0, pair.dst.data(), pair.room(), &pair.pos, nullptr, &pair.state, 1),
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
    EXPECT_EQ(qeliGetHuffmanStatistics8x8_JPEG_16s_C1(nullptr, dc.data(), ac.data(), &lastDc), qelStsNullPtrErr);

    std::array<uint32_t, 256> one{};
    for (int16_t value : {0, -1, 255, 256, -32768})
        EXPECT_EQ(qeliGetHuffmanStatisticsOne_JPEG_16s_C1(value, one.data()), qelStsNoErr);
    for (int category = 0; category < 256; ++category)
        EXPECT_EQ(one[category], category == 0 || category == 1 || category == 8 || category == 9 || category == 16);
    EXPECT_EQ(qeliGetHuffmanStatisticsOne_JPEG_16s_C1(1, nullptr), qelStsNullPtrErr);
}

}
