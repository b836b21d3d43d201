// SPDX-License-Identifier: Apache-2.0
// Quantization: tables, values, order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include "argument_faults.h"
#include "huffman_reference.h"

using namespace qel::test;

namespace {

TEST(QuantFwdRawTableInit, Scales)
{
    const struct {
        int quality;
        uint8_t in, out;
    } table[] = {
        {50, 16, 16},   {50, 255, 255},    {75, 16, 8},   {75, 11, 6},   {75, 1, 1},        {25, 16, 32},
        {25, 200, 255}, {1, 5, 250},       {1, 6, 255},   {100, 255, 1}, {100, 0, 1},       {49, 100, 102},
        {99, 99, 2},    {90, 0, 1},        {101, 255, 1}, {1000, 9, 1},  {INT_MAX, 200, 1}, {-1, 200, 1},
        {-50, 255, 1},  {INT_MIN, 255, 1}, {0, 1, 255},   {0, 255, 255}, {0, 0, 1},
    };
    for (auto& row : table) {
        uint8_t steps[64];
        memset(steps, row.in, sizeof steps);
        EXPECT_EQ(qeliQuantFwdRawTableInit_JPEG_8u(steps, row.quality), qelStsNoErr);
        for (uint8_t step : steps) EXPECT_EQ(step, row.out) << int(row.in) << " at quality " << row.quality;
    }
}

// Steps come in the order of the scan and go to their places. A step of 0 warns in the encoder only.
TEST(QuantTableInit, PlacesAndReciprocals)
{
    uint8_t raw[64];
    uint16_t enc[64], dec[64];
    for (int i = 0; i < 64; ++i) raw[i] = uint8_t(i < 48 ? i : 255 - 13 * (i - 48));
    EXPECT_EQ(qeliQuantFwdTableInit_JPEG_8u16u(raw, enc), qelStsDivByZero);
    EXPECT_EQ(qeliQuantInvTableInit_JPEG_8u16u(raw, dec), qelStsNoErr);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(dec[kScan[i]], raw[i]) << i;
        EXPECT_EQ(enc[kScan[i]], raw[i] == 0 ? 65535 : (2 * 32768 + raw[i]) / (2 * raw[i])) << i;
    }
    raw[0] = 1;
    EXPECT_EQ(qeliQuantFwdTableInit_JPEG_8u16u(raw, enc), qelStsNoErr);
}

TEST(QuantFwd8x8, Values)
{
    const struct {
        uint16_t entry;
        int16_t in, out;
    } table[] = {{2048, 8, 1},    {2048, 7, 0},      {2048, -8, 0},       {2048, -9, -1},        {2048, 24, 2},
                 {2048, -24, -1}, {2048, -25, -2},   {32768, 4095, 4095}, {32768, -4096, -4096}, {32768, 4096, -4096},
                 {129, 255, 1},   {65535, 100, 200}, {0, 4095, 0}};
    for (auto& row : table) {
        int16_t block[64];
        uint16_t entries[64];
        for (int i = 0; i < 64; ++i) block[i] = row.in, entries[i] = row.entry;
        EXPECT_EQ(qeliQuantFwd8x8_JPEG_16s_C1I(block, entries), qelStsNoErr);
        for (int16_t value : block) EXPECT_EQ(value, row.out) << row.in << " times " << row.entry;
    }
}

TEST(QuantInv8x8, WrapsWithoutSaturating)
{
    int16_t block[64] = {1000, -1000, -3, 32767, -32768};
    const uint16_t steps[64] = {100, 100, 255, 2, 255};
    EXPECT_EQ(qeliQuantInv8x8_JPEG_16s_C1I(block, steps), qelStsNoErr);
    const int16_t expected[] = {-31072, 31072, -765, -2, -32768, 0};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(block[i], expected[i]) << i;
}

TEST(Quantization, NullPointers)
{
    uint8_t raw[64] = {5};
    uint16_t table[64] = {6};
    int16_t block[64] = {7};
    expectFaults(qeliQuantFwdRawTableInit_JPEG_8u, {raw, 50}, null<0>);
    for (auto init : {qeliQuantFwdTableInit_JPEG_8u16u, qeliQuantInvTableInit_JPEG_8u16u})
        expectFaults(init, {raw, table}, null<0>, null<1>);
    for (auto quantize : {qeliQuantFwd8x8_JPEG_16s_C1I, qeliQuantInv8x8_JPEG_16s_C1I})
        expectFaults(quantize, {block, table}, null<0>, null<1>);
    EXPECT_EQ(table[0], 6);
    EXPECT_EQ(block[0], 7);
}

}
