// SPDX-License-Identifier: Apache-2.0
// Decoding of code-blocks: the order of faults, and decoding by steps.
#include "argument_faults.h"
#include "code_block_cases.h"

using namespace qel::test;

namespace {

// A block of one sample: the byte 0 leaves all of the interval to the first decisions.
struct OneSample {
    uint8_t src[2] = {0, 0};
    int32_t dst = 7;
    uint32_t length = 2;
    int errorPlane = -5;
    std::vector<uint8_t> buffer = std::vector<uint8_t>(1000);

    QelDecodeCBProgrState* state() { return (QelDecodeCBProgrState*)buffer.data(); }
    QelStatus decode(int planes, int passes, int segments, int style)
    {
        return qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(src, &dst, 4, {1, 1}, 0, planes, passes, &length, segments, style,
                                                    &errorPlane, state());
    }
};

TEST(DecodeCodeBlock, NothingToDecode)
{
    const struct {
        int planes, passes, segments, style;
        int32_t expected;
    } table[] = {
        {3, 1, 0, 0, 0},
        {3, 0, 1, 0, 0},
        {3, -4, 1, 0, 0},
        {0, 5, 1, 0, 0},
        {-2000000000, 5, 1, 0, 0},
        {3, 1, -1, 0, 0},
        // The low bits of what was there are cleared all the same: plane 2 was to come.
        {3, 1, 0, JPEG2K_KEEP_DESTINATION, 4},
        {3, 1, 0, JPEG2K_KEEP_DESTINATION | JPEG2K_KEEP_LOW_BITS, 7},
        {40, 1, 0, JPEG2K_KEEP_DESTINATION, 0},
    };
    for (auto& row : table) {
        OneSample one;
        EXPECT_EQ(one.decode(row.planes, row.passes, row.segments, row.style), qelStsNoErr);
        EXPECT_EQ(one.dst, row.expected) << row.planes << " planes, " << row.passes << " passes";
        EXPECT_EQ(one.errorPlane, -5);
    }
}

TEST(DecodeCodeBlock, OrderOfFaults)
{
    OneSample one;
    expectFaults(qeliDecodeCodeBlock_JPEG2K_1u32s_C1R,
                 {one.src, &one.dst, 4, {1, 1}, 0, 1, 1, &one.length, 1, 0, nullptr, one.state()}, null<0>, null<11>,
                 size<3>, null<1>, null<7>, step<2>);
    EXPECT_EQ(one.dst, 7);
}

TEST(DecodeCodeBlock, SizeOfTheBuffer)
{
    const struct {
        QelSize size;
        QelStatus status;
        int bytes;
    } table[] = {
        {{64, 64}, qelStsNoErr, 10180},
        {{1, 1}, qelStsNoErr, 484},
        {{6, 3}, qelStsNoErr, 516},
        {{7, 3}, qelStsNoErr, 644},
        {{0, 1}, qelStsSizeErr, -1},
        {{1, 0}, qelStsSizeErr, -1},
        {{7, -3}, qelStsSizeErr, -1},
        {{2000000, 2000}, qelStsSizeErr, -1},
        {{INT32_MAX, INT32_MAX}, qelStsSizeErr, -1},
    };
    for (auto& row : table) {
        int bytes = -1;
        EXPECT_EQ(qeliDecodeGetBufSize_JPEG2K(row.size, &bytes), row.status);
        EXPECT_EQ(bytes, row.bytes) << row.size.width;
    }
    EXPECT_EQ(qeliDecodeGetBufSize_JPEG2K({0, 0}, nullptr), qelStsNullPtrErr);
}

TEST(DecodeBySteps, OrderOfFaults)
{
    OneSample one;
    int plane = 0;
    auto attach = [&](int32_t* dst, int step, QelSize size, QelDecodeCBProgrState* state) {
        return qeliDecodeCBProgrAttach_JPEG2K_32s_C1R(dst, step, size, 0, 1, 1, 0, state);
    };
    EXPECT_EQ(qeliDecodeCBProgrInit_JPEG2K(nullptr), qelStsNullPtrErr);
    EXPECT_EQ(attach(&one.dst, 4, {1, 1}, nullptr), qelStsNullPtrErr);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(one.src, 1, nullptr), qelStsNullPtrErr);
    for (auto change : {qeliDecodeCBProgrConcealError_JPEG2K, qeliDecodeCBProgrClearLeastSfBits_JPEG2K}) {
        EXPECT_EQ(change(nullptr), qelStsNullPtrErr);
        EXPECT_EQ(change(one.state()), qelStsContextMatchErr);
    }
    EXPECT_EQ(attach(nullptr, 0, {0, 0}, one.state()), qelStsContextMatchErr);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(nullptr, 1, one.state()), qelStsContextMatchErr);
    EXPECT_EQ(qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(nullptr, one.state()), qelStsContextMatchErr);

    EXPECT_EQ(qeliDecodeCBProgrInit_JPEG2K(one.state()), qelStsNoErr);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(nullptr, -1, one.state()), qelStsJPEG2KCodeBlockIsNotAttached);
    expectFaults(qeliDecodeCBProgrAttach_JPEG2K_32s_C1R, {&one.dst, 4, {1, 1}, 0, 1, 1, 0, one.state()}, null<7>,
                 null<0>, step<1>, size<2>);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(one.src, 1, one.state()), qelStsJPEG2KCodeBlockIsNotAttached);
    EXPECT_EQ(one.dst, 7);
    EXPECT_EQ(attach(&one.dst, 4, {1, 1}, one.state()), qelStsNoErr);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(nullptr, 1, one.state()), qelStsNullPtrErr);
    EXPECT_EQ(qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(nullptr, one.state()), qelStsNullPtrErr);
    EXPECT_EQ(qeliDecodeCBProgrStep_JPEG2K(one.src, -1, one.state()), qelStsNoErr);
    EXPECT_EQ(qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(&plane, one.state()), qelStsNoErr);
    EXPECT_EQ(plane, 0);
}

