// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman encoding and statistics, against a decoder that takes a bit at a time.
#include <gtest/gtest.h>

#include <algorithm>

#include "argument_faults.h"
#include "huffman_stream.h"
#include "progressive_reference.h"

using namespace qel::test;

namespace {

using Block = std::array<int16_t, 64>;
using Counts = std::array<uint32_t, 256>;

enum class Kind { dcFirst, dcRefine, acFirst, acRefine };

struct Script {
    Kind kind;
    int ss, se, al;
};

// A scan as a caller codes it: statistics of all blocks, then the blocks.
struct Scan {
    Script script;
    QelEncodeHuffmanSpec spec = {};
    QelEncodeHuffmanState state = {};
    int16_t lastDc = 0;
    int pos = 0;

    bool isFirst() const { return script.kind == Kind::dcFirst || script.kind == Kind::acFirst; }
    bool isDc() const { return script.kind == Kind::dcFirst || script.kind == Kind::dcRefine; }

    QelStatus count(const Block* block, Counts& counts, int flush = 0)
    {
        auto& [kind, ss, se, al] = script;
        const int16_t* src = block ? block->data() : nullptr;
        if (kind == Kind::dcFirst)
            return flush ? qelStsNoErr
                         : qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(src, counts.data(), &lastDc, al);
        if (kind == Kind::acFirst)
            return qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(src, counts.data(), ss, se, al, &state, flush);
        if (kind == Kind::acRefine)
            return qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(src, counts.data(), ss, se, al, &state, flush);
        return qelStsNoErr;
    }
    QelStatus encode(const Block* block, uint8_t* dst, int room, int flush = 0)
    {
        auto& [kind, ss, se, al] = script;
        const int16_t* src = block ? block->data() : nullptr;
        switch (kind) {
        case Kind::dcFirst:
            return qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(src, dst, room, &pos, &lastDc, al, &spec, &state, flush);
        case Kind::dcRefine:
            return qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(src, dst, room, &pos, al, &state, flush);
        case Kind::acFirst:
            return qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, &spec, &state, flush);
        default:
            return qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, &spec, &state, flush);
        }
    }
    QelStatus flush(uint8_t* dst, int room) { return encode(nullptr, dst, room, 1); }

    // What its decoder knows of a value before and after the scan.
    int before(int value) const { return isFirst() ? 0 : shifted(value, script.al + 1); }
    int after(int value) const { return shifted(value, script.al); }

private:
    int shifted(int value, int by) const
    {
        int one = 1 << by;
        return (isDc() ? value >> by : value / one) * one;
    }
};

struct Encoded {
    Lists lists;
    Counts counts{};
    std::vector<uint8_t> bytes;
};

Encoded encodeScan(Scan& scan, const std::vector<Block>& blocks)
{
    Encoded result;
    result.bytes.resize(200 + 300 * blocks.size());
    for (auto& block : blocks) EXPECT_EQ(scan.count(&block, result.counts), qelStsNoErr);
    EXPECT_EQ(scan.count(nullptr, result.counts, 1), qelStsNoErr);
    scan.lastDc = 0;
    qeliEncodeHuffmanRawTableInit_JPEG_8u(result.counts.data(), result.lists.bits.data(), result.lists.values.data());
    scan.spec = encodeSpecOf(result.lists);
    auto* dst = result.bytes.data();
    int room = (int)result.bytes.size();
    for (auto& block : blocks) EXPECT_EQ(scan.encode(&block, dst, room), qelStsNoErr);
    EXPECT_EQ(scan.flush(dst, room), qelStsNoErr);
    result.bytes.resize((size_t)scan.pos);
    return result;
}

ReferenceProgressiveDecoder decoderOf(const Encoded& encoded)
{
    ReferenceProgressiveDecoder decoder;
    decoder.src = encoded.bytes;
    decoder.src.insert(decoder.src.end(), {0xFF, 0xD9});
    decoder.dc = decoder.ac = encoded.lists;
    return decoder;
}

Script randomScript(Random& random, Kind kind)
{
    int ss = random.between(1, random.between(1, 63));
    int se = random.between(0, 2) == 0 ? 63 : random.between(ss, 63);
    return {kind, ss, se, random.between(0, random.between(0, 13))};
}

