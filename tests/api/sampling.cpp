// SPDX-License-Identifier: Apache-2.0
// Chroma sampling: values, edges, order of faults.
#include "jpeg/colour/sampling_doors.h"
#include "qeljx.h"

#include <gtest/gtest.h>

#include <vector>

#include "argument_faults.h"
#include "guarded.h"
#include "random.h"

using namespace qel::test;

namespace {

using Row = std::vector<uint8_t>;

Row downRowH2V1(const Row& src)
{
    Row dst(src.size() / 2);
    EXPECT_EQ(qeliSampleDownRowH2V1_Box_JPEG_8u_C1(src.data(), (int)src.size(), dst.data()), qelStsNoErr);
    return dst;
}
Row downRowH2V2(const Row& src1, const Row& src2)
{
    Row dst(src1.size() / 2);
    auto status = qeliSampleDownRowH2V2_Box_JPEG_8u_C1(src1.data(), src2.data(), (int)src1.size(), dst.data());
    EXPECT_EQ(status, qelStsNoErr);
    return dst;
}
Row upRowH2V1(const Row& src)
{
    Row dst(2 * src.size());
    EXPECT_EQ(qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(src.data(), (int)src.size(), dst.data()), qelStsNoErr);
    return dst;
}
Row upRowH2V2(const Row& near, const Row& far)
{
    Row dst(2 * near.size());
    auto status = qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(near.data(), far.data(), (int)near.size(), dst.data());
    EXPECT_EQ(status, qelStsNoErr);
    return dst;
}

TEST(SampleDown, RowsAndPlanesRoundDifferently)
{
    Row row = {0, 1, 0, 1}, zeros(4), plane(2);
    EXPECT_EQ(downRowH2V1(row), (Row{0, 1}));
    EXPECT_EQ(qeliSampleDownH2V1_JPEG_8u_C1R(row.data(), 4, {4, 1}, plane.data(), 2, {2, 1}), qelStsNoErr);
    EXPECT_EQ(plane, (Row{1, 1}));

    // One of four: only the plane function rounds up. Two of four: every second sample of the row does. Three: all do.
    const Row sources[] = {{0, 0, 0, 0, 0, 1, 0, 1}, {0, 1, 0, 1, 0, 1, 0, 1}, {0, 1, 0, 1, 1, 1, 1, 1}};
    const Row rows[] = {{0, 0}, {0, 1}, {1, 1}};
    for (int i = 0; i < 3; ++i) {
        Row upper(sources[i].begin(), sources[i].begin() + 4), lower(sources[i].begin() + 4, sources[i].end());
        EXPECT_EQ(downRowH2V2(upper, lower), rows[i]) << i;
        EXPECT_EQ(qeliSampleDownH2V2_JPEG_8u_C1R(sources[i].data(), 4, {4, 2}, plane.data(), 2, {2, 1}), qelStsNoErr);
        EXPECT_EQ(plane, (Row{1, 1})) << i;
    }
}

// Only whole pairs count: a width of 1 writes nothing.
TEST(SampleDown, RowsOfOddWidth)
{
    EXPECT_EQ(downRowH2V1({8, 10, 200}), (Row{9}));
    EXPECT_EQ(downRowH2V2({8, 10, 200}, {8, 10, 200}), (Row{9}));
    uint8_t untouched = 77;
    EXPECT_EQ(qeliSampleDownRowH2V1_Box_JPEG_8u_C1(&untouched, 1, &untouched), qelStsNoErr);
    EXPECT_EQ(qeliSampleDownRowH2V2_Box_JPEG_8u_C1(&untouched, &untouched, 1, &untouched), qelStsNoErr);
    EXPECT_EQ(untouched, 77);
}

TEST(SampleUp, Rows)
{
    EXPECT_EQ(upRowH2V1({10, 20}), (Row{10, 13, 17, 20}));
    EXPECT_EQ(upRowH2V1({0, 1, 3}), (Row{0, 0, 1, 2, 2, 3}));
    EXPECT_EQ(upRowH2V1({77}), (Row{77, 77}));
    // Column sums 1, 5: (4 + 8) >> 4, (8 + 7) >> 4, (16 + 8) >> 4, (20 + 7) >> 4.
    EXPECT_EQ(upRowH2V2({0, 1}, {1, 2}), (Row{0, 0, 1, 1}));
    // A column sum of 2 is halfway: up on the left, down on the right.
    EXPECT_EQ(upRowH2V2({0}, {2}), (Row{1, 0}));
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

// Odd and even widths and heights; between rows nothing is written.
TEST(SampleDown, Planes)
{
    const Row src = {0, 1, 10, 12, 7, 9, /**/ 2, 2, 11, 11, 7, 8, /**/ 5, 5, 5, 6, 9, 9, /**/ 5, 6, 6, 6, 9, 0};
    Row dst(16, 77);
    EXPECT_EQ(qeliSampleDownH2V1_JPEG_8u_C1R(src.data(), 6, {6, 4}, dst.data(), 4, {3, 4}), qelStsNoErr);
    EXPECT_EQ(dst, (Row{1, 11, 8, 77, 2, 11, 8, 77, 5, 6, 9, 77, 6, 6, 5, 77}));
    dst.assign(8, 77);
    EXPECT_EQ(qeliSampleDownH2V2_JPEG_8u_C1R(src.data(), 6, {6, 4}, dst.data(), 4, {3, 2}), qelStsNoErr);
    EXPECT_EQ(dst, (Row{2, 11, 8, 77, 6, 6, 7, 77}));
}

// The neighbours beside a row are read: the source is the middle of rows of four.
TEST(SampleUp, Planes)
{
    const Row src = {0, 8, 20, 100, /**/ 40, 0, 3, 7};
    Row dst(12, 77);
    EXPECT_EQ(qeliSampleUpH2V1_JPEG_8u_C1R(&src[1], 4, {2, 2}, dst.data(), 4, {3, 3}), qelStsNoErr);
    EXPECT_EQ(dst, (Row{6, 11, 17, 77, 10, 1, 2, 77, 10, 1, 2, 77}));
    dst.assign(16, 77);
    EXPECT_EQ(qeliSampleUpH2V2_JPEG_8u_C1R(&src[1], 4, {2, 2}, dst.data(), 4, {4, 4}), qelStsNoErr);
    EXPECT_EQ(dst, (Row{6, 11, 17, 40, /**/ 7, 8, 13, 31, /**/ 9, 3, 6, 13, /**/ 10, 1, 2, 4}));
}

// The first sample read is the one before the first row, the last one that after the last row, however many rows are
// asked for: those below the source's repeat its last one.
TEST(SampleUp, PlanesReadNothingBeyondTheNeighbours)
{
    constexpr int kWidth = 67, kHeight = 3, kRows = 2 * kHeight + 2, kStep = kWidth + 2;
    for (auto fault : {Fault::before, Fault::after}) {
        Guarded<uint8_t> src(kStep * kHeight, fault), dst(2 * kWidth * kRows, fault);
        Random(8).fill(src.data(), src.size());
        for (auto up : {qeliSampleUpH2V1_JPEG_8u_C1R, qeliSampleUpH2V2_JPEG_8u_C1R})
            for (int dstWidth : {2 * kWidth - 1, 2 * kWidth}) {
                EXPECT_EQ(up(src.data() + 1, kStep, {kWidth, kHeight}, dst.data(), 2 * kWidth, {dstWidth, kRows}),
                          qelStsNoErr);
                const uint8_t* last = dst.data() + 2 * kWidth * (kRows - 1);
                EXPECT_EQ(memcmp(last, last - 2 * kWidth, size_t(dstWidth)), 0);
            }
        EXPECT_TRUE(dst.intact());
    }
}

TEST(Sampling, InternalNamesGiveTheSame)
{
    Row src(1026), down(512), up(1024), otherUp(1024);
    Random(9).fill(src.data(), src.size());
    const uint8_t *row1 = src.data() + 1, *row2 = src.data() + 2;
    ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1_SSE2(row1, 1024, down.data());
    EXPECT_EQ(down, downRowH2V1(Row(row1, row1 + 1024)));
    EXPECT_EQ(qeliSampleUpH2V2_JPEG_8u_C1R(row1, 1, {512, 2}, up.data(), 1024, {1024, 1}), qelStsNoErr);
    ownqj_SampleUpH2V2_JPEG_8u_C1(row1, row1, otherUp.data(), 1024);
    EXPECT_EQ(up, otherUp);
    ownqj_SampleUpH2V1_JPEG_8u_C1(row2, otherUp.data(), 1024);
    EXPECT_EQ(qeliSampleUpH2V1_JPEG_8u_C1R(row2, 1, {512, 1}, up.data(), 1024, {1024, 1}), qelStsNoErr);
    EXPECT_EQ(up, otherUp);
}

}
