// Huffman kernels: every build equals the scalar one.
#include "jpeg/huffman_decode.h"
#include "jpeg/huffman_encode.h"
#include "jpeg/progressive_decode.h"

#include "huffman_reference.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// A random table that has a code for every symbol but `without`.
Lists listsWithout(Random& random, int without)
{
    Lists lists;
    for (int length : {7, 9, 12, 16}) lists.bits[length - 1] = length == 16 ? 63 : 64;
    for (int i = 0, symbol = 0; symbol < 256; ++symbol)
        if (symbol != without) lists.values[i++] = uint8_t(symbol);
    for (int i = 254; i > 0; --i) std::swap(lists.values[i], lists.values[random.between(0, i)]);
    return lists;
}

QelEncodeHuffmanSpec encodeSpecOf(const Lists& lists)
{
    QelEncodeHuffmanSpec spec = {};
    auto codes = codesOf(lists);
    for (size_t i = 0; i < codes.size(); ++i)
        spec.entries[lists.values[i]] = uint32_t(codes[i].length) << 16 | codes[i].word;
    return spec;
}

TEST(HuffmanEncodeKernels, Blocks)
{
    everyBuild<HuffmanEncodeKernels>([](const HuffmanEncodeKernels& table) {
        auto& scalar = HuffmanEncodeKernels::scalar;
        Random random(1);
        for (int round = 0; round < 2000; ++round) {
            auto dc = encodeSpecOf(listsWithout(random, 200));
            auto ac = encodeSpecOf(listsWithout(random, random.between(0, 255)));
            auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
            int room = random.between(HuffmanEncodeKernels::kRoomForBlock, 700), pos = 0, expectedPos = 0;
            Guarded<uint8_t> dst(room), expected(room);
            QelEncodeHuffmanState state = {};
            state.count = random.between(0, 7);
            state.accumulator[0] = uint32_t(random.between(0, 0xFFFF)) << (24 - state.count);
            auto expectedState = state;
            auto lastDc = int16_t(random.between(-32768, 32767)), expectedDc = lastDc;
            ASSERT_EQ(table.encodeBlock(block.data(), dst.data(), room, &pos, &lastDc, &dc, &ac, &state),
                      scalar.encodeBlock(block.data(), expected.data(), room, &expectedPos, &expectedDc, &dc, &ac,
                                         &expectedState));
            ASSERT_EQ(pos, expectedPos);
            ASSERT_EQ(lastDc, expectedDc);
            ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0);
            ASSERT_EQ(memcmp(dst.data(), expected.data(), room), 0);
            ASSERT_TRUE(dst.intact());

            Guarded<uint8_t> direct(600), expectedDirect(600);
            int bits = random.between(0, 15), expectedBits = bits;
            table.encodeBlockDirect(block.data(), direct.data(), &bits, &lastDc, &dc, &ac);
            scalar.encodeBlockDirect(block.data(), expectedDirect.data(), &expectedBits, &expectedDc, &dc, &ac);
            ASSERT_EQ(bits, expectedBits);
            ASSERT_EQ(memcmp(direct.data(), expectedDirect.data(), 600), 0);
        }
    });
}

TEST(HuffmanEncodeKernels, Statistics)
{
    everyBuild<HuffmanEncodeKernels>([](const HuffmanEncodeKernels& table) {
        Random random(2);
        std::array<uint32_t, 256> dc{}, ac{}, expectedDc{}, expectedAc{};
        int16_t lastDc = 0, expectedLast = 0;
        for (int round = 0; round < 2000; ++round) {
            auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
            table.countBlock(block.data(), dc.data(), ac.data(), &lastDc);
            HuffmanEncodeKernels::scalar.countBlock(block.data(), expectedDc.data(), expectedAc.data(), &expectedLast);
        }
        ASSERT_EQ(dc, expectedDc);
        ASSERT_EQ(ac, expectedAc);
    });
}

// A table without codes longer than ten bits has many that are in no table.
QelDecodeHuffmanSpec decodeSpecOf(const Lists& lists)
{
    QelDecodeHuffmanSpec spec = {};
    auto codes = codesOf(lists);
    for (auto& largest : spec.largestCode) largest = kNoCodeOfLength;
    for (size_t i = 0; i < codes.size(); ++i) {
        auto [length, word] = codes[i];
        spec.values[i] = lists.values[i];
        if (spec.largestCode[length] == kNoCodeOfLength) {
            spec.firstCode[length] = uint16_t(word);
            spec.valueIndex[length] = uint16_t(i);
        }
        spec.largestCode[length] = uint16_t(word);
        for (uint32_t k = 0; length <= 8 && k < 1u << (8 - length); ++k)
            spec.lookAhead[(word << (8 - length)) + k] = uint32_t(length) << 16 | lists.values[i];
    }
    return spec;
}