std::vector<Block> randomBlocks(Random& random, int bits)
{
    std::vector<Block> blocks(size_t(random.between(1, 60)));
    int sparsity = 1 << random.between(0, 9);
    for (auto& block : blocks) block = randomBlock(random, sparsity, random.between(0, bits));
    return blocks;
}

const Kind kKinds[] = {Kind::dcFirst, Kind::dcRefine, Kind::acFirst, Kind::acRefine};

// Statistics count what the encoder then writes, with the best table for them, and the blocks come back.
TEST(EncodeProgressive, DecodesToWhatItWasMadeOf)
{
    Random random(1);
    for (int round = 0; round < 1200; ++round) {
        Scan scan = {randomScript(random, kKinds[round % 4])};
        auto blocks = randomBlocks(random, 9);
        Encoded encoded = encodeScan(scan, blocks);
        ReferenceProgressiveDecoder reader = decoderOf(encoded);
        auto [kind, ss, se, al] = scan.script;
        for (auto& block : blocks) {
            Block expected{};
            reader.block = {};
            for (int k = scan.isDc() ? 0 : ss; k <= (scan.isDc() ? 0 : se); ++k) {
                reader.block[kScan[k]] = int16_t(scan.before(block[kScan[k]]));
                expected[kScan[k]] = int16_t(scan.after(block[kScan[k]]));
            }
            QelStatus status = kind == Kind::dcFirst    ? reader.dcFirst(al)
                               : kind == Kind::dcRefine ? reader.dcRefine(al)
                               : kind == Kind::acFirst  ? reader.acFirst(ss, se, al)
                                                        : reader.acRefine(ss, se, al);
            ASSERT_EQ(status, qelStsNoErr);
            ASSERT_EQ(reader.block, expected) << round;
        }
        ASSERT_EQ(reader.run, 0u);
        ASSERT_EQ(reader.counts, encoded.counts) << round;
        // Nothing is left but the padding.
        reader.fill(0);
        ASSERT_LT(reader.held.size(), 8u);
        ASSERT_TRUE(std::all_of(reader.held.begin(), reader.held.end(), [](bool bit) { return bit; }));
    }
}

// The same bytes and states where each call has just the room that it needs; with a byte less it fails, having written
// all there was room for.
TEST(EncodeProgressive, NeedsTheRoomThatItFills)
{
    Random random(2);
    for (int round = 0; round < 240; ++round) {
        Scan scan = {randomScript(random, kKinds[round % 4])}, wide = scan;
        auto blocks = randomBlocks(random, 9);
        blocks.resize(std::min<size_t>(blocks.size(), 12));
        auto bytes = encodeScan(wide, blocks).bytes;
        scan.spec = wide.spec;
        wide.pos = wide.lastDc = 0;
        for (size_t i = 0; i <= blocks.size(); ++i) {
            int flush = i == blocks.size();
            const Block* block = flush ? nullptr : &blocks[i];
            std::vector<uint8_t> open(bytes.size() + 600);
            Scan before = scan;
            ASSERT_EQ(wide.encode(block, open.data(), (int)open.size(), flush), qelStsNoErr);
            int room = std::max(wide.pos, 1);
            Guarded<uint8_t> dst((size_t)room);
            ASSERT_EQ(scan.encode(block, dst.data(), room, flush), qelStsNoErr);
            ASSERT_EQ(scan.pos, wide.pos);
            size_t used = offsetof(QelEncodeHuffmanState, correctionBits) + wide.state.correctionCount;
            ASSERT_EQ(memcmp(&scan.state, &wide.state, used), 0) << round;
            ASSERT_EQ(memcmp(dst.data() + before.pos, bytes.data() + before.pos, size_t(scan.pos - before.pos)), 0);
            ASSERT_TRUE(dst.intact());
            for (int less = std::max(before.pos, 1); less < wide.pos; ++less) {
                Scan cut = before;
                Guarded<uint8_t> small((size_t)less);
                ASSERT_EQ(cut.encode(block, small.data(), less, flush), qelStsJPEGOutOfBufErr);
                ASSERT_EQ(cut.pos, less);
                ASSERT_EQ(memcmp(small.data() + before.pos, bytes.data() + before.pos, size_t(less - before.pos)), 0);
                ASSERT_TRUE(small.intact());
            }
        }
    }
}

