// Progressive Huffman decoding, against the bit-at-a-time decoder: values, runs, how far it reads, damaged streams.
#include <gtest/gtest.h>

#include "huffman_stream.h"
#include "progressive_reference.h"

using namespace qel::test;

namespace {

struct Band {
    int ss, se, al;
};

// The library's decoder beside the reference, on one block at a time.
struct Pair : Stream {
    QelDecodeHuffmanSpec table;
    int16_t lastDc = 0;
    Guarded<int16_t> block;
    ReferenceProgressiveDecoder reference;

    Pair(const Lists& lists, const std::vector<uint8_t>& stream) : Stream(stream), table(specOf(lists)), block(64)
    {
        reference.src = stream;
        reference.dc = reference.ac = lists;
        setBlock({});
    }
    void setBlock(const std::array<int16_t, 64>& values)
    {
        reference.block = values;
        std::copy(values.begin(), values.end(), block.data());
    }
    // In the order of the scan.
    int16_t& at(int position) { return block.data()[kScan[position]]; }

    QelStatus dcFirst(int al)
    {
        return same(qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &lastDc, &marker,
                                                               al, &table, &state),
                    reference.dcFirst(al));
    }
    QelStatus dcRefine(int al)
    {
        return same(
            qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &marker, al, &state),
            reference.dcRefine(al));
    }
    QelStatus acFirst(Band b)
    {
        return same(qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &marker, b.ss,
                                                               b.se, b.al, &table, &state),
                    reference.acFirst(b.ss, b.se, b.al));
    }
    QelStatus acRefine(Band b)
    {
        return same(qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &marker, b.ss,
                                                                b.se, b.al, &table, &state),
                    reference.acRefine(b.ss, b.se, b.al));
    }

private:
    QelStatus same(QelStatus status, QelStatus expected)
    {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(memcmp(block.data(), reference.block.data(), 128), 0);
        EXPECT_EQ(lastDc, reference.lastDc);
        EXPECT_EQ(state.endOfBandRun, reference.run);
        EXPECT_TRUE(block.intact());
        expectAt(reference, status == qelStsJPEGOutOfBufErr);
        return status;
    }
};

// A table in which short runs, small values and ends of bands are frequent, as in files.
Lists likelyLists(Random& random)
{
    Lists lists;
    std::array<uint32_t, 256> statistics;
    for (int s = 0; s < 256; ++s)
        statistics[size_t(s)] = 1u << std::max(0, random.between(16, 20) - 2 * (s >> 4) - 3 * (s & 15));
    EXPECT_EQ(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), lists.bits.data(), lists.values.data()),
              qelStsNoErr);
    return lists;
}

std::vector<uint8_t> randomStream(Random& random, int length)
{
    std::vector<uint8_t> stream(static_cast<size_t>(length));
    int zeros = random.between(0, 3);
    for (auto& byte : stream)
        byte = uint8_t(random.between(0, 3) < zeros ? random.between(0, 255) : random.between(0, 9) ? 0x55 : 0xFF);
    for (size_t i = 1; i < stream.size(); ++i)
        if (stream[i - 1] == 0xFF && random.between(0, 30) != 0) stream[i] = 0;
    return stream;
}

Band randomBand(Random& random)
{
    Band band = {random.between(1, 63), 63, random.between(0, 13)};
    if (random.between(0, 1)) band.ss = 1;
    if (random.between(0, 1)) band.se = random.between(band.ss, 63);
    return band;
}

// Blocks until the stream ends; those of refinements have had earlier scans.
void decodeAll(Random& random, Pair& pair, bool refine, Band band)
{
    // Up to blocks without a zero.
    int sparsity = (1 << random.between(0, 6)) - 1;
    for (QelStatus status = qelStsNoErr; status != qelStsJPEGOutOfBufErr && !testing::Test::HasFailure();) {
        pair.setBlock(randomBlock(random, sparsity, 14));
        if (pair.reference.run > 30) pair.state.endOfBandRun = pair.reference.run = 3;
        bool isDc = random.between(0, 4) == 0;
        if (refine)
            status = isDc ? pair.dcRefine(band.al) : pair.acRefine(band);
        else
            status = isDc ? pair.dcFirst(band.al) : pair.acFirst(band);
    }
}

