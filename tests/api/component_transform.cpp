// Component transforms: every layout against the formulas of one pixel, order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <string.h>

#include <algorithm>
#include <array>
#include <vector>

#include "argument_faults.h"
#include "random.h"

using namespace qel::test;

namespace {

template <class T> using Pixel = std::array<T, 3>;

// The four functions of a transform, and what they make of one pixel.
template <class T> struct Transform {
    QelStatus (*forwardInPlace)(T* const*, int, QelSize);
    QelStatus (*inverseInPlace)(T* const*, int, QelSize);
    QelStatus (*toPlanes)(const T*, int, T* const*, int, QelSize);
    QelStatus (*toPixels)(const T* const*, int, T*, int, QelSize);
    Pixel<T> (*forward)(Pixel<T>);
    Pixel<T> (*inverse)(Pixel<T>);
};

Pixel<int32_t> reversibleForward(Pixel<int32_t> p)
{
    int64_t r = p[0], g = p[1], b = p[2];
    return {int32_t(r + 2 * g + b) >> 2, int32_t(b - g), int32_t(r - g)};
}
Pixel<int32_t> reversibleInverse(Pixel<int32_t> p)
{
    int64_t g = int32_t(p[0] - int64_t(int32_t(int64_t(p[1]) + p[2]) >> 2));
    return {int32_t(p[2] + g), int32_t(g), int32_t(p[1] + g)};
}

// Kept apart by stores, so that no product is fused with a sum.
float weighed(const float* weights, Pixel<float> p)
{
    volatile float first = weights[0] * p[0], second = weights[1] * p[1], third = weights[2] * p[2];
    volatile float sum = first + second;
    return sum + third;
}
constexpr float kForward[3][3] = {{0.299f, 0.587f, 0.114f}, {-0.16875f, -0.33126f, 0.5f}, {0.5f, -0.41869f, -0.08131f}};
// Of Y1, Y2, Y0.
constexpr float kInverse[3][3] = {{0, 1.402f, 1}, {-0.34413f, -0.71414f, 1}, {1.772f, 0, 1}};

Pixel<float> irreversibleForward(Pixel<float> p)
{
    return {weighed(kForward[0], p), weighed(kForward[1], p), weighed(kForward[2], p)};
}
Pixel<float> irreversibleInverse(Pixel<float> p)
{
    Pixel<float> inOrder = {p[1], p[2], p[0]};
    return {weighed(kInverse[0], inOrder), weighed(kInverse[1], inOrder), weighed(kInverse[2], inOrder)};
}

const Transform<int32_t> kReversible = {qeliRCTFwd_JPEG2K_32s_P3IR,  qeliRCTInv_JPEG2K_32s_P3IR,
                                        qeliRCTFwd_JPEG2K_32s_C3P3R, qeliRCTInv_JPEG2K_32s_P3C3R,
                                        reversibleForward,           reversibleInverse};
const Transform<float> kIrreversible = {qeliICTFwd_JPEG2K_32f_P3IR,  qeliICTInv_JPEG2K_32f_P3IR,
                                        qeliICTFwd_JPEG2K_32f_C3P3R, qeliICTInv_JPEG2K_32f_P3C3R,
                                        irreversibleForward,         irreversibleInverse};

void fill(Random& random, std::vector<int32_t>& samples) { random.fill(samples.data(), samples.size()); }
void fill(Random& random, std::vector<float>& samples)
{
    for (float& sample : samples) sample = float(random.between(-(1 << 24), 1 << 24)) / 4096;
}

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

// All four functions on a region of random samples, against one pixel at a time.
template <class T> void layouts(const Transform<T>& transform)
{
    Random random(1);
    for (int width : {1, 2, 3, 4, 5, 7, 8, 9, 37, 700}) {
        const QelSize roi = {width, 3};
        const size_t count = size_t(width) * 3;
        Region<T> pixels(3 * width), plane[3] = {Region<T>(width), Region<T>(width), Region<T>(width)};
        T* planes[3] = {plane[0].data(), plane[1].data(), plane[2].data()};
        std::vector<T> values(3 * count);
        auto expectPlanes = [&](Pixel<T> (*formula)(Pixel<T>)) {
            std::vector<T> expected[3];
            for (size_t i = 0; i < count; ++i) {
                Pixel<T> out = formula({values[3 * i], values[3 * i + 1], values[3 * i + 2]});
                std::copy(out.begin(), out.end(), values.begin() + ptrdiff_t(3 * i));
                for (size_t k = 0; k < 3; ++k) expected[k].push_back(out[k]);
            }
            for (size_t k = 0; k < 3; ++k) plane[k].expect(expected[k]);
        };
        fill(random, values);
        pixels.put(values);
        ASSERT_EQ(transform.toPlanes(pixels.data(), pixels.step, planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(transform.forward);
        ASSERT_EQ(transform.forwardInPlace(planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(transform.forward);
        ASSERT_EQ(transform.toPixels(planes, plane[0].step, pixels.data(), pixels.step, roi), qelStsNoErr);
        ASSERT_EQ(transform.inverseInPlace(planes, plane[0].step, roi), qelStsNoErr);
        expectPlanes(transform.inverse);
        pixels.expect(values);
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
