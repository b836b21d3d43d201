// SPDX-License-Identifier: Apache-2.0
// The transform over all levels beside a textbook's, at all sizes and origins.
#include "codec/j2k/wavelet.h"

#include <gtest/gtest.h>

#include "random.h"
#include "wavelet_reference.h"

namespace {

using namespace qel::codec;
using namespace qel::test;
using enum j2k::BandKind;

template <class T> j2k::Plane<T> planeOf(const Tile<T>& tile)
{
    j2k::Plane<T> plane(uint32_t(tile.width), uint32_t(tile.height), j2k::Plane<T>::Fill::none);
    for (int r = 0; r < tile.height; ++r)
        std::copy_n(&tile.samples[size_t(r) * size_t(tile.width)], tile.width, plane.row(size_t(r)));
    return plane;
}

// The part of `tile` that begins at a column and a row.
template <class T> Tile<T> cut(const Tile<T>& tile, int column, int row, const j2k::Rect& rect)
{
    Tile<T> part = {int(rect.x0), int(rect.y0), int(rect.width()), int(rect.height()), {}};
    for (int r = 0; r < part.height; ++r) {
        auto start = tile.samples.begin() + (row + r) * tile.width + column;
        part.samples.insert(part.samples.end(), start, start + part.width);
    }
    return part;
}

template <class T> void expectSame(const j2k::Plane<T>& plane, const Tile<T>& tile, double tolerance = 0)
{
    ASSERT_EQ(int(plane.width()), tile.samples.empty() ? 0 : tile.width);
    for (size_t i = 0; i < tile.samples.size(); ++i)
        ASSERT_NEAR(plane.row(i / size_t(tile.width))[i % size_t(tile.width)], tile.samples[i], tolerance) << i;
}

// Forward against the textbook, band by band, and back.
template <class Filter> void expectTransform(const j2k::Rect& rect, int levels, int threads)
{
    using T = typename Filter::Sample;
    SCOPED_TRACE(testing::Message() << rect.x0 << ',' << rect.y0 << ' ' << rect.width() << 'x' << rect.height());
    Random random(rect.width() * 64 + rect.height());
    Tile<T> tile = {int(rect.x0), int(rect.y0), int(rect.width()), int(rect.height()), {}};
    for (uint64_t i = 0; i < rect.area(); ++i) tile.samples.push_back(T(random.between(-32768, 32767)));
    const Tile<T> samples = tile;
    j2k::Subbands<T> bands = j2k::forwardWavelet(planeOf(tile), rect, levels, threads);
    for (int level = 1; level <= levels; ++level) {
        Tile<T> halves = tile.samples.empty() ? tile : forwardTile<Filter>(tile);
        j2k::Rect lows = j2k::resolutionRect(rect, level);
        int right = int(lows.width()), lower = int(lows.height());
        tile = cut(halves, 0, 0, lows);
        expectSame(bands.band(level, lh), cut(halves, 0, lower, j2k::bandRect(rect, level, lh)));
        expectSame(bands.band(level, hl), cut(halves, right, 0, j2k::bandRect(rect, level, hl)));
        expectSame(bands.band(level, hh), cut(halves, right, lower, j2k::bandRect(rect, level, hh)));
    }
    expectSame(bands.band(levels, ll), tile);
    expectSame(j2k::inverseWavelet(std::move(bands), threads), samples, Filter::kReversible ? 0 : 0.25);
}

template <class Filter> class J2kWavelet : public testing::Test {};
using Filters = testing::Types<Textbook53<int32_t>, TextbookFloat97<float>>;
TYPED_TEST_SUITE(J2kWavelet, Filters);

TYPED_TEST(J2kWavelet, SmallSizesAtEveryParity)
{
    for (uint32_t width : {1, 2, 3, 4, 5, 8, 13})
        for (uint32_t height : {1, 2, 3, 4, 7, 16})
            for (uint32_t origin = 0; origin < 16; ++origin) {
                uint32_t x = origin % 4, y = origin / 4;
                expectTransform<TypeParam>({x, y, x + width, y + height}, 3, 1);
            }
}

TYPED_TEST(J2kWavelet, LargeOnesInPiecesAndThreads)
{
    expectTransform<TypeParam>({7, 3, 7 + 450, 3 + 299}, 5, 2);
    expectTransform<TypeParam>({0, 0, 40, 5000}, 2, 2);
    expectTransform<TypeParam>({1, 2, 30001, 12}, 3, 2);
    expectTransform<TypeParam>({5, 5, 6, 700}, 32, 1);
    expectTransform<TypeParam>({5, 5, 9, 9}, 0, 1);
}

}
