// SPDX-License-Identifier: Apache-2.0
// Huffman kernels: every build equals the scalar one. That of sequential decoding has nothing of registers.
#include "huffman_stream.h"
#include "jpeg/entropy/huffman_encode.h"
#include "jpeg/entropy/progressive_decode.h"
#include "jpeg/entropy/progressive_encode.h"
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

// A state between two blocks.
QelEncodeHuffmanState randomState(Random& random)
{
    QelEncodeHuffmanState state = {};
    state.count = random.between(0, 7);
    state.accumulator[0] = uint32_t(random.between(0, 0x7FFF)) << (24 - state.count);
    return state;
}

TEST(HuffmanEncodeKernels, Blocks)
{
    everyRoundEqualsScalar<HuffmanEncodeKernels>(2000, [](auto& table, Random& random, int) {
        auto dc = encodeSpecOf(listsWithout(random, 200)),
             ac = encodeSpecOf(listsWithout(random, random.between(0, 255)));
        auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
        Guarded<uint8_t> dst(size_t(random.between(table.kRoomForBlock, 700))), direct(600);
        QelEncodeHuffmanState state = randomState(random);
        auto lastDc = int16_t(random.between(-32768, 32767)), lastCounted = lastDc;
        int pos = 0, bits = random.between(0, 15);
        std::array<uint32_t, 256> dcCounts{}, acCounts{};
        QelStatus status =
            table.encodeBlock(block.data(), dst.data(), int(dst.size()), &pos, &lastDc, &dc, &ac, &state);
        table.encodeBlockDirect(block.data(), direct.data(), &bits, &lastDc, &dc, &ac);
        table.countBlock(block.data(), dcCounts.data(), acCounts.data(), &lastCounted);
        return std::tuple(status, pos, bits, lastDc, lastCounted, bytesOf(state), bytesOf(dst), bytesOf(direct),
                          dcCounts, acCounts);
    });
}

TEST(ProgressiveDecodeKernels, Bands)
{
    everyRoundEqualsScalar<ProgressiveDecodeKernels>(1000, [](auto& table, Random& random, int round) {
        auto spec = specOf(listsWithout(random, 0xF0));
        Guarded<uint8_t> src(size_t(random.between(4, 100)));
        random.fill(src.data(), src.size());
        int len = int(src.size()), al = random.between(0, 13), ss = random.between(1, 63);
        int se = random.between(ss, 63), sparsity = random.between(0, 8), pos = 0;
        QelDecodeHuffmanState state = {};
        uint32_t marker = 0;
        auto decode = round % 2 == 0 ? table.acFirst : table.acRefine;
        std::vector<std::tuple<QelStatus, int, uint32_t, std::array<int16_t, 64>, std::vector<uint8_t>>> steps;
        for (QelStatus status = qelStsNoErr; status != qelStsJPEGOutOfBufErr;) {
            auto block = randomBlock(random, sparsity, 14);
            state.endOfBandRun %= 3;
            status = decode(src.data(), len, &pos, block.data(), &marker, ss, se, al, &spec, &state);
            steps.emplace_back(status, pos, marker, block, bytesOf(state));
        }
        return steps;
    });
}

// From states between two blocks, now and then close to a full buffer or run.
TEST(ProgressiveEncodeKernels, Blocks)
{
    int succeeded = 0;
    everyRoundEqualsScalar<ProgressiveEncodeKernels>(4000, [&](auto& table, Random& random, int round) {
        auto spec = encodeSpecOf(randomLists(random, random.between(0, 1) == 0));
        auto state = randomState(random);
        state.endOfBandRun = uint32_t(random.between(0, 3) == 0 ? 32767 - random.between(0, 3) : random.between(0, 40));
        if (state.endOfBandRun > 0)
            state.correctionCount = uint32_t(random.between(0, random.between(0, 1) ? 937 : 20));
        for (uint32_t i = 0; i < state.correctionCount; ++i) state.correctionBits[i] = uint8_t(random.between(0, 1));
        auto counted = state;
        auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
        int ss = random.between(1, random.between(1, 63)), pos = 0;
        const Band band = {ss, random.between(ss, 63), random.between(0, random.between(0, 13))};
        Guarded<uint8_t> dst(size_t(random.between(table.kRoomForBlock, 700)));
        QelStatus status = (round % 2 ? table.encodeFirst : table.encodeRefinement)(
            block.data(), dst.data(), int(dst.size()), &pos, band, &spec, &state);
        succeeded += status == qelStsNoErr && pos > 0;
        std::array<uint32_t, 256> counts{};
        QelStatus countStatus =
            (round % 2 ? table.countFirst : table.countRefinement)(block.data(), counts.data(), band, &counted);
        // Bits that do not count any more may be anything.
        for (auto* some : {&state, &counted})
            std::fill(some->correctionBits + some->correctionCount, std::end(some->correctionBits), uint8_t(0));
        auto states = bytesOf(state), countedStates = bytesOf(counted);
        QelStatus runStatus = table.countRun(counts.data(), &counted);
        return std::tuple(status, countStatus, runStatus, pos, bytesOf(dst), states, countedStates, counts);
    });
    EXPECT_GT(succeeded, 2000); // of 8000 for each build
}

}
