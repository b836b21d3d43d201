// SPDX-License-Identifier: Apache-2.0
// Chroma sampling: all functions against their formulas, edges, order of faults.
#include "jpeg/colour/sampling_doors.h"
#include "qeljx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "argument_faults.h"
#include "random.h"

using namespace qel::test;

namespace {

using Row = std::vector<uint8_t>;

// Only whole pairs count when rows go down; beside a row that goes up, its first and last sample are repeated. Halves
// and quarters are rounded in turns.
TEST(Sampling, RowsEqualTheirFormulas)
{
    Random random(1);
    for (int width = 1; width <= 90; ++width) {
        const size_t n = size_t(width);
        Row near(n), far(n), down(n / 2 + 1, 77), tallDown(down), up(2 * n), tallUp(up);
        random.fill(near.data(), n), random.fill(far.data(), n);
        EXPECT_EQ(qeliSampleDownRowH2V1_Box_JPEG_8u_C1(near.data(), width, down.data()), qelStsNoErr);
        EXPECT_EQ(qeliSampleDownRowH2V2_Box_JPEG_8u_C1(near.data(), far.data(), width, tallDown.data()), qelStsNoErr);
        EXPECT_EQ(qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(near.data(), width, up.data()), qelStsNoErr);
        EXPECT_EQ(qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(near.data(), far.data(), width, tallUp.data()), qelStsNoErr);
        for (int i = 0; i < 2 * width; ++i) {
            int own = i / 2, beside = std::clamp(i % 2 ? own + 1 : own - 1, 0, width - 1);
            ASSERT_EQ(up[i], (3 * near[own] + near[beside] + 1 + i % 2) >> 2) << width << ' ' << i;
            int sum = 3 * near[own] + far[own], sumBeside = 3 * near[beside] + far[beside];
            ASSERT_EQ(tallUp[i], (3 * sum + sumBeside + 8 - i % 2) >> 4) << width << ' ' << i;
        }
        for (int i = 0; i < width / 2; ++i) {
            int pair = near[2 * i] + near[2 * i + 1], pairBelow = far[2 * i] + far[2 * i + 1];
            ASSERT_EQ(down[i], (pair + i % 2) >> 1) << width << ' ' << i;
            ASSERT_EQ(tallDown[i], (pair + pairBelow + 1 + i % 2) >> 2) << width << ' ' << i;
        }
        ASSERT_TRUE(down.back() == 77 && tallDown.back() == 77);
    }
}

// The neighbours beside a row are read when planes go up, and the rows above and below, the last of which is repeated.
// Rows that go down are rounded up. Between rows nothing is written.
TEST(Sampling, PlanesEqualTheirFormulas)
{
    constexpr int kStep = 70, kRows = 7;
    Random random(2);
    Row src(kStep * kRows);
    random.fill(src.data(), src.size());
    auto at = [&](int r, int c) { return int(src[size_t(r * kStep + c + 1)]); };
    auto sumAt = [&](int r, int c) { return at(r, 2 * c) + at(r, 2 * c + 1); };
    auto check = [&](auto function, QelSize srcSize, QelSize size, auto formula) {
        Row dst(kStep * kRows, 77), expected = dst;
        for (int r = 0; r < size.height; ++r)
            for (int c = 0; c < size.width; ++c) expected[size_t(r * kStep + c)] = uint8_t(formula(r, c));
        EXPECT_EQ(function(&src[1], kStep, srcSize, dst.data(), kStep, size), qelStsNoErr);
        ASSERT_TRUE(dst == expected) << size.width << " x " << size.height;
    };
    for (int width = 1; width <= 65; ++width)
        for (int height = 1; height <= kRows; ++height) {
            const QelSize size = {width, height}, half = {(width + 1) / 2, (height + 1) / 2};
            check(qeliSampleUpH2V1_JPEG_8u_C1R, half, size, [&](int r, int c) {
                r = std::min(r, half.height - 1);
                return (3 * at(r, c / 2) + at(r, c / 2 + c % 2 * 2 - 1) + 1 + c % 2) >> 2;
            });
            check(qeliSampleUpH2V2_JPEG_8u_C1R, half, size, [&](int r, int c) {
                int far = std::clamp(r / 2 + r % 2 * 2 - 1, 0, half.height - 1);
                auto sum = [&](int column) { return 3 * at(r / 2, column) + at(far, column); };
                return (3 * sum(c / 2) + sum(c / 2 + c % 2 * 2 - 1) + 8 - c % 2) >> 4;
            });
            if (width > 32 || height > kRows / 2) continue;
            check(qeliSampleDownH2V1_JPEG_8u_C1R, {2 * width, height}, size,
                  [&](int r, int c) { return (sumAt(r, c) + 1) >> 1; });
            check(qeliSampleDownH2V2_JPEG_8u_C1R, {2 * width, 2 * height}, size,
                  [&](int r, int c) { return (sumAt(2 * r, c) + sumAt(2 * r + 1, c) + 3) >> 2; });
        }
}

TEST(Sampling, OrderOfFaults)
{
    uint8_t src[16] = {}, dst[16] = {9};
    for (auto function : {qeliSampleDownH2V1_JPEG_8u_C1R, qeliSampleDownH2V2_JPEG_8u_C1R, qeliSampleUpH2V1_JPEG_8u_C1R,
                          qeliSampleUpH2V2_JPEG_8u_C1R})
        expectFaults(function, {src, 1, {1, 1}, dst, 1, {1, 1}}, null<0>, step<1>, size<2>, null<3>, step<4>, size<5>);
    for (auto function : {qeliSampleDownRowH2V1_Box_JPEG_8u_C1, qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1})
        expectFaults(function, {src, 2, dst}, null<0>, null<2>, length<1>);
    for (auto function : {qeliSampleDownRowH2V2_Box_JPEG_8u_C1, qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1})
        expectFaults(function, {src, src, 2, dst}, null<0>, null<1>, null<3>, length<2>);
    EXPECT_EQ(dst[0], 9);
}

TEST(Sampling, InternalNamesGiveTheSame)
{
    Row src(1026), down(512), up(1024), otherUp(1024);
    Random(9).fill(src.data(), src.size());
    const uint8_t *row1 = src.data() + 1, *row2 = src.data() + 2;
    ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1_SSE2(row1, 1024, down.data());
    for (int i = 0; i < 512; ++i) EXPECT_EQ(down[i], (row1[2 * i] + row1[2 * i + 1] + i % 2) >> 1);
    EXPECT_EQ(qeliSampleUpH2V2_JPEG_8u_C1R(row1, 1, {512, 2}, up.data(), 1024, {1024, 1}), qelStsNoErr);
    ownqj_SampleUpH2V2_JPEG_8u_C1(row1, row1, otherUp.data(), 1024);
    EXPECT_EQ(up, otherUp);
    ownqj_SampleUpH2V1_JPEG_8u_C1(row2, otherUp.data(), 1024);
    EXPECT_EQ(qeliSampleUpH2V1_JPEG_8u_C1R(row2, 1, {512, 1}, up.data(), 1024, {1024, 1}), qelStsNoErr);
    EXPECT_EQ(up, otherUp);
}

}
