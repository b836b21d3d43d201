// SPDX-License-Identifier: Apache-2.0
// Where code-blocks are cut, and what errors weigh.
#include "codec/j2k/encode/rate_allocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "codec/j2k/encode/band_energy.h"
#include "codec/j2k/wavelet.h"

namespace {

using namespace qel::codec;
using enum j2k::BandKind;

// Energy of what one coefficient, far from all edges, becomes.
template <class Sample> double energyOfOne(int level, j2k::BandKind kind, Sample value)
{
    j2k::Subbands<Sample> bands({0, 0, 256, 256}, level, j2k::Plane<Sample>::Fill::zero);
    j2k::Plane<Sample>& band = bands.band(level, kind);
    band.row(band.height() / 2)[band.width() / 2] = value;
    j2k::Plane<Sample> plane = j2k::inverseWavelet(std::move(bands), 1);
    double energy = 0;
    for (uint32_t y = 0; y < 256; ++y)
        for (uint32_t x = 0; x < 256; ++x) energy += double(plane.row(y)[x]) * double(plane.row(y)[x]);
    return energy / (double(value) * double(value));
}

TEST(BandEnergy, IsThatOfTheInverseTransform)
{
    for (int level : {1, 2, 4})
        for (j2k::BandKind kind : {ll, lh, hl, hh}) {
            EXPECT_NEAR(j2k::bandEnergy(false, 256, 256, level, kind) / energyOfOne(level, kind, 1000.f), 1, 1e-5);
            EXPECT_NEAR(j2k::bandEnergy(true, 256, 256, level, kind) / energyOfOne(level, kind, 1 << 20), 1, 1e-3);
        }
}

j2k::EncodedBlock blockOf(double error, std::vector<j2k::EncodedPass> passes)
{
    j2k::EncodedBlock block;
    block.error = error;
    block.passes = std::move(passes);
    return block;
}

std::vector<int> cutsOf(j2k::EncodedBlock block, int style)
{
    j2k::findTruncations(block, style);
    std::vector<int> cuts;
    for (const j2k::Truncation& truncation : block.truncations) cuts.push_back(truncation.passes);
    EXPECT_TRUE(std::ranges::is_sorted(block.truncations, std::greater(), &j2k::Truncation::slope));
    return cuts;
}

TEST(Truncations, AreTheConvexHull)
{
    using Cuts = std::vector<int>;
    EXPECT_EQ(cutsOf(blockOf(100, {}), 0), Cuts());
    EXPECT_EQ(cutsOf(blockOf(100, {{10, 50}, {20, 20}, {30, 15}}), 0), Cuts({1, 2, 3}));
    // A pass that gains little before one that gains much; passes that gain nothing, or lose.
    EXPECT_EQ(cutsOf(blockOf(100, {{10, 90}, {20, 20}, {30, 20}, {40, 25}, {50, 10}}), 0), Cuts({2, 5}));
    EXPECT_EQ(cutsOf(blockOf(100, {{10, 120}, {20, 110}}), 0), Cuts());
    // Passes without bytes.
    EXPECT_EQ(cutsOf(blockOf(100, {{0, 90}, {0, 80}, {5, 10}, {5, 5}}), 0), Cuts({2, 4}));
    // Segments end behind the first ten passes, and then behind two raw ones and one other.
    std::vector<j2k::EncodedPass> passes;
    for (uint32_t i = 1; i <= 14; ++i) passes.push_back({10 * i, 100.0 / i});
    EXPECT_EQ(cutsOf(blockOf(200, passes), j2k::style::kBypass).size(), 14u);
    EXPECT_EQ(cutsOf(blockOf(200, passes), j2k::style::kBypass | j2k::style::kPredictableTermination),
              Cuts({10, 12, 13, 14}));
}

}
