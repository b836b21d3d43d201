// Passes of code-block decoding: every build takes the same decisions as the steps one by one, whatever the bytes, and
// leaves the same registers.
#include "jpeg2k/code_block_decode.h"

#include "code_block_cases.h"
#include "jpeg2k/code_block_contexts.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

struct PlaneByPlane {
    int width, height, bandType, planes, style;
    bool isRaw; // below the third plane
    std::vector<uint8_t> bytes;
};

PlaneByPlane randomPlanes(Random& random, int round)
{
    static const QelSize sizes[] = {{1, 1}, {3, 2}, {16, 4}, {17, 3}, {5, 9}, {32, 32}, {64, 64}, {40, 13}, {1, 70}};
    QelSize size = sizes[round % 9];
    PlaneByPlane block = {size.width, size.height, random.between(0, 3), random.between(1, random.between(1, 31)), 0,
                          false,      {}};
    block.style = random.between(0, 1) * JPEG2K_VERTICALLY_CAUSAL;
    block.isRaw = random.between(0, 3) == 0;
    block.bytes = randomSegment(random, random.between(0, random.between(0, 1) ? 40 : 3000));
    return block;
}

// A state that is attached by hand, with flags and coefficients of its own.
struct Decoder {
    Guarded<uint8_t> flags;
    Guarded<int32_t> coefficients;
    DecodeCBProgrState state = {};

    explicit Decoder(const PlaneByPlane& block)
        : flags(flagBytes(block.width, block.height)), coefficients(size_t(block.width) * size_t(block.height))
    {
        static const uint32_t* const tables[] = {ZeroCodingLUT_LxHy.of, ZeroCodingLUT_LxHy.of, ZeroCodingLUT_HxLy.of,
                                                 ZeroCodingLUT_HxHy.of};
        memset(flags.data(), 0, flags.size());
        memset(coefficients.data(), 0, coefficients.sizeInBytes());
        state.width = block.width, state.height = block.height, state.dstStep = block.width * 4;
        state.dst = (uint8_t*)coefficients.data();
        state.style = block.style;
        state.zeroCoding = tables[block.bandType];
        state.flags = (FlagColumn*)flags.data() + kFlagMargin;
        state.flagPitch = flagPitch(block.width);
        mqDecoderResetCtx(&state.mq);
    }
};

void expectSame(const PlaneByPlane& block, const Decoder& decoder, const CodeBlockReference& expected)
{
    for (int y = 0; y < block.height; ++y)
        for (int x = 0; x < block.width; ++x) {
            int32_t value;
            memcpy(&value, decoder.coefficients.data() + y * block.width + x, sizeof value);
            ASSERT_EQ(uint32_t(value), expected.coefficient(x, y)) << x << " " << y << " plane " << decoder.state.plane;
        }
    const MqDecoderState &mq = decoder.state.mq, &expectedMq = expected.mq.state;
    ASSERT_EQ(memcmp(&mq, &expectedMq, sizeof mq), 0)
        << std::hex << "A " << mq.A << " C " << mq.C << " CT " << mq.CT << " position " << mq.position << " end "
        << mq.endOfData << ", not A " << expectedMq.A << " C " << expectedMq.C << " CT " << expectedMq.CT
        << " position " << expectedMq.position << " end " << expectedMq.endOfData;
    const RawReader& raw = decoder.state.raw;
    if (block.isRaw) {
        ASSERT_EQ(raw.buffer + raw.position, expected.raw.next);
    }
}

void compare(const CodeBlockDecodeKernels& table, const PlaneByPlane& block)
{
    Guarded<uint8_t> src(block.bytes.size());
    std::copy(block.bytes.begin(), block.bytes.end(), src.data());
    int length = int(src.size());
    Decoder decoder(block);
    DecodeCBProgrState& state = decoder.state;
    CodeBlockReference reference(block.width, block.height, block.bandType, block.style & JPEG2K_VERTICALLY_CAUSAL);
    mqDecoderInit(&state.mq, src.data(), length);
    reference.mq.start(src.data(), length);
    state.raw = {src.data(), length, 0, -1, 0};
    reference.raw = {src.data(), src.data() + length};
    for (state.plane = block.planes - 1; state.plane >= 0; --state.plane) {
        if (state.plane < block.planes - 1) {
            reference.isRaw = block.isRaw && state.plane < block.planes - 3;
            (reference.isRaw ? table.significancePropagationRaw : table.significancePropagation)(&state);
            reference.significancePropagation(state.plane);
            ASSERT_NO_FATAL_FAILURE(expectSame(block, decoder, reference)) << "significance propagation";
            (reference.isRaw ? table.magnitudeRefinementRaw : table.magnitudeRefinement)(&state);
            reference.magnitudeRefinement(state.plane);
            ASSERT_NO_FATAL_FAILURE(expectSame(block, decoder, reference)) << "refinement";
        }
        reference.isRaw = false;
        table.cleanup(&state);
        reference.cleanup(state.plane);
        ASSERT_NO_FATAL_FAILURE(expectSame(block, decoder, reference)) << "cleanup";
    }
    ASSERT_TRUE(decoder.flags.intact() && decoder.coefficients.intact());
}

void compareAll(const CodeBlockDecodeKernels& table)
{
    Random random(6);
    for (int round = 0; round < 360; ++round) {
        PlaneByPlane block = randomPlanes(random, round);
        SCOPED_TRACE(testing::Message() << "round " << round << ": " << block.width << "x" << block.height);
        ASSERT_NO_FATAL_FAILURE(compare(table, block));
    }
}

TEST(CodeBlockDecodeKernels, ScalarTakesEveryDecision) { compareAll(CodeBlockDecodeKernels::scalar); }
TEST(CodeBlockDecodeKernels, EveryBuildTakesEveryDecision) { everyBuild<CodeBlockDecodeKernels>(compareAll); }

// Any bytes in any style, also with predictable termination, of which most of these blocks have none.
TEST(DecodeCodeBlock, TakesEveryDecisionOfAnyBytes)
{
    Random random(7);
    for (int round = 0; round < 1500; ++round) {
        CodedBlock block = randomBlock(random);
        block.style |= random.between(0, 1) * JPEG2K_PREDICTABLE_TERMINATION;
        SCOPED_TRACE(testing::Message() << "round " << round << ", style " << block.style << ", " << block.width << "x"
                                        << block.height);
        ASSERT_NO_FATAL_FAILURE(expectAsReference(block));
    }
}

}
