// Progressive encoding kernels: every build equals the scalar one.
#include "jpeg/progressive_encode.h"

#include "huffman_reference.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Codes of all lengths; a few symbols have none.
QelEncodeHuffmanSpec randomSpec(Random& random)
{
    Lists lists = randomLists(random, random.between(0, 1) == 0);
    QelEncodeHuffmanSpec spec = {};
    auto codes = codesOf(lists);
    for (size_t i = 0; i < codes.size(); ++i)
        spec.entries[lists.values[i]] = uint32_t(codes[i].length) << 16 | codes[i].word;
    return spec;
}

// Between two blocks, now and then close to a full buffer or run.
QelEncodeHuffmanState randomState(Random& random)
{
    QelEncodeHuffmanState state = {};
    state.count = random.between(0, 7);
    state.accumulator[0] = uint32_t(random.between(0, 0x7FFF)) << (24 - state.count);
    state.endOfBandRun = uint32_t(random.between(0, 3) == 0 ? 32767 - random.between(0, 3) : random.between(0, 40));
    if (state.endOfBandRun > 0) state.correctionCount = uint32_t(random.between(0, random.between(0, 1) ? 937 : 20));
    for (uint32_t i = 0; i < state.correctionCount; ++i) state.correctionBits[i] = uint8_t(random.between(0, 1));
    return state;
}

Band randomBand(Random& random)
{
    int ss = random.between(1, random.between(1, 63));
    return {ss, random.between(ss, 63), random.between(0, random.between(0, 13))};
}

void expectSame(const QelEncodeHuffmanState& state, const QelEncodeHuffmanState& expected)
{
    ASSERT_EQ(memcmp(&state, &expected, offsetof(QelEncodeHuffmanState, correctionBits)), 0);
    ASSERT_EQ(memcmp(state.correctionBits, expected.correctionBits, expected.correctionCount), 0);
}

TEST(ProgressiveEncodeKernels, Blocks)
{
    everyBuild<ProgressiveEncodeKernels>([](const ProgressiveEncodeKernels& table) {
        auto& scalar = ProgressiveEncodeKernels::scalar;
        Random random(1);
        int succeeded = 0;
        for (int round = 0; round < 4000; ++round) {
            auto spec = randomSpec(random);
            auto state = randomState(random), expectedState = state;
            auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
            Band band = randomBand(random);
            int room = random.between(ProgressiveEncodeKernels::kRoomForBlock, 700), pos = 0, expectedPos = 0;
            Guarded<uint8_t> dst(room), expected(room);
            auto encode = round % 2 ? table.encodeFirst : table.encodeRefinement;
            auto encodeExpected = round % 2 ? scalar.encodeFirst : scalar.encodeRefinement;
            QelStatus status = encode(block.data(), dst.data(), room, &pos, band, &spec, &state);
            ASSERT_EQ(status,
                      encodeExpected(block.data(), expected.data(), room, &expectedPos, band, &spec, &expectedState));
            ASSERT_EQ(pos, expectedPos);
            ASSERT_NO_FATAL_FAILURE(expectSame(state, expectedState));
            ASSERT_EQ(memcmp(dst.data(), expected.data(), room), 0);
            ASSERT_TRUE(dst.intact());
            succeeded += status == qelStsNoErr && pos > 0;
        }
        EXPECT_GT(succeeded, 1000);
    });
}

TEST(ProgressiveEncodeKernels, Statistics)
{
    everyBuild<ProgressiveEncodeKernels>([](const ProgressiveEncodeKernels& table) {
        auto& scalar = ProgressiveEncodeKernels::scalar;
        Random random(2);
        std::array<uint32_t, 256> counts{}, expected{};
        for (int round = 0; round < 4000; ++round) {
            auto state = randomState(random), expectedState = state;
            auto block = randomBlock(random, 1 << random.between(0, 6), random.between(0, 15));
            Band band = randomBand(random);
            auto count = round % 2 ? table.countFirst : table.countRefinement;
            auto countExpected = round % 2 ? scalar.countFirst : scalar.countRefinement;
            ASSERT_EQ(count(block.data(), counts.data(), band, &state),
                      countExpected(block.data(), expected.data(), band, &expectedState));
            ASSERT_NO_FATAL_FAILURE(expectSame(state, expectedState));
            ASSERT_EQ(table.countRun(counts.data(), &state), scalar.countRun(expected.data(), &expectedState));
            ASSERT_EQ(counts, expected);
        }
    });
}

}
