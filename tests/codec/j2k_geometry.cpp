// SPDX-License-Identifier: Apache-2.0
// Where things lie, as far as files of usual sizes do not show it.
#include "codec/j2k/geometry.h"

#include <gtest/gtest.h>

#include "codec/j2k/tile.h"

namespace qel::codec {

inline void PrintTo(const j2k::Rect& r, std::ostream* out)
{
    *out << r.x0 << ',' << r.y0 << ".." << r.x1 << ',' << r.y1;
}

}

namespace {

using namespace qel::codec;
using enum j2k::BandKind;

j2k::Size sizeOf(j2k::Rect picture, j2k::Rect firstTile, std::vector<j2k::Component> components)
{
    j2k::Size size;
    size.picture = picture;
    size.firstTile = firstTile;
    size.components = std::move(components);
    return size;
}

TEST(J2kGeometry, TilesUpToTheEndOfTheGrid)
{
    j2k::Size size = sizeOf({0, 0, UINT32_MAX, 1}, {0, 0, UINT32_MAX, UINT32_MAX}, {{}});
    EXPECT_EQ(size.tiles(), 1u);
    EXPECT_EQ(size.tile(0), size.picture);
    size.firstTile.x1 = 0x80000000;
    EXPECT_EQ(size.tiles(), 2u);
    EXPECT_EQ(size.tile(1), (j2k::Rect{0x80000000, 0, UINT32_MAX, 1}));
}

// Divisors and cells beyond 32 bits, and bands without samples.
TEST(J2kGeometry, BandsAndPartitionsUpToTheEndOfTheGrid)
{
    const j2k::Rect widest = {0, 0, UINT32_MAX, 1}, odd = {17, 5, 30, 6};
    EXPECT_EQ(j2k::bandRect(widest, 32, ll), (j2k::Rect{0, 0, 1, 1}));
    EXPECT_EQ(j2k::bandRect(widest, 32, hh), (j2k::Rect{0, 0, 1, 0}));
    EXPECT_EQ(j2k::resolutionRect(odd, 1), (j2k::Rect{9, 3, 15, 3})); // no row is low
    EXPECT_EQ(j2k::bandRect(odd, 3, hh), (j2k::Rect{2, 1, 4, 1}));
    EXPECT_EQ(j2k::Grid({5, 8, 5, 9}, 3, 2).cells(), 0u);
    EXPECT_EQ(j2k::Grid({0, 0, UINT32_MAX, UINT32_MAX}, 15, 15).cells(), uint64_t(1) << 34);
}

}
