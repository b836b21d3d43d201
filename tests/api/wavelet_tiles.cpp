// SPDX-License-Identifier: Apache-2.0
// Wavelets of tiles: the textbook's coefficients, exact work buffers, special lengths, order of faults.
#include <gtest/gtest.h>

#include <cstdlib>

#include "argument_faults.h"
#include "guarded.h"
#include "random.h"
#include "wavelet_functions.h"

using namespace qel::test;

namespace {

template <class T> Tile<T> randomTile(Random& random, int x, int y, int width, int height, int magnitude = 0)
{
    Tile<T> tile = {x, y, width, height, std::vector<T>(size_t(width) * size_t(height))};
    if (magnitude == 0)
        random.fill(tile.samples.data(), tile.samples.size());
    else
        for (auto& sample : tile.samples) sample = T(random.between(-magnitude, magnitude));
    return tile;
}

// The tile in place in a larger picture, between pages that fault, with a work buffer of exactly the size asked for.
template <class F, class T = typename F::Sample> Tile<T> inPlace(Tile<T> tile, bool forward)
{
    const QelRect rect = {tile.x, tile.y, tile.width, tile.height};
    int size = -1;
    EXPECT_EQ(F::kFunctions.inPlaceSize(&rect, &size), qelStsNoErr);
    Guarded<uint8_t> buffer(size_t(size), Fault::after, size_t(tile.width) % 4);
    const size_t rowBytes = size_t(tile.width) * sizeof(T), step = rowBytes + 5;
    Guarded<uint8_t> picture(size_t(tile.height - 1) * step + rowBytes);
    memset(picture.data(), 0x5A, picture.size());
    auto row = [&](int r) { return picture.data() + size_t(r) * step; };
    for (int r = 0; r < tile.height; ++r) memcpy(row(r), &tile.at(r, 0), rowBytes);
    auto transform = forward ? F::kFunctions.forwardInPlace : F::kFunctions.inverseInPlace;
    EXPECT_EQ(transform((T*)picture.data(), int(step), &rect, buffer.data()), qelStsNoErr);
    for (int r = 0; r < tile.height; ++r) {
        memcpy(&tile.at(r, 0), row(r), rowBytes);
        for (size_t i = rowBytes; r + 1 < tile.height && i < step; ++i) EXPECT_EQ(row(r)[i], 0x5A);
    }
    EXPECT_TRUE(picture.intact() && buffer.intact());
    return tile;
}

// The four subbands, put together as the in-place functions leave them.
template <class T> struct Quarters {
    T* planes[4];
    int steps[4];

    explicit Quarters(Tile<T>& t)
    {
        int right = (t.width + 1) / 2, lower = (t.height + 1) / 2;
        T* start = t.samples.data();
        planes[0] = start, planes[1] = start + lower * t.width, planes[2] = start + right;
        planes[3] = planes[1] + right;
        for (int& step : steps) step = t.width * int(sizeof(T));
    }
};
// With a work buffer of exactly the size asked for.
template <class F, class T = typename F::Sample> Tile<T> throughBands(const Tile<T>& tile, bool forward)
{
    const QelRect rect = {tile.x, tile.y, tile.width, tile.height};
    int size = -1;
    EXPECT_EQ(F::kFunctions.bandsSize(&rect, &size), qelStsNoErr);
    Guarded<uint8_t> buffer(size_t(size), forward ? Fault::after : Fault::before, size_t(tile.height) % 4);
    Tile<T> from = tile, to = tile;
    Quarters<T> bands(forward ? to : from);
    const int step = tile.width * int(sizeof(T));
    EXPECT_EQ(forward
                  ? F::kFunctions.forward(from.samples.data(), step, &rect, bands.planes, bands.steps, buffer.data())
                  : F::kFunctions.inverse(bands.planes, bands.steps, &rect, to.samples.data(), step, buffer.data()),
              qelStsNoErr);
    EXPECT_TRUE(buffer.intact());
    return to;
}

template <class F> class WaveletTiles : public testing::Test {};
using Filters = testing::Types<Tiles53Of16, Tiles53Of32, Tiles97Of16, Tiles97Of32>;
TYPED_TEST_SUITE(WaveletTiles, Filters);

template <class F> void everySize(std::vector<int> widths, std::vector<int> heights)
{
    using T = typename F::Sample;
    Random random(1);
    for (int width : widths)
        for (int height : heights)
            for (int origin = 0; origin < 4; ++origin) {
                SCOPED_TRACE(testing::Message() << width << " x " << height << " at " << origin);
                auto tile = randomTile<T>(random, origin % 2 - 2, origin / 2 + 6, width, height);
                // Room for the doubling of single samples.
                if (width == 1 || height == 1)
                    for (auto& sample : tile.samples) sample = T(sample / 4);
                auto expected = forwardTile<F>(tile), back = inverseTile<F>(tile);
                ASSERT_EQ(inPlace<F>(tile, true).samples, expected.samples);
                ASSERT_EQ(throughBands<F>(tile, true).samples, expected.samples);
                ASSERT_EQ(inPlace<F>(tile, false).samples, back.samples);
                ASSERT_EQ(throughBands<F>(tile, false).samples, back.samples);
                if (F::kReversible) {
                    ASSERT_EQ(inPlace<F>(expected, false).samples, tile.samples);
                }
            }
}
std::vector<int> upTo(int last)
{
    std::vector<int> all;
    for (int i = 1; i <= last; ++i) all.push_back(i);
    return all;
}

TYPED_TEST(WaveletTiles, EqualTheTextbookWhateverTheWidth) { everySize<TypeParam>(upTo(64), {1, 2, 3, 7, 20}); }
TYPED_TEST(WaveletTiles, EqualTheTextbookWhateverTheHeight) { everySize<TypeParam>({1, 2, 3, 4, 9, 33}, upTo(64)); }
TYPED_TEST(WaveletTiles, EqualTheTextbookWhereColumnsTakeSeveralStrips) { everySize<TypeParam>({1100, 515}, {11, 40}); }

// Flat lines have a low half near the samples. Among large ones some come out as 2^31, whose conversion overflows.
TEST(Wavelet97Tiles, ConversionOfTwoToThe31)
{
    bool overflows = false;
    for (int i = 0; i < 64; ++i) {
        int32_t v = INT32_MAX - 128 * i;
        Tile<int32_t> flat = {0, 0, 4, 1, {v, v, v, v}};
        auto halves = inPlace<Tiles97Of32>(flat, true).samples;
        EXPECT_EQ(halves, forwardTile<Tiles97Of32>(flat).samples);
        overflows |= halves[0] == INT32_MIN;
    }
    EXPECT_TRUE(overflows);
}

TYPED_TEST(WaveletTiles, TheSourceMayBeASubband)
{
    using T = typename TypeParam::Sample;
    Random random(3);
    for (int size : {9, 200}) {
        auto tile = randomTile<T>(random, 0, 0, size, size, 4000), picture = tile;
        Quarters<T> quarters(picture);
        QelRect rect = {0, 0, size, size};
        int bytes = 0;
        ASSERT_EQ(TypeParam::kFunctions.bandsSize(&rect, &bytes), qelStsNoErr);
        std::vector<uint8_t> buffer(static_cast<size_t>(bytes));
        ASSERT_EQ(TypeParam::kFunctions.forward(picture.samples.data(), quarters.steps[0], &rect, quarters.planes,
                                                quarters.steps, buffer.data()),
                  qelStsNoErr);
        EXPECT_EQ(picture.samples, forwardTile<TypeParam>(tile).samples);
        auto back = inverseTile<TypeParam>(picture);
        ASSERT_EQ(TypeParam::kFunctions.inverse(quarters.planes, quarters.steps, &rect, picture.samples.data(),
                                                quarters.steps[0], buffer.data()),
                  qelStsNoErr);
        EXPECT_EQ(picture.samples, back.samples);
    }
}

TEST(WaveletBuffers, Sizes)
{
    const struct {
        QelStatus (*query)(const QelRect*, int*);
        int width, height, bytes;
    } table[] = {
        {qeliWTGetBufSize_B53_JPEG2K_16s_C1IR, 2, 2, 0},   {qeliWTGetBufSize_B53_JPEG2K_16s_C1IR, 3, 1, 14},
        {qeliWTGetBufSize_B53_JPEG2K_32s_C1IR, 2, 7, 44},  {qeliWTGetBufSize_B53_JPEG2K_16s_C1R, 17, 3, 3 * 64 + 42},
        {qeliWTGetBufSize_B53_JPEG2K_32s_C1R, 2, 2, 64},   {qeliWTGetBufSize_D97_JPEG2K_16s_C1IR, 1, 1, 0},
        {qeliWTGetBufSize_D97_JPEG2K_16s_C1IR, 2, 1, 20},  {qeliWTGetBufSize_D97_JPEG2K_32s_C1IR, 5, 9, 68},
        {qeliWTGetBufSize_D97_JPEG2K_16s_C1R, 16, 2, 112}, {qeliWTGetBufSize_D97_JPEG2K_32s_C1R, 9, 2, 2 * 64 + 68},
    };
    for (auto& row : table) {
        const QelRect tile = {1, 1, row.width, row.height};
        int size = -1;
        EXPECT_EQ(row.query(&tile, &size), qelStsNoErr);
        EXPECT_EQ(size, row.bytes) << row.width << ' ' << row.height;
    }
    // Beyond 31 bits, beyond 64, and below 0.
    int size = 7;
    const QelRect noSizes[] = {{0, 0, 40000, 40000}, {0, 0, INT32_MAX, INT32_MAX}, {0, 0, -40, 3}};
    for (auto& tile : noSizes)
        for (auto query : {qeliWTGetBufSize_B53_JPEG2K_16s_C1R, qeliWTGetBufSize_D97_JPEG2K_32s_C1R})
            EXPECT_EQ(query(&tile, &size), qelStsSizeErr) << tile.width;
    EXPECT_EQ(qeliWTGetBufSize_B53_JPEG2K_16s_C1IR(nullptr, &size), qelStsNullPtrErr);
    EXPECT_EQ(qeliWTGetBufSize_B53_JPEG2K_16s_C1IR(noSizes, nullptr), qelStsNullPtrErr);
    EXPECT_EQ(size, 7);
}

TYPED_TEST(WaveletTiles, OrderOfFaults)
{
    using T = typename TypeParam::Sample;
    constexpr auto& f = TypeParam::kFunctions;
    T data[16] = {1, 2, 3}, bands[4][4] = {}, *const planes[4] = {bands[0], bands[1], bands[2], bands[3]};
    uint8_t buffer[256];
    const QelRect tile = {0, 0, 4, 4}, flat = {0, 0, 4, 0}, narrow = {0, 0, -1, 4};
    const int steps[4] = {8, 8, 8, 8}, oneZero[4] = {8, 8, 8, 0}, oneNegative[4] = {-8, 8, 8, 8};
    for (auto inPlace : {f.forwardInPlace, f.inverseInPlace})
        expectFaults(inPlace, {data, 8, &tile, buffer}, null<0>, step<1>, null<2>, null<3>,
                     wrong<2>(qelStsSizeErr, &flat, &narrow));
    expectFaults(f.forward, {data, 8, &tile, planes, steps, buffer}, null<0>, null<2>, null<4>, null<5>, null<3>,
                 nullAmong<3>(planes), step<1>, wrong<4>(qelStsStepErr, oneZero, oneNegative),
                 wrong<2>(qelStsSizeErr, &flat, &narrow));
    expectFaults(f.inverse, {planes, steps, &tile, data, 8, buffer}, null<1>, null<2>, null<3>, null<5>, null<0>,
                 nullAmong<0>(planes), step<4>, wrong<1>(qelStsStepErr, oneZero, oneNegative),
                 wrong<2>(qelStsSizeErr, &flat, &narrow));
    EXPECT_EQ(data[1], 2);
    EXPECT_EQ(bands[0][0], 0);
}

}
