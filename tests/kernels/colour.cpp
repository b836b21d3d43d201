// Colour conversion kernels: every build equals the scalar one, and every door leads to its kernel.
#include "jpeg/colour.h"

#include <array>
#include <utility>

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

template <class... Arguments> using Row = void(Arguments...);

// A kernel of rows that have so many bytes a pixel, and its doors for whole rows and for multiples of four pixels.
template <class... Arguments> void check(Row<Arguments...>* ColourKernels::*entry, Row<Arguments...>* whole,
                                         Row<Arguments...>* multipleOfFour,
                                         const std::array<size_t, sizeof...(Arguments) - 1>& bytes)
{
    auto roomsOf = [&](size_t width) {
        std::vector<Room> rooms;
        for (size_t n : bytes) rooms.push_back(room<uint8_t>(n * width));
        return rooms;
    };
    auto run = [&](Row<Arguments...>* kernel, Rooms& rooms, int width) {
        [&]<size_t... k>(std::index_sequence<k...>) { kernel(rooms[k]..., width); }
        (std::make_index_sequence<sizeof...(Arguments) - 1>());
    };
    everyRowEqualsScalar<ColourKernels>(roomsOf,
                                        [&](auto& table, Rooms& r, int width) { run(table.*entry, r, width); });
    everyRowEqualsScalar<ColourKernels>(roomsOf, [&](auto& table, Rooms& r, int width) {
        run(&table == &ColourKernels::scalar ? table.*entry : table.past->*entry, r, width);
    });
    Random random(2);
    auto expectDoor = [&](Row<Arguments...>* door, int width) {
        expectSame(
            random, roomsOf(size_t(width)), Fault::behind, 0, [&](Rooms& r) { run(door, r, width); },
            [&](Rooms& r) { run(ColourKernels::scalar.*entry, r, width); });
    };
    expectDoor(whole, 103);
    expectDoor(multipleOfFour, 104);
}

using Table = ColourKernels;

TEST(ColourKernels, YCbCrToPixels)
{
    check(&Table::yccToRgb, ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt, {1, 1, 1, 3});
    check(&Table::yccToBgr, ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt, {1, 1, 1, 3});
    check(&Table::yccToRgbPlanes, ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt, {1, 1, 1, 1, 1, 1});
}

TEST(ColourKernels, YCbCrToPackedPixels)
{
    check(&Table::yccToRgb555, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToBgr555, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToRgb565, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
    check(&Table::yccToBgr565, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt,
          {1, 1, 1, 2});
}

TEST(ColourKernels, PixelsToYCbCr)
{
    check(&Table::rgbPlanesToYcc, ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt, {1, 1, 1, 1, 1, 1});
    check(&Table::rgbToYcc, ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt, {3, 1, 1, 1});
    check(&Table::bgrToYcc, ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt, {3, 1, 1, 1});
}

TEST(ColourKernels, PackedPixelsToYCbCr)
{
    check(&Table::rgb555ToYcc, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::bgr555ToYcc, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::rgb565ToYcc, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
    check(&Table::bgr565ToYcc, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt,
          {2, 1, 1, 1});
}

TEST(ColourKernels, AllPackedPixels)
{
    constexpr int kWords = 1 << 16;
    std::vector<uint16_t> words(kWords);
    for (int i = 0; i < kWords; ++i) words[i] = uint16_t(i);
    for (auto entry : {&Table::rgb555ToYcc, &Table::bgr555ToYcc, &Table::rgb565ToYcc, &Table::bgr565ToYcc}) {
        auto convert = [&](const ColourKernels& table) {
            std::vector<uint8_t> planes(3 * kWords);
            uint8_t* y = planes.data();
            (table.*entry)(words.data(), y, y + kWords, y + 2 * kWords, kWords);
            return planes;
        };
        auto expected = convert(ColourKernels::scalar);
        everyBuild<ColourKernels>([&](const ColourKernels& table) { EXPECT_TRUE(convert(table) == expected); });
    }
}

TEST(ColourKernels, Inks)
{
    check(&Table::ycckToCmykPlanes, ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt,
          {1, 1, 1, 1, 1, 1, 1, 1});
    check(&Table::ycckToCmyk, ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt, {1, 1, 1, 1, 4});
    check(&Table::cmykPlanesToYcck, ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt,
          {1, 1, 1, 1, 1, 1, 1, 1});
    check(&Table::cmykToYcck, ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt, {4, 1, 1, 1, 1});
}

TEST(ColourKernels, PixelsToY)
{
    check(&Table::rgbPlanesToY, ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt, {1, 1, 1, 1});
    check(&Table::rgbToY, ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt, {3, 1});
    check(&Table::bgrToY, ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt, {3, 1});
}

}