const Block kZeros = {};

Block significant(int count)
{
    Block block{};
    for (int k = 1; k <= count; ++k) block[kScan[k]] = 2;
    return block;
}

// A table in which every symbol has the eight bits of its value, but for 0xFF; symbols can be read off the stream.
struct PlainCodes : testing::Test {
    PlainCodes()
    {
        lists.bits[7] = 255;
        for (int i = 0; i < 255; ++i) lists.values[i] = uint8_t(i);
        first.spec = refine.spec = dc.spec = encodeSpecOf(lists);
    }

    QelStatus encode(Scan& scan, const Block& block) { return scan.encode(&block, dst.data(), room); }
    void expectBytes(Scan& scan, std::vector<uint8_t> bytes)
    {
        EXPECT_EQ(scan.flush(dst.data(), room), qelStsNoErr);
        EXPECT_EQ(std::vector<uint8_t>(dst.data(), dst.data() + scan.pos), bytes);
        QelEncodeHuffmanState fresh = {};
        EXPECT_EQ(memcmp(&scan.state, &fresh, sizeof fresh), 0);
    }

    Lists lists;
    Scan first = {{Kind::acFirst, 1, 63, 0}}, refine = {{Kind::acRefine, 1, 63, 0}}, dc = {{Kind::dcFirst, 0, 0, 0}};
    Guarded<uint8_t> dst{2000};
    int room = 2000;
    Counts counts{};
};

// With room for any block, and with what it takes and no more.
TEST_F(PlainCodes, LongestRun)
{
    for (Scan scan : {first, refine})
        for (int some : {2000, 5}) {
            room = some;
            counts = {};
            scan.pos = 0;
            scan.state.endOfBandRun = 32765;
            Scan counted = scan;
            for (bool isLongest : {false, true}) {
                EXPECT_EQ(encode(scan, kZeros), qelStsNoErr);
                EXPECT_EQ(counted.count(&kZeros, counts), qelStsNoErr);
                EXPECT_EQ(scan.pos, isLongest ? 3 : 0); // six bits are pending, and there is a stuffed byte
                EXPECT_EQ(scan.state.endOfBandRun, isLongest ? 0u : 32766u);
                EXPECT_EQ(counts[0xE0], isLongest ? 1u : 0u);
            }
            expectBytes(scan, {0xE0, 0xFF, 0x00, 0xFF, 0x00});
        }
}

TEST_F(PlainCodes, MostCorrectionBits)
{
    // 14 blocks of 63, and one that makes 937 or more.
    for (int more : {55, 56, 63}) {
        Scan scan = refine, counted = refine;
        counts = {};
        std::vector<Block> blocks(14, significant(63));
        blocks.push_back(significant(more));
        for (auto& block : blocks) {
            EXPECT_EQ(scan.pos, 0);
            EXPECT_EQ(encode(scan, block), qelStsNoErr);
            EXPECT_EQ(counted.count(&block, counts), qelStsNoErr);
        }
        bool isWritten = more > 55;
        EXPECT_EQ(scan.pos, isWritten ? (8 + 3 + 14 * 63 + more) / 8 : 0);
        EXPECT_EQ(scan.state.correctionCount, isWritten ? 0u : 937u);
        EXPECT_EQ(counted.state.correctionCount, scan.state.correctionCount);
        EXPECT_EQ(counts[0x30], isWritten ? 1u : 0u);
    }
}

// The counters take one category less than the encoder.
TEST_F(PlainCodes, Categories)
{
    const struct {
        int value;
        QelStatus counted, encoded;
    } table[] = {{-1023, qelStsNoErr, qelStsNoErr},
                 {1024, qelStsJPEGHuffTableErr, qelStsNoErr},
                 {2047, qelStsJPEGHuffTableErr, qelStsNoErr},
                 {-2048, qelStsJPEGHuffTableErr, qelStsJPEGHuffTableErr},
                 {-32768, qelStsJPEGHuffTableErr, qelStsJPEGHuffTableErr}};
    for (auto& row : table) {
        Scan counted = first, encoded = first;
        Block block = {0, int16_t(row.value)};
        EXPECT_EQ(counted.count(&block, counts), row.counted) << row.value;
        EXPECT_EQ(encode(encoded, block), row.encoded) << row.value;
    }
    // What comes before such a value is counted, and a run is.
    Block block{};
    block[63] = 1024;
    counts = {};
    EXPECT_EQ(first.count(&kZeros, counts), qelStsNoErr);
    EXPECT_EQ(first.count(&block, counts), qelStsJPEGHuffTableErr);
    EXPECT_EQ(counts[0], 1u);
    EXPECT_EQ(counts[0xF0], 3u);

    for (int value : {2047, 2048}) {
        QelStatus expected = value < 2048 ? qelStsNoErr : qelStsJPEGHuffTableErr;
        Scan counted = dc, encoded = dc;
        EXPECT_EQ(encode(encoded, Block{int16_t(value)}), expected);
        EXPECT_EQ(encoded.lastDc, value);
        Block large = {int16_t(value)};
        EXPECT_EQ(counted.count(&large, counts), expected);
    }
}

