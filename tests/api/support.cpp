// SPDX-License-Identifier: Apache-2.0
// Support primitives: values, order of faults, regions.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "argument_faults.h"
#include "core/support_doors.h"
#include "huffman_reference.h"
#include "jpeg/block/zigzag.h"
#include "regions.h"

using namespace qel::test;

namespace {

// To the nearest, ties to even. Zero divisors warn: they give the largest value, or 0 of 0, and the rest is computed.
TEST(DivCRev, EqualsItsFormula)
{
    std::vector<uint16_t> divisors(65536), quotients(divisors.size());
    std::iota(divisors.begin(), divisors.end(), uint16_t(0));
    for (uint16_t value : {0, 1, 3, 5, 7, 32767, 32768, 40000, 65535}) {
        auto inPlace = divisors;
        EXPECT_EQ(qelsDivCRev_16u(divisors.data(), value, quotients.data(), 65536), qelStsDivByZero);
        EXPECT_EQ(qelsDivCRev_16u_I(value, inPlace.data(), 65536), qelStsDivByZero);
        EXPECT_EQ(quotients, inPlace);
        EXPECT_EQ(quotients[0], value == 0 ? 0 : 65535);
        for (size_t i = 1; i < 65536; ++i) ASSERT_EQ(quotients[i], std::nearbyint(double(value) / double(i))) << i;
        EXPECT_EQ(qelsDivCRev_16u(&divisors[1], value, quotients.data(), 9), qelStsNoErr);
    }
}

TEST(Zigzag, TablesAndFunctionAreOfTheScan)
{
    int16_t inZigzag[64], natural[64];
    std::iota(inZigzag, inZigzag + 64, int16_t(0));
    ASSERT_EQ(qeliZigzagInv8x8_16s_C1(inZigzag, natural), qelStsNoErr);
    for (int i = 0; i < 72; ++i) {
        EXPECT_EQ(own_qj_izigzag_index[i], i < 64 ? kScan[i] : 63); // further ones are guards
        if (i >= 64) continue;
        EXPECT_EQ(zigzag_index_Inv[i], kScan[i]);
        EXPECT_EQ(zigzag_index_Fwd[kScan[i]], i);
        EXPECT_EQ(natural[kScan[i]], i);
    }
}

TEST(Support, Regions)
{
    expectRegions<uint8_t, uint16_t>(qeliConvert_8u16u_C1R, [](uint8_t v) { return uint16_t(v); });
    expectRegions<int16_t, int16_t>(qeliCopy_16s_C1R, [](int16_t v) { return v; });
    expectRegions<float, float>(qeliCopy_32f_C1R, [](float v) { return v; });
    auto mask = [](auto* src, int srcStep, auto* dst, int dstStep, QelSize roi) {
        return qeliAndC_32s_C1R(src, srcStep, int32_t(0x80FF0F01), dst, dstStep, roi);
    };
    expectRegions<int32_t, int32_t>(mask, [](int32_t v) { return v & int32_t(0x80FF0F01); });
    auto inPlace = [](const int32_t* src, int srcStep, int32_t* dst, int dstStep, QelSize roi) {
        QelStatus copied = qeliCopy_32f_C1R((const float*)src, srcStep, (float*)dst, dstStep, roi);
        return copied != qelStsNoErr ? copied : qeliAndC_32s_C1IR(-2, dst, dstStep, roi);
    };
    expectRegions<int32_t, int32_t>(inPlace, [](int32_t v) { return v & -2; });
}

TEST(Support, OrderOfFaults)
{
    int16_t s16[4] = {};
    uint16_t u16[4] = {};
    float f32[4] = {};
    int32_t s32[4] = {};
    uint8_t u8[4] = {};
    // Copies look at sizes before steps.
    expectFaults(qeliCopy_16s_C1R, {s16, 2, s16, 2, {1, 1}}, null<0>, null<2>, size<4>, step<1>, step<3>);
    expectFaults(qeliCopy_32f_C1R, {f32, 4, f32, 4, {1, 1}}, null<0>, null<2>, size<4>, step<1>, step<3>);
    expectFaults(qeliConvert_8u16u_C1R, {u8, 1, u16, 2, {1, 1}}, null<0>, null<2>, size<4>, step<1>, step<3>);
    expectFaults(qeliAndC_32s_C1R, {s32, 4, 1, s32, 4, {1, 1}}, null<0>, null<3>, step<1>, step<4>, size<5>);
    expectFaults(qeliAndC_32s_C1IR, {1, s32, 4, {1, 1}}, null<1>, step<2>, size<3>);
    expectFaults(qelsZero_8u, {u8, 1}, null<0>, length<1>);
    expectFaults(qelsZero_16s, {s16, 1}, null<0>, length<1>);
    expectFaults(qelsCopy_8u, {u8, u8, 1}, null<0>, null<1>, length<2>);
    expectFaults(qelsDivCRev_16u, {u16, 1, u16, 1}, null<0>, null<2>, length<3>);
    expectFaults(qelsDivCRev_16u_I, {1, u16, 1}, null<1>, length<2>);
    expectFaults(qeliZigzagInv8x8_16s_C1, {s16, s16}, null<0>, null<1>);
}

TEST(Support, FillsAndCopies)
{
    int16_t values[] = {1, 2, 3, 4};
    EXPECT_EQ(qelsZero_16s(values + 1, 2), qelStsNoErr);
    EXPECT_EQ(values[0], 1);
    EXPECT_EQ(values[1] | values[2], 0);
    EXPECT_EQ(values[3], 4);
    uint8_t from[] = {5, 6, 7}, to[] = {0, 0, 0};
    EXPECT_EQ(qelsCopy_8u(from, to, 2), qelStsNoErr);
    EXPECT_TRUE(to[0] == 5 && to[1] == 6 && to[2] == 0);
    EXPECT_EQ(qelsZero_8u(from, 2), qelStsNoErr);
    EXPECT_TRUE(from[0] == 0 && from[1] == 0 && from[2] == 7);
    int32_t words[] = {1, 1, 1};
    ownsSet_32s(-9, words, 2);
    EXPECT_TRUE(words[0] == -9 && words[1] == -9 && words[2] == 1);
}

}
