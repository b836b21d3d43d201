// SPDX-License-Identifier: Apache-2.0
// The 8x8 DCT: values, accuracy, order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>
#include <string.h>

#include <algorithm>

#include "argument_faults.h"
#include "dct_reference.h"
#include "random.h"

using namespace qel::test;

namespace {

struct Tables {
    uint16_t enc[64], dec[64];
    explicit Tables(int step)
    {
        uint8_t raw[64];
        memset(raw, step, sizeof raw);
        qeliQuantFwdTableInit_JPEG_8u16u(raw, enc);
        qeliQuantInvTableInit_JPEG_8u16u(raw, dec);
    }
};

struct Accuracy {
    double largest = 0, squares = 0, sum = 0;
    int count = 0;
    void add(const int16_t* values, const double* exact)
    {
        for (int i = 0; i < 64; ++i, ++count) {
            double error = values[i] - exact[i];
            largest = std::max(largest, std::abs(error));
            squares += error * error, sum += error;
        }
    }
    // Rounding to integers alone gives errors up to 0.5, and 0.2887 in the root mean square.
    void expectWithin(double bound) const
    {
        EXPECT_LT(largest, bound);
        EXPECT_LT(sqrt(squares / count), 0.295);
        EXPECT_LT(std::abs(sum / count), 0.006);
    }
};

// All functions on noise, whose quantized coefficients go back.
TEST(Dct, IsAccurate)
{
    const ExactDct exact;
    Random random(9);
    for (int step : {1, 3, 16}) {
        const Tables tables(step);
        Accuracy forward, inverse;
        for (int round = 0; round < 7000; ++round) {
            uint8_t samples[64], clipped[64], back8[64];
            int16_t shifted[64], block[64], same[64], scaled[64], back[64];
            double expected[64];
            for (int i = 0; i < 64; ++i) samples[i] = uint8_t(random.between(0, 255));
            for (int i = 0; i < 64; ++i) same[i] = shifted[i] = int16_t(samples[i] - 128);
            qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(samples, 8, block, tables.enc);
            qeliDCTQuantFwd8x8_JPEG_16s_C1I(same, tables.enc);
            ASSERT_EQ(memcmp(same, block, sizeof block), 0);
            qeliDCTQuantFwd8x8_JPEG_16s_C1(shifted, same, tables.enc);
            ASSERT_EQ(memcmp(same, block, sizeof block), 0);
            exact.forward(shifted, expected);
            if (step == 1) forward.add(block, expected);

            for (int i = 0; i < 64; ++i) scaled[i] = int16_t(block[i] * step);
            exact.inverse(scaled, expected);
            qeliDCTQuantInv8x8_JPEG_16s_C1(block, back, tables.dec);
            inverse.add(back, expected);
            qeliDCTQuantInv8x8_JPEG_16s_C1I(same, tables.dec);
            ASSERT_EQ(memcmp(same, back, sizeof back), 0);
            qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(block, back8, 8, tables.dec);
            qeliDCT8x8InvLSClip_16s8u_C1R(scaled, clipped, 8, 100, 16, 235);
            for (int i = 0; i < 64; ++i) {
                ASSERT_EQ(back8[i], std::clamp(back[i] + 128, 0, 255));
                ASSERT_EQ(clipped[i], std::clamp(back[i] + 100, 16, 235));
            }
        }
        if (step == 1) forward.expectWithin(0.8);
        inverse.expectWithin(0.62);
    }
}

TEST(Dct, OrderOfFaults)
{
    const Tables ones(1);
    uint8_t samples[64] = {9};
    int16_t block[64] = {7}, other[64] = {8};
    expectFaults(qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R, {samples, 8, block, ones.enc}, null<0>, null<2>, step<1>,
                 null<3>);
    expectFaults(qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R, {block, samples, 8, ones.dec}, null<0>, null<1>, step<2>,
                 null<3>);
    expectFaults(qeliDCT8x8InvLSClip_16s8u_C1R, {block, samples, 8, 128, 0, 255}, null<0>, null<1>, step<2>);
    for (auto function : {qeliDCTQuantFwd8x8_JPEG_16s_C1, qeliDCTQuantInv8x8_JPEG_16s_C1})
        expectFaults(function, {other, block, ones.enc}, null<0>, null<1>, null<2>);
    for (auto function : {qeliDCTQuantFwd8x8_JPEG_16s_C1I, qeliDCTQuantInv8x8_JPEG_16s_C1I})
        expectFaults(function, {block, ones.enc}, null<0>, null<1>);
    EXPECT_EQ(samples[0], 9);
    EXPECT_EQ(block[0], 7);
}

}
