// SPDX-License-Identifier: Apache-2.0
// Passes of code-block decoding: every build takes the decisions of the scalar one, whatever the bytes, and leaves the
// same registers; and whole blocks are those of a decoder that goes sample by sample.
#include "jpeg2k/coding/code_block_decode.h"

#include "code_block_cases.h"
#include "jpeg2k/coding/code_block_contexts.h"
#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Pass by pass, on a state that is attached by hand, down from any plane; raw passes below the third one, or not.
TEST(CodeBlockDecodeKernels, EveryBuildTakesEveryDecision)
{
    everyRoundEqualsScalar<CodeBlockDecodeKernels>(360, [](auto& table, Random& random, int round) {
        static const QelSize sizes[] = {{1, 1},   {3, 2},   {16, 4},  {17, 3}, {5, 9},
                                        {32, 32}, {64, 64}, {40, 13}, {1, 70}};
        static const uint32_t* const contexts[] = {ZeroCodingLUT_LxHy.of, ZeroCodingLUT_HxLy.of, ZeroCodingLUT_HxHy.of};
        const QelSize size = sizes[round % 9];
        const int top = random.between(0, random.between(0, 30)), rawFrom = random.between(0, 3) ? -1 : top - 3;
        const auto bytes = randomSegment(random, random.between(0, random.between(0, 1) ? 40 : 3000));
        Guarded<uint8_t> src(bytes.size()), flags(flagBytes(size.width, size.height));
        Guarded<int32_t> coefficients(size_t(size.width) * size_t(size.height));
        std::copy(bytes.begin(), bytes.end(), src.data());
        memset(flags.data(), 0, flags.size());
        memset(coefficients.data(), 0, coefficients.sizeInBytes());
        DecodeCBProgrState state = {};
        state.width = size.width, state.height = size.height, state.dstStep = size.width * 4;
        state.dst = (uint8_t*)coefficients.data();
        state.sequence.style = random.between(0, 1) * JPEG2K_VERTICALLY_CAUSAL;
        state.zeroCoding = contexts[random.between(0, 2)];
        state.flags = (FlagColumn*)flags.data() + kFlagMargin;
        state.flagPitch = flagPitch(size.width);
        mqDecoderResetCtx(&state.mq);
        mqDecoderInit(&state.mq, src.data(), int(src.size()));
        state.raw = {src.data(), int(src.size()), 0, -1, 0};
        std::vector<std::vector<uint8_t>> passes;
        auto run = [&](auto pass) {
            pass(&state);
            passes.push_back(bytesOf(coefficients));
        };
        for (state.plane = top; state.plane >= 0; --state.plane) {
            const bool isRaw = state.plane <= rawFrom;
            if (state.plane < top) {
                run(isRaw ? table.significancePropagationRaw : table.significancePropagation);
                run(isRaw ? table.magnitudeRefinementRaw : table.magnitudeRefinement);
            }
            run(table.cleanup);
        }
        MqDecoderState registers = state.mq;
        registers.buffer = nullptr;
        return std::tuple(passes, bytesOf(flags), state.raw.position, bytesOf(registers));
    });
}

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
