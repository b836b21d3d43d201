// SPDX-License-Identifier: Apache-2.0
// Level shift: values, order of faults, regions.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "argument_faults.h"
#include "random.h"

using namespace qel::test;

namespace {

TEST(Sub128, Values)
{
    const uint8_t in[] = {0, 1, 127, 128, 255};
    int16_t out[5];
    EXPECT_EQ(qeliSub128_JPEG_8u16s_C1R(in, 5, out, 10, {5, 1}), qelStsNoErr);
    const int16_t expected[] = {-128, -127, -1, 0, 127};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(out[i], expected[i]);
}

TEST(Add128, Clamps)
{
    const struct {
        int16_t in;
        uint8_t out;
    } table[] = {{-32768, 0}, {-129, 0},  {-128, 0},  {-127, 1},   {0, 128},
                 {126, 254},  {127, 255}, {128, 255}, {32767, 255}};
    for (auto& row : table) {
        uint8_t out = 77;
        EXPECT_EQ(qeliAdd128_JPEG_16s8u_C1R(&row.in, 2, &out, 1, {1, 1}), qelStsNoErr);
        EXPECT_EQ(out, row.out) << row.in;
    }
}

TEST(LevelShift, OrderOfFaults)
{
    uint8_t samples[4] = {9, 9, 9, 9};
    int16_t values[4] = {7, 7, 7, 7};
    expectFaults(qeliSub128_JPEG_8u16s_C1R, {samples, 1, values, 1, {1, 1}}, null<0>, null<2>, step<1>, step<3>,
                 size<4>);
    // Argument by argument: the source step is looked at before the destination.
    expectFaults(qeliAdd128_JPEG_16s8u_C1R, {values, 1, samples, 1, {1, 1}}, null<0>, step<1>, null<2>, step<3>,
                 size<4>);
    EXPECT_EQ(samples[0], 9);
    EXPECT_EQ(values[0], 7);
}

// A region inside larger rows, the 16-bit side at an odd address: only the region changes.
TEST(LevelShift, Regions)
{
    constexpr int kWidth = 37, kHeight = 5, kStep = 50, kWideStep = 101;
    Random random(3);
    std::vector<uint8_t> samples(kStep * kHeight), wide(kWideStep * kHeight + 1, 0xEE), back(samples.size(), 0xEE);
    random.fill(samples.data(), samples.size());
    auto* values = (int16_t*)(wide.data() + 1);
    ASSERT_EQ(qeliSub128_JPEG_8u16s_C1R(samples.data(), kStep, values, kWideStep, {kWidth, kHeight}), qelStsNoErr);
    ASSERT_EQ(qeliAdd128_JPEG_16s8u_C1R(values, kWideStep, back.data(), kStep, {kWidth, kHeight}), qelStsNoErr);
    for (int r = 0; r < kHeight; ++r) {
        for (int c = 0; c < kStep; ++c)
            ASSERT_EQ(back[r * kStep + c], c < kWidth ? samples[r * kStep + c] : 0xEE) << r << ' ' << c;
        for (int c = 2 * kWidth; c < kWideStep; ++c) ASSERT_EQ(wide[1 + r * kWideStep + c], 0xEE) << r << ' ' << c;
    }
}

}