TEST(HuffmanDecodeKernels, Streams)
{
    everyBuild<HuffmanDecodeKernels>([](const HuffmanDecodeKernels& table) {
        Random random(3);
        for (int round = 0; round < 2000; ++round) {
            auto dc = decodeSpecOf(listsWithout(random, 0)), ac = decodeSpecOf(listsWithout(random, 0));
            Guarded<uint8_t> src(size_t(random.between(4, 200)));
            random.fill(src.data(), src.size());
            for (size_t i = 1; i < src.size(); ++i)
                if (src.data()[i - 1] == 0xFF) src.data()[i] = 0;
            src.data()[src.size() - 2] = 0xFF, src.data()[src.size() - 1] = 0xD9;
            int len = int(src.size()) - (round % 4 < 2 ? 2 : 0);
            QelDecodeHuffmanState state = {}, expectedState = {};
            uint32_t marker = 0, expectedMarker = 0;
            int pos = 0, expectedPos = 0;
            auto& scalar = HuffmanDecodeKernels::scalar;
            for (QelStatus status = qelStsNoErr; status == qelStsNoErr && marker == 0;) {
                int16_t block[64] = {}, expected[64] = {}, lastDc = 5, expectedDc = 5;
                QelStatus other;
                int before = pos;
                if (round % 2 == 0) {
                    status = table.decodeOne(src.data(), len, &pos, block, &marker, &dc, &state);
                    other =
                        scalar.decodeOne(src.data(), len, &expectedPos, expected, &expectedMarker, &dc, &expectedState);
                } else {
                    status = table.decodeBlock(src.data(), len, &pos, block, &lastDc, &marker, &dc, &ac, &state);
                    other = scalar.decodeBlock(src.data(), len, &expectedPos, expected, &expectedDc, &expectedMarker,
                                               &dc, &ac, &expectedState);
                }
                ASSERT_EQ(status, other);
                ASSERT_EQ(memcmp(block, expected, sizeof block), 0);
                ASSERT_EQ(lastDc, expectedDc);
                ASSERT_EQ(pos, expectedPos);
                ASSERT_EQ(marker, expectedMarker);
                ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0);
                if (before == len) break;
            }
        }
    });
}

TEST(ProgressiveDecodeKernels, Bands)
{
    everyBuild<ProgressiveDecodeKernels>([](const ProgressiveDecodeKernels& table) {
        auto& scalar = ProgressiveDecodeKernels::scalar;
        Random random(4);
        for (int round = 0; round < 1000; ++round) {
            auto spec = decodeSpecOf(listsWithout(random, 0xF0));
            Guarded<uint8_t> src(size_t(random.between(4, 100)));
            random.fill(src.data(), src.size());
            int len = int(src.size()), al = random.between(0, 13), ss = random.between(1, 63);
            int se = random.between(ss, 63), sparsity = random.between(0, 8);
            QelDecodeHuffmanState state = {}, expectedState = {};
            uint32_t marker = 0, expectedMarker = 0;
            int pos = 0, expectedPos = 0;
            for (QelStatus status = qelStsNoErr; status != qelStsJPEGOutOfBufErr;) {
                auto block = randomBlock(random, sparsity, 14), expected = block;
                state.endOfBandRun = expectedState.endOfBandRun %= 3;
                auto decode = [&](auto kernels, auto& values, int& at, uint32_t& met, auto& held) {
                    return round % 2 == 0
                               ? kernels.acFirst(src.data(), len, &at, values.data(), &met, ss, se, al, &spec, &held)
                               : kernels.acRefine(src.data(), len, &at, values.data(), &met, ss, se, al, &spec, &held);
                };
                status = decode(table, block, pos, marker, state);
                ASSERT_EQ(status, decode(scalar, expected, expectedPos, expectedMarker, expectedState));
                ASSERT_EQ(block, expected);
                ASSERT_EQ(pos, expectedPos);
                ASSERT_EQ(marker, expectedMarker);
                ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0);
            }
        }
    });
}

}