// Segment by segment the same as at once; the second attachment finds a used state.
TEST(DecodeBySteps, AsInOneCall)
{
    Random random(3);
    std::vector<uint8_t> buffer(100000); // more than any of the blocks asks for
    auto* state = (QelDecodeCBProgrState*)(buffer.data() + 5);
    ASSERT_EQ(qeliDecodeCBProgrInit_JPEG2K(state), qelStsNoErr);
    for (int round = 0; round < 200; ++round) {
        CodedBlock block = randomBlock(random);
        DecodedBlock expected = decodeGuarded(block);
        std::vector<uint32_t> coefficients(expected.coefficients.size(), 99);
        ASSERT_EQ(qeliDecodeCBProgrAttach_JPEG2K_32s_C1R((int32_t*)coefficients.data(), block.width * 4,
                                                         {block.width, block.height}, block.bandType, block.planes,
                                                         block.passes, block.style, state),
                  qelStsNoErr);
        QelStatus status = qelStsNoErr;
        for (auto& bytes : block.segments) {
            // A finished block stays so.
            QelStatus stepped =
                qeliDecodeCBProgrStep_JPEG2K(bytes.data() ? bytes.data() : buffer.data(), int(bytes.size()), state);
            ASSERT_TRUE(status == qelStsNoErr || stepped == status);
            status = stepped;
        }
        ASSERT_EQ(status, expected.status);
        int plane = 0;
        ASSERT_EQ(qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(&plane, state), qelStsNoErr);
        if (status != qelStsNoErr) {
            ASSERT_EQ(plane, expected.errorPlane);
            if (block.style & JPEG2K_CONCEAL_ERRORS) {
                ASSERT_EQ(qeliDecodeCBProgrConcealError_JPEG2K(state), qelStsNoErr);
            }
        }
        if (!(block.style & JPEG2K_KEEP_LOW_BITS)) {
            ASSERT_EQ(qeliDecodeCBProgrClearLeastSfBits_JPEG2K(state), qelStsNoErr);
        }
        ASSERT_EQ(coefficients, expected.coefficients) << "round " << round;
    }
}

}