// Only a caller that changes the state can make runs that no symbol stands for.
TEST_F(PlainCodes, RunsBeyondTheLongest)
{
    first.state.endOfBandRun = 32768;
    EXPECT_EQ(first.count(nullptr, counts, 1), qelStsNoErr);
    EXPECT_EQ(counts[0xE0], 1u);
    EXPECT_EQ(counts[0x00], 1u);
    first.state.endOfBandRun = 32768;
    // The low 14 bits of 32768 are 0.
    expectBytes(first, {0xE0, 0, 0, 0b000000'11});
    for (uint32_t run : {65535u, 0xFFFFFFFFu}) {
        first.state.endOfBandRun = refine.state.endOfBandRun = run;
        EXPECT_EQ(first.count(nullptr, counts, 1), qelStsJPEGHuffTableErr);
        EXPECT_EQ(refine.flush(dst.data(), (int)dst.size()), qelStsJPEGHuffTableErr);
    }
}

TEST_F(PlainCodes, SymbolsWithoutACode)
{
    Block block{};
    block[kScan[63]] = 1;
    for (int symbol : {0x00, 0xF0, 0xE1}) {
        for (Scan scan : {first, refine}) {
            scan.spec.entries[symbol] = 0;
            EXPECT_EQ(encode(scan, kZeros), qelStsNoErr);
            EXPECT_EQ(encode(scan, block), qelStsJPEGHuffSpecErr) << symbol;
            EXPECT_EQ(scan.pos, symbol == 0x00 ? 0 : symbol == 0xF0 ? 1 : 4);
        }
    }
}

TEST_F(PlainCodes, OrderOfFaults)
{
    auto* block = kZeros.data();
    auto* d = dst.data();
    auto* n = counts.data();
    auto* spec = &first.spec;
    auto* state = &first.state;
    int pos = 0;
    int16_t last = 0;
    expectFaults(qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1, {block, d, 9, &pos, &last, 13, spec, state, 0}, null<1>,
                 length<2>, null<3>, null<7>, null<6>, null<0>, null<4>, bad<5>(-1, 14));
    expectFaults(qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1, {block, d, 9, &pos, 13, state, 0}, null<1>, length<2>,
                 null<3>, null<5>, null<0>, bad<4>(-1, 14));
    for (auto ac : {qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1, qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1})
        expectFaults(ac, {block, d, 9, &pos, 6, 6, 13, spec, state, 0}, null<1>, length<2>, null<3>, null<8>, null<7>,
                     null<0>, bad<4>(0, 7), bad<5>(5, 64), bad<6>(-1, 14));
    expectFaults(qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1, {block, n, &last, 13}, null<0>, null<1>, null<2>,
                 bad<3>(-1, 14));
    for (auto ac : {qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1, qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1})
        expectFaults(ac, {block, n, 6, 6, 13, state, 0}, null<1>, null<5>, null<0>, bad<2>(0, 7), bad<3>(5, 64),
                     bad<4>(-1, 14));
    EXPECT_EQ(pos, 0);
}

// A call that flushes needs neither a block nor a band.
TEST_F(PlainCodes, Flushing)
{
    for (Kind kind : kKinds) {
        Scan scan = first;
        scan.script = {kind, 0, 64, 14};
        EXPECT_EQ(scan.flush(dst.data(), 1), qelStsNoErr);
        EXPECT_EQ(scan.count(nullptr, counts, 1), qelStsNoErr);
    }
}

}