// Any bytes, any table, marker and ends anywhere; long runs are cut short, or nothing would be read any more.
TEST(DecodeProgressive, EqualsTheBitwiseDecoder)
{
    Random random(1);
    for (int round = 0; round < 1500; ++round) {
        Lists lists = round % 3 == 0 ? randomLists(random, false) : likelyLists(random);
        Pair pair(lists, randomStream(random, random.between(1, 300)));
        decodeAll(random, pair, round % 2 == 0, randomBand(random));
        ASSERT_FALSE(HasFailure()) << round;
    }
}

TEST(DecodeProgressive, EndsAnywhere)
{
    Random random(2);
    for (int round = 0; round < 4; ++round) {
        Lists lists = likelyLists(random);
        auto stream = randomStream(random, 60);
        Band band = randomBand(random);
        for (size_t len = 1; len <= stream.size(); ++len) {
            std::vector<uint8_t> cut(stream.begin(), stream.begin() + ptrdiff_t(len));
            for (bool refine : {false, true}) {
                Pair ended(lists, cut);
                decodeAll(random, ended, refine, band);
                auto marked = cut;
                marked.insert(marked.end(), {0xFF, 0xD0, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55, 0x55});
                Pair pair(lists, marked);
                decodeAll(random, pair, refine, band);
            }
            ASSERT_FALSE(HasFailure()) << round << ' ' << len;
        }
    }
}

// The codes 00, 01, 100, 101, 110 stand for these symbols.
Lists fiveCodes(std::array<uint8_t, 5> symbols)
{
    Lists lists = {{0, 2, 3}, {}};
    std::copy(symbols.begin(), symbols.end(), lists.values.begin());
    return lists;
}

TEST(DecodeProgressive, DcFirst)
{
    Pair pair(fiveCodes({0, 3, 0xF2, 0, 0}), {0b01'101'100, 0b10'00'0000});
    pair.setBlock({1, 2, 3});
    EXPECT_EQ(pair.dcFirst(2), qelStsNoErr);
    EXPECT_EQ(pair.lastDc, 5);
    EXPECT_EQ(pair.block.data()[0], 20);
    EXPECT_EQ(pair.block.data()[1], 2);
    // Only the low half of the symbol is the category.
    EXPECT_EQ(pair.dcFirst(2), qelStsNoErr);
    EXPECT_EQ(pair.lastDc, 7);
    // No difference; sums and shifts wrap.
    pair.lastDc = -32767, pair.reference.lastDc = -32767;
    EXPECT_EQ(pair.dcFirst(13), qelStsNoErr);
    EXPECT_EQ(pair.block.data()[0], 8192);
}

