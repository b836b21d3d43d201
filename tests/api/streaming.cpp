// SPDX-License-Identifier: Apache-2.0
// Regions whose output is streamed: the same samples as those of parts that are not. The kernels of all have tests.
#include <gtest/gtest.h>

#include <vector>

#include "qeljx.h"
#include "random.h"

namespace {

using Bytes = std::vector<uint8_t>;

// More than 24 MB of output, in rows that end within a cache line.
constexpr QelSize kSize = {5003, 5031};
constexpr int kStep = kSize.width + 2, kParts = 3;

// work(first row, rows, destination) on all rows at once, and on a few parts; rows have `bytes` bytes a sample.
template <class Work> void expectSameInParts(int bytes, Work work)
{
    const size_t row = size_t(kStep) * size_t(bytes);
    Bytes whole(row * kSize.height, 1), parts(whole);
    ASSERT_EQ(work(0, kSize.height, whole.data()), qelStsNoErr);
    for (int i = 0; i < kParts; ++i) {
        int first = kSize.height / kParts * i;
        ASSERT_EQ(work(first, kSize.height / kParts, parts.data() + row * first), qelStsNoErr);
    }
    EXPECT_EQ(whole, parts);
}

TEST(Streaming, EqualParts)
{
    qel::test::Random random(1);
    Bytes src(size_t(kStep) * (kSize.height + 2) * 2);
    random.fill(src.data(), src.size());
    const uint8_t* middle = src.data() + kStep;
    expectSameInParts(2, [&](int first, int rows, uint8_t* dst) {
        return qeliSub128_JPEG_8u16s_C1R(middle + kStep * first, kStep, (int16_t*)dst, 2 * kStep, {kSize.width, rows});
    });
    expectSameInParts(1, [&](int first, int rows, uint8_t* dst) {
        return qeliSampleUpH2V1_JPEG_8u_C1R(middle + kStep * first, kStep, {kSize.width / 2, rows}, dst, kStep,
                                            {kSize.width, rows});
    });
    expectSameInParts(3, [&](int first, int rows, uint8_t* dst) {
        const uint8_t* planes[3];
        for (int i = 0; i < 3; ++i) planes[i] = middle + kStep * first + 31 * i;
        return qeliYCbCrToRGB_JPEG_8u_P3C3R(planes, kStep, dst, 3 * kStep, {kSize.width, rows});
    });
}

}
