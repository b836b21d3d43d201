// SPDX-License-Identifier: Apache-2.0
// Colour conversion kernels: every build equals the scalar one, and every door leads to its kernel.
#include "jpeg/colour/colour_doors.h"

#include <array>
#include <utility>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

template <class... Arguments> using Row = void(Arguments...);

// A kernel of rows that have so many bytes a pixel, and its doors for whole rows and for multiples of four pixels.
template <class... Arguments> void check(Streamable<Row<Arguments...>> ColourKernels::*entry, Row<Arguments...>* whole,
                                         Row<Arguments...>* multipleOfFour,
                                         const std::array<size_t, sizeof...(Arguments) - 1>& bytes)
{
    auto roomsOf = [&](size_t width) {
        std::vector<Room> rooms;
        for (size_t n : bytes) rooms.push_back(room<uint8_t>(n * width));
        return rooms;
    };
    auto run = [&](auto kernel, Rooms& rooms, int width) {
        [&]<size_t... k>(std::index_sequence<k...>) { kernel(rooms[k]..., width); }
        (std::make_index_sequence<sizeof...(Arguments) - 1>());
    };
    everyRowEqualsScalar<ColourKernels>(roomsOf,
                                        [&](auto& table, Rooms& r, int width) { run(table.*entry, r, width); });
    everyRowEqualsScalar<ColourKernels>(
        roomsOf, [&](auto& table, Rooms& r, int width) { run((table.*entry).streamed, r, width); });
    Random random(2);
    auto expectDoor = [&](Row<Arguments...>* door, int width) {
        expectSame(
            random, roomsOf(size_t(width)), Fault::after, 0, [&](Rooms& r) { run(door, r, width); },
            [&](Rooms& r) { run(ColourKernels::scalar.*entry, r, width); });
    };
    expectDoor(whole, 103);
    expectDoor(multipleOfFour, 104);
}

using Table = ColourKernels;

// The kernel, the name of its doors, and the bytes of a pixel in each row.
#define QEL_CHECK(KERNEL, NAME, ...) check(&Table::KERNEL, ownqj_##NAME, ownqj_##NAME##_opt, {__VA_ARGS__})

TEST(ColourKernels, FromYCbCr)
{
    QEL_CHECK(yccToRgb, YCbCrToRGB_JPEG_8u_P3C3R, 1, 1, 1, 3);
    QEL_CHECK(yccToBgr, YCbCrToBGR_JPEG_8u_P3C3R, 1, 1, 1, 3);
    QEL_CHECK(yccToRgbPlanes, YCbCrToRGB_JPEG_8u_P3R, 1, 1, 1, 1, 1, 1);
    QEL_CHECK(yccToRgb555, YCbCrToRGB555_JPEG_8u16u_P3C3R, 1, 1, 1, 2);
    QEL_CHECK(yccToBgr555, YCbCrToBGR555_JPEG_8u16u_P3C3R, 1, 1, 1, 2);
    QEL_CHECK(yccToRgb565, YCbCrToRGB565_JPEG_8u16u_P3C3R, 1, 1, 1, 2);
    QEL_CHECK(yccToBgr565, YCbCrToBGR565_JPEG_8u16u_P3C3R, 1, 1, 1, 2);
    QEL_CHECK(ycckToCmykPlanes, YCCKToCMYK_JPEG_8u_P4R, 1, 1, 1, 1, 1, 1, 1, 1);
    QEL_CHECK(ycckToCmyk, YCCKToCMYK_JPEG_8u_P4C4R, 1, 1, 1, 1, 4);
}

TEST(ColourKernels, ToYCbCr)
{
    QEL_CHECK(rgbPlanesToYcc, RGBToYCbCr_JPEG_8u_P3R, 1, 1, 1, 1, 1, 1);
    QEL_CHECK(rgbToYcc, RGBToYCbCr_JPEG_8u_C3P3R, 3, 1, 1, 1);
    QEL_CHECK(bgrToYcc, BGRToYCbCr_JPEG_8u_C3P3R, 3, 1, 1, 1);
    QEL_CHECK(rgb555ToYcc, RGB555ToYCbCr_JPEG_16u8u_C3P3R, 2, 1, 1, 1);
    QEL_CHECK(bgr555ToYcc, BGR555ToYCbCr_JPEG_16u8u_C3P3R, 2, 1, 1, 1);
    QEL_CHECK(rgb565ToYcc, RGB565ToYCbCr_JPEG_16u8u_C3P3R, 2, 1, 1, 1);
    QEL_CHECK(bgr565ToYcc, BGR565ToYCbCr_JPEG_16u8u_C3P3R, 2, 1, 1, 1);
    QEL_CHECK(cmykPlanesToYcck, CMYKToYCCK_JPEG_8u_P4R, 1, 1, 1, 1, 1, 1, 1, 1);
    QEL_CHECK(cmykToYcck, CMYKToYCCK_JPEG_8u_C4P4R, 4, 1, 1, 1, 1);
    QEL_CHECK(rgbPlanesToY, RGBToY_JPEG_8u_P3C1R, 1, 1, 1, 1);
    QEL_CHECK(rgbToY, RGBToY_JPEG_8u_C3C1R, 3, 1);
    QEL_CHECK(bgrToY, BGRToY_JPEG_8u_C3C1R, 3, 1);
}

// All pairs of two samples with eight values of the third, in turns: what takes one product a sum in the scalar build
// takes several roundings in registers.
TEST(ColourKernels, AllPairsOfSamples)
{
    constexpr int kColours = 1 << 19;
    std::vector<uint8_t> planes(3 * kColours);
    for (int i = 0; i < kColours; ++i) {
        planes[i] = uint8_t(255 * (i >> 16) / 7);
        planes[kColours + i] = uint8_t(i);
        planes[2 * kColours + i] = uint8_t(i >> 8);
    }
    for (auto entry : {&Table::yccToRgbPlanes, &Table::rgbPlanesToYcc})
        for (int turn = 0; turn < 3; ++turn) {
            auto from = [&](int k) { return &planes[size_t((turn + k) % 3) * kColours]; };
            auto convert = [&](const ColourKernels& table) {
                std::vector<uint8_t> out(3 * kColours);
                uint8_t* to = out.data();
                (table.*entry)(from(0), from(1), from(2), to, to + kColours, to + 2 * kColours, kColours);
                return out;
            };
            auto expected = convert(ColourKernels::scalar);
            everyBuild<ColourKernels>([&](const ColourKernels& table) { EXPECT_TRUE(convert(table) == expected); });
        }
}

}
