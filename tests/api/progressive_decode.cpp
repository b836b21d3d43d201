// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman decoding, against the bit-at-a-time decoder: values, runs, how far it reads, damaged streams.
#include <gtest/gtest.h>

#include "argument_faults.h"
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

    Pair(const Lists& lists, const std::vector<uint8_t>& stream, int largestPiece = 0)
        : Stream(stream, largestPiece), table(specOf(lists)), block(64)
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
    QelStatus dcFirst(int al)
    {
        auto call = [&] {
            return qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &lastDc, &marker,
                                                              al, &table, &state);
        };
        return same(call, reference.dcFirst(al));
    }
    QelStatus dcRefine(int al)
    {
        auto call = [&] {
            return qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src.data(), len(), &pos, block.data(), &marker, al,
                                                               &state);
        };
        return same(call, reference.dcRefine(al));
    }
    QelStatus ac(bool refine, Band b)
    {
        auto decode = refine ? qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1 : qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1;
        auto call = [&] {
            return decode(src.data(), len(), &pos, block.data(), &marker, b.ss, b.se, b.al, &table, &state);
        };
        return same(call, refine ? reference.acRefine(b.ss, b.se, b.al) : reference.acFirst(b.ss, b.se, b.al));
    }

private:
    template <class Call> QelStatus same(Call call, QelStatus expected)
    {
        auto& values = *reinterpret_cast<std::array<int16_t, 64>*>(block.data());
        QelStatus status = whenEnough(call, lastDc, values);
        EXPECT_EQ(status, expected);
        EXPECT_EQ(values, reference.block);
        EXPECT_EQ(lastDc, reference.lastDc);
        EXPECT_EQ(state.endOfBandRun, reference.run);
        EXPECT_TRUE(block.intact());
        expectAt(reference, status);
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

Band randomBand(Random& random)
{
    Band band = {random.between(1, 63), 63, random.between(0, 13)};
    if (random.between(0, 1)) band.ss = 1;
    if (random.between(0, 1)) band.se = random.between(band.ss, 63);
    return band;
}

// Blocks until the stream ends, from marker to marker; those of refinements have had earlier scans.
void decodeAll(Random& random, Pair& pair, bool refine, Band band)
{
    // Up to blocks without a zero.
    int sparsity = (1 << random.between(0, 6)) - 1;
    for (bool hasEnded = false; !hasEnded && !testing::Test::HasFailure();) {
        pair.setBlock(randomBlock(random, sparsity, 14));
        if (pair.reference.run > 30) pair.state.endOfBandRun = pair.reference.run = 3;
        bool isDc = random.between(0, 4) == 0;
        QelStatus status = !isDc ? pair.ac(refine, band) : refine ? pair.dcRefine(band.al) : pair.dcFirst(band.al);
        hasEnded = status == qelStsJPEGOutOfBufErr && !pair.restart(pair.reference);
        pair.reference.run = pair.state.endOfBandRun;
    }
}

// Any bytes, whole or in pieces, any table, markers and ends anywhere; long runs are cut short, or nothing would be
// read any more.
TEST(DecodeProgressive, EqualsTheBitwiseDecoder)
{
    Random random(1);
    for (int round = 0; round < 2500; ++round) {
        Lists lists = round % 3 == 0 ? randomLists(random, false) : likelyLists(random);
        auto stream = randomStream(random, random.between(1, random.between(1, 300)));
        Pair pair(lists, stream, random.between(0, 2) * random.between(1, 9));
        decodeAll(random, pair, round % 2 == 0, randomBand(random));
        ASSERT_FALSE(HasFailure()) << round;
    }
}

TEST(DecodeProgressive, OrderOfFaults)
{
    Random random(3);
    Pair p(randomLists(random), {0x00});
    int before = -1;
    auto block = p.block.data();
    expectFaults(qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1,
                 {p.src.data(), 1, &p.pos, block, &p.lastDc, &p.marker, 13, &p.table, &p.state}, null<0>, length<1>,
                 null<2>, null<3>, null<4>, null<5>, bad<6>(-1, 14), null<7>, null<8>, bad<2>(&before));
    expectFaults(qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1, {p.src.data(), 1, &p.pos, block, &p.marker, 13, &p.state},
                 null<0>, length<1>, null<2>, null<3>, null<4>, bad<5>(-1, 14), null<6>, bad<2>(&before));
    for (auto ac : {qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1, qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1})
        expectFaults(ac, {p.src.data(), 1, &p.pos, block, &p.marker, 6, 6, 13, &p.table, &p.state}, null<0>, length<1>,
                     null<2>, null<3>, null<4>, bad<5>(0, 7), bad<6>(5, 64), bad<7>(-1, 14), null<8>, null<9>,
                     bad<2>(&before));
}

}
