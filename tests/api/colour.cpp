// Colour conversion: values against the written arithmetic, order of faults, regions, threads.
#include "qeljx.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "argument_faults.h"
#include "pixel_layouts.h"
#include "random.h"

namespace {

using namespace qel::test;
using Bytes = std::vector<uint8_t>;

// The arithmetic, place by place. `left` is what remains of the row's whole groups of four pixels, 0 in the tail.
struct Decoder {
    int red, green, blue; // added before the shift by 14

    Pixel operator()(Pixel p, int left) const
    {
        int y = p.a, cb = p.b - 128, cr = p.c - 128;
        if (left > 0)
            return {clamp(y + ((22970 * cr + red) >> 14)), clamp(y + ((-5638 * cb - 11700 * cr + green) >> 14)),
                    clamp(y + ((29032 * cb + blue) >> 14)), p.k};
        return {clamp(y + ((91881 * cr + 32768) >> 16)), clamp(y + ((-22554 * cb - 46802 * cr + 32768) >> 16)),
                clamp(y + ((116130 * cb + 32768) >> 16)), p.k};
    }
};
const Decoder kTuned = {8192 - 47, 8192 + 110, 8192 - 57}, kPlain = {8192, 8192, 8192};

struct Encoder {
    bool hasEights;

    Pixel operator()(Pixel p, int left) const
    {
        int r = p.a, g = p.b, b = p.c;
        if (hasEights && left >= 8)
            return {(9798 * r + 19235 * g + 3736 * b + 16266) >> 15,
                    clamp((-5529 * r - 10855 * g + 16384 * b + 128 * 32768 + 16384) >> 15),
                    clamp((16384 * r - 13720 * g - 2664 * b + 128 * 32768 + 16400) >> 15), p.k};
        if (left > 0)
            return {(4899 * r + 9617 * g + 1868 * b + 8192) >> 14,
                    clamp((-2764 * r - 5428 * g + 8192 * b + 128 * 16384 + 8192) >> 14),
                    clamp((8192 * r - 6860 * g - 1332 * b + 128 * 16384 + 8192) >> 14), p.k};
        return {(19595 * r + 38470 * g + 7471 * b + 32768) >> 16, (-11059 * r - 21709 * g + 32768 * b + 8421375) >> 16,
                (32768 * r - 27439 * g - 5329 * b + 8421375) >> 16, p.k};
    }
};

// What remains of the whole groups at pixel i: runs of eight come before the one of four.
int leftAt(int i, int width)
{
    int whole = width & ~3;
    if (i >= whole) return 0;
    return i < (width & ~7) ? 8 : 4;
}

// A member behind one signature: plane arrays on both sides, also for interleaved pixels; null stands for a null.
struct Member {
    const char* name;
    const Layout& src;
    const Layout& dst;
    std::function<Pixel(Pixel, int)> formula;
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
template <class Formula, class Src, class Dst> Member member(const char* name, const Layout& src, const Layout& dst,
                                                             Formula formula,
                                                             QelStatus (*function)(Src, int, Dst, int, QelSize))
{
    auto run = [=](const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep, QelSize roi) {
        return function(argument<Src>(pSrc), srcStep, argument<Dst>(pDst), dstStep, roi);
    };
    return {name, src, dst, formula, run};
}
#define MEMBER(NAME, SRC, DST, FORMULA) member(#NAME, SRC, DST, FORMULA, NAME)

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
    MEMBER(qeliRGBToYCbCr_JPEG_8u_P3R, kPlanes, kPlanes, Encoder{true}),
    MEMBER(qeliRGBToYCbCr_JPEG_8u_C3P3R, kRgb, kPlanes, Encoder{true}),
    MEMBER(qeliBGRToYCbCr_JPEG_8u_C3P3R, kBgr, kPlanes, Encoder{true}),
    MEMBER(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, kRgb555, kPlanes, Encoder{false}),
    MEMBER(qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R, kBgr555, kPlanes, Encoder{false}),
    MEMBER(qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R, kRgb565, kPlanes, Encoder{false}),
    MEMBER(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R, kBgr565, kPlanes, Encoder{false}),
    MEMBER(qeliCMYKToYCCK_JPEG_8u_P4R, kInkPlanes, kPlanesK, Encoder{false}),
    MEMBER(qeliCMYKToYCCK_JPEG_8u_C4P4R, kInks, kPlanesK, Encoder{false}),
    MEMBER(qeliRGBToY_JPEG_8u_P3C1R, kPlanes, kGray, Encoder{false}),
    MEMBER(qeliRGBToY_JPEG_8u_C3C1R, kRgb, kGray, Encoder{false}),
    MEMBER(qeliBGRToY_JPEG_8u_C3C1R, kBgr, kGray, Encoder{false}),
};

// The planes of one side, one after the other.
template <class Byte> std::vector<Byte*> planesOf(Byte* data, const Layout& layout, size_t planeBytes)
{
    std::vector<Byte*> planes;
    for (int k = 0; k < layout.planes; ++k) planes.push_back(data + k * planeBytes);
    return planes;
}

// Converts a random region and compares all of the destination with the formulas, the bytes between rows included.
void checkRegion(const Member& member, QelSize roi, int srcStep, int dstStep, Random& random)
{
    size_t srcBytes = size_t(srcStep) * (roi.height - 1) + size_t(member.src.bytes) * roi.width;
    size_t dstBytes = size_t(dstStep) * (roi.height - 1) + size_t(member.dst.bytes) * roi.width;
    Bytes src(srcBytes * member.src.planes), dst(dstBytes * member.dst.planes, 0xEE), expected = dst;
    random.fill(src.data(), src.size());
    auto from = planesOf((const uint8_t*)src.data(), member.src, srcBytes);
    auto to = planesOf(expected.data(), member.dst, dstBytes);
    for (int r = 0; r < roi.height; ++r) {
        for (int i = 0; i < roi.width; ++i)
            member.dst.put(to.data(), i, member.formula(member.src.get(from.data(), i), leftAt(i, roi.width)));
        for (auto& row : from) row += srcStep;
        for (auto& row : to) row += dstStep;
    }
    from = planesOf((const uint8_t*)src.data(), member.src, srcBytes);
    to = planesOf(dst.data(), member.dst, dstBytes);
    ASSERT_EQ(member.run(from.data(), srcStep, to.data(), dstStep, roi), qelStsNoErr);
    ASSERT_TRUE(dst == expected) << member.name << ' ' << roi.width << 'x' << roi.height;
}

TEST(Colour, EveryMemberFollowsTheArithmeticOfItsPlaces)
{
    Random random(1);
    for (auto& member : kMembers)
        for (int width = 1; width <= 140; ++width)
            checkRegion(member, {width, 3}, member.src.bytes * width + width % 5, member.dst.bytes * width + 3, random);
}

// Rows that overlap: sources all the way, destinations written in ascending order.
TEST(Colour, StepsMayBeSmallerThanRows)
{
    Random random(2);
    for (auto& member : kMembers) {
        checkRegion(member, {21, 4}, 1, member.dst.bytes * 21, random);
        checkRegion(member, {21, 4}, member.src.bytes * 21, 7, random);
    }
}

// More than 8192 pixels are shared out to threads.
TEST(Colour, LargeRegionsEqualSmallOnes)
{
    Random random(3);
    for (auto& member : kMembers)
        for (QelSize roi : {QelSize{128, 64}, QelSize{8193, 1}, QelSize{131, 63}, QelSize{9, 1000}})
            checkRegion(member, roi, member.src.bytes * roi.width, member.dst.bytes * roi.width + 1, random);
}

// --- All colours. Rows of `width` pixels make every pixel lie in the places that a test wants.

// A member of kMembers on all 2^24 inputs.
void checkAllColours(int index, int width)
{
    const Member& member = kMembers[index];
    constexpr int kPixels = 1 << 20;
    const int height = kPixels / width;
    Bytes src(3 * kPixels), dst(3 * kPixels);
    auto from = planesOf((const uint8_t*)src.data(), member.src, kPixels);
    auto to = planesOf(dst.data(), member.dst, kPixels);
    auto sources = planesOf(src.data(), member.src, kPixels);
    int wrong = 0;
    for (int batch = 0; batch < 16; ++batch) {
        auto colour = [=](int i) { return Pixel{i & 255, i >> 8 & 255, i >> 16 | batch << 4}; };
        for (int i = 0; i < kPixels; ++i) member.src.put(sources.data(), i, colour(i));
        ASSERT_EQ(
            member.run(from.data(), member.src.bytes * width, to.data(), member.dst.bytes * width, {width, height}),
            qelStsNoErr);
        for (int i = 0; i < kPixels; ++i) {
            Pixel expected = member.formula(colour(i), leftAt(i % width, width)), result = member.dst.get(to.data(), i);
            wrong += result.a != expected.a || result.b != expected.b || result.c != expected.c;
        }
    }
    EXPECT_EQ(wrong, 0) << member.name << " in rows of " << width;
}

TEST(Colour, AllYCbCr)
{
    for (int width : {1 << 16, 2}) checkAllColours(0, width);
    checkAllColours(2, 1 << 16);
}

TEST(Colour, AllRgb)
{
    for (int width : {1 << 16, 4, 2}) checkAllColours(9, width);
}

TEST(Colour, InPlaceOnPlanes)
{
    Random random(4);
    for (auto& member : kMembers) {
        if (member.src.bytes != 1 || member.dst.bytes != 1 || member.dst.planes != member.src.planes) continue;
        Bytes data(4 * 203), result(data.size());
        random.fill(data.data(), data.size());
        auto from = planesOf((const uint8_t*)data.data(), member.src, 203);
        auto to = planesOf(result.data(), member.dst, 203);
        ASSERT_EQ(member.run(from.data(), 203, to.data(), 203, {203, 1}), qelStsNoErr);
        auto same = planesOf(data.data(), member.dst, 203);
        ASSERT_EQ(member.run(from.data(), 203, same.data(), 203, {203, 1}), qelStsNoErr);
        EXPECT_EQ(memcmp(data.data(), result.data(), 203 * member.dst.planes), 0) << member.name;
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
