// SPDX-License-Identifier: Apache-2.0
// Component transforms: values in every layout, order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <string.h>

#include <array>
#include <vector>

#include "argument_faults.h"

using namespace qel::test;

namespace {

template <class T> using Pixel = std::array<T, 3>;

// The four functions of a transform, and pixels with what it and its inverse make of them.
template <class T> struct Transform {
    QelStatus (*forwardInPlace)(T* const*, int, QelSize);
    QelStatus (*inverseInPlace)(T* const*, int, QelSize);
    QelStatus (*toPlanes)(const T*, int, T* const*, int, QelSize);
    QelStatus (*toPixels)(const T* const*, int, T*, int, QelSize);
    struct {
        Pixel<T> in, forward, inverse;
    } pixels[4];
};

// Sums wrap.
const Transform<int32_t> kReversible = {
    qeliRCTFwd_JPEG2K_32s_P3IR,
    qeliRCTInv_JPEG2K_32s_P3IR,
    qeliRCTFwd_JPEG2K_32s_C3P3R,
    qeliRCTInv_JPEG2K_32s_P3C3R,
    {{{100, 50, 31}, {57, -19, 50}, {111, 80, 130}},
     {{-7, 3, 2}, {0, -1, -10}, {-6, -8, -5}},
     {{INT32_MAX, INT32_MIN, 5}, {-536870911, -2147483643, -1}, {-1610612733, -1610612738, 536870910}},
     {{INT32_MIN, INT32_MAX, INT32_MAX}, {-1, 0, 1}, {0, -INT32_MAX, 0}}}};
// The matrices column by column; and a pixel whose sums have other last bits in any other order.
const Transform<float> kIrreversible = {qeliICTFwd_JPEG2K_32f_P3IR,
                                        qeliICTInv_JPEG2K_32f_P3IR,
                                        qeliICTFwd_JPEG2K_32f_C3P3R,
                                        qeliICTInv_JPEG2K_32f_P3C3R,
                                        {{{1, 0, 0}, {0.299f, -0.16875f, 0.5f}, {1, 1, 1}},
                                         {{0, 1, 0}, {0.587f, -0.33126f, -0.41869f}, {0, -0.34413f, 1.772f}},
                                         {{0, 0, 1}, {0.114f, 0.5f, -0.08131f}, {1.402f, -0.71414f, 0}},
                                         {{3312.340576171875f, 3193.673095703125f, 1749.07080078125f},
                                          {3064.46997f, -742.358154f, 176.794418f},
                                          {5764.53809f, 964.220459f, 8971.5293f}}}};

// Three rows of samples at an odd address, with bytes between them that must keep their value.
template <class T> struct Region {
    int row, step;
    std::vector<uint8_t> bytes;

    explicit Region(int samples) : row(samples * int(sizeof(T))), step(row + 3), bytes(size_t(1 + 3 * step), 0xEE) {}
    T* data() { return (T*)(bytes.data() + 1); }
    void put(const std::vector<T>& samples)
    {
        for (int r = 0; r < 3; ++r) memcpy(&bytes[size_t(1 + r * step)], (uint8_t*)samples.data() + r * row, row);
    }
    void expect(const std::vector<T>& samples) const
    {
        Region expected(row / int(sizeof(T)));
        expected.put(samples);
        ASSERT_TRUE(bytes == expected.bytes) << row;
    }
};

template <class T> void layouts(const Transform<T>& transform)
{
    for (int width : {1, 37}) {
        const QelSize roi = {width, 3};
        Region<T> pixels(3 * width), plane[3] = {Region<T>(width), Region<T>(width), Region<T>(width)};
        T* planes[3] = {plane[0].data(), plane[1].data(), plane[2].data()};
        std::vector<T> in[4], forward[4], inverse[4]; // by channel; the last have all three in turns
        for (int i = 0; i < 3 * width; ++i)
            for (size_t k = 0; k < 3; ++k) {
                auto& pixel = transform.pixels[i % 4];
                for (size_t to : {k, size_t(3)}) {
                    in[to].push_back(pixel.in[k]);
                    forward[to].push_back(pixel.forward[k]);
                    inverse[to].push_back(pixel.inverse[k]);
                }
            }
        auto putPlanes = [&] {
            for (size_t k = 0; k < 3; ++k) plane[k].put(in[k]);
        };
        auto expectPlanes = [&](auto& expected) {
            for (size_t k = 0; k < 3; ++k) plane[k].expect(expected[k]);
        };
        pixels.put(in[3]);
        ASSERT_EQ(transform.toPlanes(pixels.data(), pixels.step, planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(forward);
        putPlanes();
        ASSERT_EQ(transform.forwardInPlace(planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(forward);
        putPlanes();
        ASSERT_EQ(transform.toPixels(planes, plane[0].step, pixels.data(), pixels.step, roi), qelStsNoErr);
        pixels.expect(inverse[3]);
        ASSERT_EQ(transform.inverseInPlace(planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(inverse);
    }
}

TEST(ReversibleTransform, Layouts) { layouts(kReversible); }
TEST(IrreversibleTransform, Layouts) { layouts(kIrreversible); }

template <class T> void orderOfFaults(const Transform<T>& transform)
{
    T samples[3] = {5, 6, 7}, pixel[3] = {1, 2, 3};
    T* const planes[3] = {samples, samples + 1, samples + 2};
    for (auto inPlace : {transform.forwardInPlace, transform.inverseInPlace})
        expectFaults(inPlace, {planes, 4, {1, 1}}, null<0>, nullAmong<0>(planes), step<1>, size<2>);
    expectFaults(transform.toPlanes, {pixel, 12, planes, 4, {1, 1}}, null<0>, null<2>, nullAmong<2>(planes), step<1>,
                 step<3>, size<4>);
    expectFaults(transform.toPixels, {planes, 4, pixel, 12, {1, 1}}, null<2>, null<0>, nullAmong<0>(planes), step<1>,
                 step<3>, size<4>);
    EXPECT_TRUE(samples[0] == 5 && samples[1] == 6 && samples[2] == 7 && pixel[0] == 1 && pixel[2] == 3);
}

TEST(ReversibleTransform, OrderOfFaults) { orderOfFaults(kReversible); }
TEST(IrreversibleTransform, OrderOfFaults) { orderOfFaults(kIrreversible); }

}