TEST(DecodeProgressive, DcRefine)
{
    Pair pair(fiveCodes({}), {0b0111'0000});
    pair.setBlock({8});
    const int16_t expected[] = {8, 12, 14, 15};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(pair.dcRefine(3 - i), qelStsNoErr);
        EXPECT_EQ(pair.block.data()[0], expected[i]);
    }
    pair.setBlock({-8});
    EXPECT_EQ(pair.dcRefine(0), qelStsNoErr);
    EXPECT_EQ(pair.block.data()[0], -8);
}

TEST(DecodeProgressive, RunsOfBlocks)
{
    // The value 1, then an end of band for 4 blocks; a run of two zeros and the value -1, an end of band for this one.
    Pair pair(fiveCodes({0x01, 0x20, 0x21, 0x00, 0}), {0b00'1'01'00'1, 0b00'0'101'00});
    EXPECT_EQ(pair.acFirst({1, 5, 3}), qelStsNoErr);
    EXPECT_EQ(pair.at(1), 8);
    EXPECT_EQ(pair.state.endOfBandRun, 3u);
    int pos = pair.pos, count = pair.state.count;
    pair.setBlock({5, 6, 7});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(pair.acFirst({1, 5, 3}), qelStsNoErr);
    EXPECT_EQ(pair.pos, pos);
    EXPECT_EQ(pair.state.count, count);
    EXPECT_EQ(pair.block.data()[1], 6);
    EXPECT_EQ(pair.acFirst({1, 5, 0}), qelStsNoErr);
    EXPECT_EQ(pair.at(1), 6);
    EXPECT_EQ(pair.at(3), -1);
}

TEST(DecodeProgressive, LongestRun)
{
    Pair pair(fiveCodes({0xE0, 0, 0, 0, 0}), {0b00'111111, 0xFF, 0x00});
    EXPECT_EQ(pair.acFirst({1, 63, 0}), qelStsNoErr);
    EXPECT_EQ(pair.state.endOfBandRun, 32766u);
}

// In the order of the scan 4, 0, -4, 0, 0, 8, 0: a new value is put behind one zero, and every value passed over takes
// a bit, the last one with the end of the band.
TEST(DecodeProgressive, Refinement)
{
    Pair pair(fiveCodes({0x11, 0x00, 0xF0, 0x10, 0}), {0b00'0'1'0'01'1, 0b10'1'0'1'000});
    auto reset = [&](Band band) {
        std::array<int16_t, 64> values{};
        values[size_t(kScan[1])] = 4, values[size_t(kScan[3])] = -4, values[size_t(kScan[6])] = 8;
        pair.setBlock(values);
        return pair.acRefine(band);
    };
    EXPECT_EQ(reset({1, 7, 1}), qelStsNoErr);
    for (int k = 1; int16_t value : {6, 0, -4, -2, 0, 10, 0}) EXPECT_EQ(pair.at(k++), value);
    EXPECT_EQ(pair.state.endOfBandRun, 0u);
}

TEST(DecodeProgressive, RefinementWithinARun)
{
    // An end of band for 3 blocks; those with values read on.
    Pair pair(fiveCodes({0x10, 0, 0, 0, 0}), {0b00'1'1'0'1'00});
    auto refine = [&](int16_t first, int16_t last) {
        std::array<int16_t, 64> values{};
        values[size_t(kScan[2])] = first, values[size_t(kScan[9])] = last;
        values[size_t(kScan[1])] = values[size_t(kScan[10])] = 99;
        pair.setBlock(values);
        EXPECT_EQ(pair.acRefine({2, 9, 0}), qelStsNoErr);
    };
    refine(2, -2);
    EXPECT_EQ(pair.state.endOfBandRun, 2u);
    EXPECT_EQ(pair.at(2), 3);
    EXPECT_EQ(pair.at(9), -2);
    refine(0, 0);
    refine(0, -2);
    EXPECT_EQ(pair.state.endOfBandRun, 0u);
    EXPECT_EQ(pair.at(9), -3);
    EXPECT_EQ(pair.at(1), 99);
}

TEST(DecodeProgressive, RunsThatLeaveTheBand)
{
    for (bool refine : {false, true}) {
        auto decode = [&](Pair& pair, Band band) { return refine ? pair.acRefine(band) : pair.acFirst(band); };
        // Two zeros and a one, twice: positions 3 and 6.
        Pair past(fiveCodes({0x21, 0xF0, 0, 0, 0}), {0b00'1'00'1'01, 0});
        EXPECT_EQ(decode(past, {1, 5, 0}), qelStsJPEGCoeffPosErr);
        EXPECT_EQ(past.at(3), 1);
        EXPECT_EQ(past.at(6), 0);
        // The next block begins behind that value: sixteen zeros end a band of twelve.
        EXPECT_EQ(decode(past, {52, 63, 0}), qelStsNoErr);
    }
}

TEST(DecodeProgressive, Markers)
{
    // Two refinement bits, and a marker that is handed over when a third is missing.
    Pair pair(fiveCodes({0, 0xF0, 0, 0, 0}), {0xFF, 0x00, 0xFF, 0xFF, 0xD7, 0x00});
    for (int i = 0; i < 8; ++i) EXPECT_EQ(pair.dcRefine(0), qelStsNoErr);
    EXPECT_EQ(pair.dcRefine(0), qelStsJPEGOutOfBufErr);
    EXPECT_EQ(pair.marker, 0xD7u);
    EXPECT_EQ(pair.pos, 5);
    EXPECT_EQ(pair.acFirst({1, 63, 0}), qelStsJPEGOutOfBufErr);
    pair.marker = 0;
    pair.reference.marker = 0;
    EXPECT_EQ(pair.acFirst({1, 63, 0}), qelStsNoErr);
    EXPECT_EQ(pair.pos, 6);
}

struct Arguments {
    const uint8_t* src;
    int len;
    int* pos;
    int16_t *block, *lastDc;
    uint32_t* marker;
    int ss, se, al;
    const QelDecodeHuffmanSpec* table;
    QelDecodeHuffmanState* state;
};
using Call = QelStatus (*)(const Arguments&);
const Call kCalls[] = {[](const Arguments& a) {
                           return qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(a.src, a.len, a.pos, a.block, a.lastDc,
                                                                             a.marker, a.al, a.table, a.state);
                       },
                       [](const Arguments& a) {
                           return qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(a.src, a.len, a.pos, a.block, a.marker,
                                                                              a.al, a.state);
                       },
                       [](const Arguments& a) {
                           return qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(a.src, a.len, a.pos, a.block, a.marker,
                                                                             a.ss, a.se, a.al, a.table, a.state);
                       },
                       [](const Arguments& a) {
                           return qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(a.src, a.len, a.pos, a.block, a.marker,
                                                                              a.ss, a.se, a.al, a.table, a.state);
                       }};

TEST(DecodeProgressive, OrderOfFaults)
{
    Pair pair(fiveCodes({}), {0x00});
    int before = -1;
    const Arguments good = {
        pair.src.data(), 1,          &pair.pos, pair.block.data(), &pair.lastDc, &pair.marker, 1, 63, 13,
        &pair.table,     &pair.state};
    for (auto call : kCalls) {
        // Everything is wrong, and put right step by step.
        Arguments a = {nullptr, 0, nullptr, nullptr, nullptr, nullptr, 1, 63, 14, nullptr, nullptr};
        EXPECT_EQ(call(a), qelStsNullPtrErr);
        a.src = good.src;
        EXPECT_EQ(call(a), qelStsSizeErr);
        a.len = 1;
        EXPECT_EQ(call(a), qelStsNullPtrErr);
        a.pos = &before, a.block = good.block, a.lastDc = good.lastDc, a.marker = good.marker;
        EXPECT_EQ(call(a), qelStsBadArgErr);
        a.al = -1;
        EXPECT_EQ(call(a), qelStsBadArgErr);
        a.al = 13;
        EXPECT_EQ(call(a), qelStsNullPtrErr);
        a.table = good.table, a.state = good.state;
        EXPECT_EQ(call(a), qelStsBadArgErr);
        a.pos = good.pos;
        EXPECT_EQ(call(a), qelStsNoErr);
    }
}

TEST(DecodeProgressive, EveryArgumentIsChecked)
{
    Pair pair(fiveCodes({}), {0x00});
    const Arguments good = {
        pair.src.data(), 1,          &pair.pos, pair.block.data(), &pair.lastDc, &pair.marker, 1, 63, 13,
        &pair.table,     &pair.state};
    for (auto call : kCalls) {
        bool isDc = call == kCalls[0] || call == kCalls[1];
        auto with = [&](auto change) {
            Arguments a = good;
            change(a);
            return call(a);
        };
        EXPECT_EQ(with([](auto& a) { a.pos = nullptr; }), qelStsNullPtrErr);
        EXPECT_EQ(with([](auto& a) { a.block = nullptr; }), qelStsNullPtrErr);
        EXPECT_EQ(with([](auto& a) { a.marker = nullptr; }), qelStsNullPtrErr);
        EXPECT_EQ(with([](auto& a) { a.state = nullptr; }), qelStsNullPtrErr);
        EXPECT_EQ(with([](auto& a) { a.lastDc = nullptr; }), call == kCalls[0] ? qelStsNullPtrErr : qelStsNoErr);
        EXPECT_EQ(with([](auto& a) { a.table = nullptr; }), call != kCalls[1] ? qelStsNullPtrErr : qelStsNoErr);
        if (isDc) continue;
        EXPECT_EQ(with([](auto& a) { a.ss = 0; }), qelStsBadArgErr);
        EXPECT_EQ(with([](auto& a) { a.se = 64; }), qelStsBadArgErr);
        EXPECT_EQ(with([](auto& a) { a.ss = 6, a.se = 5; }), qelStsBadArgErr);
    }
}

}
