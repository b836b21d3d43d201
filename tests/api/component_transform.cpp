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
    } table[4];
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

// Three rows at an odd address, with bytes between them that must keep their value; sampleAt(i) is what rows hold.
constexpr int kWidth = 37, kHeight = 3, kGap = 3;
using Bytes = std::vector<uint8_t>;
template <class SampleAt> Bytes rowsOf(int samples, SampleAt sampleAt)
{
    constexpr size_t kBytes = sizeof sampleAt(0);
    Bytes bytes(1 + kHeight * (size_t(samples) * kBytes + kGap), 0xEE);
    for (size_t i = 0; i < size_t(samples * kHeight); ++i) {
        auto sample = sampleAt(int(i) % samples);
        memcpy(&bytes[1 + i * kBytes + i / size_t(samples) * kGap], &sample, kBytes);
    }
    return bytes;
}

template <class T> void layouts(const Transform<T>& transform)
{
    constexpr QelSize kSize = {kWidth, kHeight};
    constexpr int kPlaneStep = kWidth * int(sizeof(T)) + kGap, kPixelStep = 3 * kWidth * int(sizeof(T)) + kGap;
    using Planes = std::array<Bytes, 3>;
    auto pixelsOf = [&](auto what) {
        return rowsOf(3 * kWidth, [&](int i) { return (transform.table[i / 3 % 4].*what)[size_t(i) % 3]; });
    };
    auto planesOf = [&](auto what) {
        auto plane = [&](size_t k) { return rowsOf(kWidth, [&](int i) { return (transform.table[i % 4].*what)[k]; }); };
        return Planes{plane(0), plane(1), plane(2)};
    };
    auto startsOf = [](Planes& p) { return std::array{(T*)&p[0][1], (T*)&p[1][1], (T*)&p[2][1]}; };
    using Row = std::remove_cvref_t<decltype(transform.table[0])>;
    auto in = planesOf(&Row::in), planes = in, made = planesOf(&Row::inverse), inverse = made;
    auto pixels = pixelsOf(&Row::in);
    EXPECT_EQ(transform.forwardInPlace(startsOf(planes).data(), kPlaneStep, kSize), qelStsNoErr);
    EXPECT_TRUE(planes == planesOf(&Row::forward));
    EXPECT_EQ(transform.toPlanes((T*)&pixels[1], kPixelStep, startsOf(made).data(), kPlaneStep, kSize), qelStsNoErr);
    EXPECT_TRUE(made == planesOf(&Row::forward));
    EXPECT_EQ(transform.toPixels(startsOf(in).data(), kPlaneStep, (T*)&pixels[1], kPixelStep, kSize), qelStsNoErr);
    EXPECT_TRUE(pixels == pixelsOf(&Row::inverse));
    EXPECT_EQ(transform.inverseInPlace(startsOf(in).data(), kPlaneStep, kSize), qelStsNoErr);
    EXPECT_TRUE(in == inverse);
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
