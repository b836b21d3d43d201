// SPDX-License-Identifier: Apache-2.0
// Colour conversion: values in each class of places, planes in place, order of faults.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "argument_faults.h"
#include "pixel_layouts.h"

namespace {

using namespace qel::test;
using Bytes = std::vector<uint8_t>;

// A pixel, and what becomes of it by each of a direction's three kinds of arithmetic. Each of the sums behind these
// lies so close to a step that no factor and no rounding term can be another, and no kind can stand for another.
struct Conversion {
    Pixel in, out[3];
};
using Conversions = std::vector<Conversion>;

// Groups of four pixels with their rounding moved, or not, and what is left of a row.
const Conversions kFromYcc = {
    {{0, 0, 0}, {{0, 135, 0}, {0, 135, 0}, {0, 135, 0}}},
    {{255, 255, 255}, {{255, 121, 255}, {255, 121, 255}, {255, 121, 255}}},
    {{100, 12, 179}, {{171, 104, 0}, {172, 103, 0}, {172, 103, 0}}},
    {{100, 174, 77}, {{28, 121, 182}, {28, 121, 182}, {28, 121, 182}}},
    {{100, 196, 82}, {{36, 109, 220}, {36, 109, 220}, {36, 109, 220}}},
    {{100, 14, 3}, {{0, 228, 0}, {0, 228, 0}, {0, 229, 0}}},
    {{100, 2, 90}, {{47, 171, 0}, {47, 170, 0}, {47, 170, 0}}},
    {{100, 19, 79}, {{31, 173, 0}, {31, 173, 0}, {31, 173, 0}}},
    {{100, 7, 117}, {{85, 150, 0}, {85, 149, 0}, {85, 149, 0}}},
    {{100, 17, 227}, {{239, 68, 0}, {239, 67, 0}, {239, 68, 0}}},
    {{100, 237, 212}, {{218, 3, 255}, {218, 3, 255}, {218, 3, 255}}},
};
// Groups of eight pixels, of four, and what is left of a row. Formats of 16 bits have the first of these pixels.
const Conversions kToYcc = {
    {{0, 0, 248}, {{28, 252, 108}, {28, 252, 108}, {28, 252, 108}}},
    {{248, 248, 248}, {{248, 128, 128}, {248, 128, 128}, {248, 128, 128}}},
    {{200, 120, 200}, {{153, 155, 161}, {153, 155, 161}, {153, 155, 161}}},
    {{96, 176, 96}, {{143, 101, 95}, {143, 101, 95}, {143, 101, 95}}},
    {{184, 248, 8}, {{202, 19, 116}, {202, 19, 116}, {202, 19, 116}}},
    {{216, 240, 88}, {{215, 56, 128}, {215, 56, 128}, {215, 56, 128}}},
    {{64, 24, 248}, {{61, 233, 130}, {61, 233, 130}, {61, 233, 130}}},
    {{0, 72, 160}, {{61, 184, 85}, {61, 184, 85}, {61, 184, 85}}},
    {{80, 160, 190}, {{140, 156, 86}, {139, 156, 86}, {140, 156, 86}}},
    {{185, 185, 142}, {{180, 107, 131}, {180, 107, 131}, {180, 106, 131}}},
    {{18, 137, 137}, {{101, 148, 69}, {101, 148, 69}, {101, 148, 68}}},
    {{42, 107, 238}, {{102, 204, 85}, {103, 204, 85}, {102, 204, 85}}},
    {{109, 29, 195}, {{72, 198, 155}, {72, 198, 155}, {72, 198, 155}}},
    {{119, 164, 41}, {{137, 74, 116}, {137, 74, 115}, {137, 74, 116}}},
    {{185, 22, 248}, {{97, 213, 191}, {97, 214, 191}, {96, 213, 191}}},
    {{8, 171, 47}, {{108, 94, 57}, {108, 93, 57}, {108, 94, 57}}},
    {{14, 1, 59}, {{11, 155, 130}, {11, 155, 130}, {11, 155, 130}}},
    {{23, 196, 5}, {{122, 62, 57}, {122, 62, 57}, {123, 62, 57}}},
    {{63, 219, 115}, {{160, 102, 58}, {160, 102, 58}, {161, 102, 58}}},
    {{119, 254, 8}, {{186, 28, 81}, {186, 28, 80}, {186, 28, 81}}},
    {{158, 150, 72}, {{144, 88, 138}, {143, 88, 138}, {144, 88, 138}}},
};

// Which kind converts the groups of eight in a row, the group of four after them, and the rest.
struct Arithmetic {
    const Conversions& pixels;
    int kinds[3];
};
const Arithmetic kTuned = {kFromYcc, {0, 0, 2}}, kPlain = {kFromYcc, {1, 1, 2}};
const Arithmetic kEights = {kToYcc, {0, 1, 2}}, kFours = {kToYcc, {1, 1, 2}};

// A member under one signature: plane arrays on both sides, also for interleaved pixels; null stands for a null.
struct Member {
    const char* name;
    const Layout& src;
    const Layout& dst;
    Arithmetic arithmetic;
    std::function<QelStatus(const uint8_t* const*, int, uint8_t* const*, int, QelSize)> run;
};

template <class T> constexpr bool kIsPlanes = std::is_pointer_v<std::remove_pointer_t<T>>;
template <class To, class Byte> To argument(Byte* const* planes)
{
    if constexpr (kIsPlanes<To>)
        return planes;
    else
        return planes == nullptr ? nullptr : (To)planes[0];
}
template <class Src, class Dst> Member member(const char* name, const Layout& src, const Layout& dst,
                                              const Arithmetic& arithmetic,
                                              QelStatus (*function)(Src, int, Dst, int, QelSize))
{
    auto run = [=](const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep, QelSize roi) {
        return function(argument<Src>(pSrc), srcStep, argument<Dst>(pDst), dstStep, roi);
    };
    return {name, src, dst, arithmetic, run};
}
#define MEMBER(NAME, SRC, DST, ARITHMETIC) member(#NAME, SRC, DST, ARITHMETIC, NAME)

const Member kMembers[] = {
    MEMBER(qeliYCbCrToRGB_JPEG_8u_P3C3R, kPlanes, kRgb, kTuned),
    MEMBER(qeliYCbCrToBGR_JPEG_8u_P3C3R, kPlanes, kBgr, kTuned),
    MEMBER(qeliYCbCrToRGB_JPEG_8u_P3R, kPlanes, kPlanes, kPlain),
    MEMBER(qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, kPlanes, kRgb555, kTuned),
    MEMBER(qeliYCbCrToBGR555_JPEG_8u16u_P3C3R, kPlanes, kBgr555, kTuned),
    MEMBER(qeliYCbCrToRGB565_JPEG_8u16u_P3C3R, kPlanes, kRgb565, kTuned),
    MEMBER(qeliYCbCrToBGR565_JPEG_8u16u_P3C3R, kPlanes, kBgr565, kTuned),
    MEMBER(qeliYCCKToCMYK_JPEG_8u_P4R, kPlanesK, kInkPlanes, kPlain),
    MEMBER(qeliYCCKToCMYK_JPEG_8u_P4C4R, kPlanesK, kInks, kPlain),
    MEMBER(qeliRGBToYCbCr_JPEG_8u_P3R, kPlanes, kPlanes, kEights),
    MEMBER(qeliRGBToYCbCr_JPEG_8u_C3P3R, kRgb, kPlanes, kEights),
    MEMBER(qeliBGRToYCbCr_JPEG_8u_C3P3R, kBgr, kPlanes, kEights),
    MEMBER(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, kRgb555, kPlanes, kFours),
    MEMBER(qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R, kBgr555, kPlanes, kFours),
    MEMBER(qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R, kRgb565, kPlanes, kFours),
    MEMBER(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R, kBgr565, kPlanes, kFours),
    MEMBER(qeliCMYKToYCCK_JPEG_8u_P4R, kInkPlanes, kPlanesK, kFours),
    MEMBER(qeliCMYKToYCCK_JPEG_8u_C4P4R, kInks, kPlanesK, kFours),
    MEMBER(qeliRGBToY_JPEG_8u_P3C1R, kPlanes, kGray, kFours),
    MEMBER(qeliRGBToY_JPEG_8u_C3C1R, kRgb, kGray, kFours),
    MEMBER(qeliBGRToY_JPEG_8u_C3C1R, kBgr, kGray, kFours),
};

// The planes of one side, one after the other.
template <class Byte> std::vector<Byte*> planesOf(Byte* data, const Layout& layout, size_t planeBytes)
{
    std::vector<Byte*> planes;
    for (int k = 0; k < layout.planes; ++k) planes.push_back(data + k * planeBytes);
    return planes;
}

constexpr int kWidth = 72 + 4 + 1, kHeight = 2;

// Two rows of 72, 4 and 1 pixels: in each place what the conversions say, and between rows and after them nothing. In
// place, where source and destination lie alike.
TEST(Colour, EveryMemberInItsPlaces)
{
    auto stepOf = [](const Layout& layout) { return layout.bytes * kWidth + 3; };
    auto bytesOf = [=](const Layout& layout) { return Bytes(size_t(kHeight * stepOf(layout) * layout.planes), 0xEE); };
    auto rowsOf = [=](auto* data, const Layout& layout, int r) {
        return planesOf(data + r * stepOf(layout), layout, size_t(kHeight * stepOf(layout)));
    };
    for (auto& member : kMembers)
        for (auto& conversion : member.arithmetic.pixels) {
            const Layout &source = member.src, &destination = member.dst;
            const Pixel& in = conversion.in;
            if (source.bytes == 2 && (in.a | in.b | in.c) % 8 != 0) continue;
            Bytes src = bytesOf(source), dst = bytesOf(destination), expected = dst;
            for (int i = 0; i < kWidth * kHeight; ++i) {
                int r = i / kWidth, column = i % kWidth;
                Pixel pixel = conversion.out[member.arithmetic.kinds[column < 72 ? 0 : column < 76 ? 1 : 2]];
                pixel.k = i;
                source.put(rowsOf(src.data(), source, r).data(), column, {in.a, in.b, in.c, i});
                destination.put(rowsOf(expected.data(), destination, r).data(), column, pixel);
            }
            auto from = rowsOf((const uint8_t*)src.data(), source, 0);
            auto check = [&](Bytes& result) {
                auto to = rowsOf(result.data(), destination, 0);
                ASSERT_EQ(member.run(from.data(), stepOf(source), to.data(), stepOf(destination), {kWidth, kHeight}),
                          qelStsNoErr);
                ASSERT_EQ(result, expected) << member.name << " of " << in.a << ' ' << in.b << ' ' << in.c;
            };
            ASSERT_NO_FATAL_FAILURE(check(dst));
            if (source.bytes == 1 && destination.bytes == 1 && source.planes == destination.planes) check(src);
        }
}

// All nulls, then steps (zero or less), then sizes; nothing is written.
TEST(Colour, OrderOfFaults)
{
    for (auto& member : kMembers) {
        SCOPED_TRACE(member.name);
        const Bytes src(4, 7);
        Bytes dst(4, 9);
        auto from = planesOf(src.data(), member.src, 0);
        auto to = planesOf(dst.data(), member.dst, 0);
        expectFaults(member.run, {from.data(), 1, to.data(), 1, {1, 1}}, null<0>, nullAmong<0>(from), null<2>,
                     nullAmong<2>(to), step<1>, step<3>, size<4>);
        EXPECT_EQ(dst, Bytes(4, 9));
    }
}

}
