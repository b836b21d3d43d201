// Where code-blocks may be cut.
#include "codec/j2k_rate_allocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace {

using namespace qel::codec;

J2kEncodedBlock blockOf(double error, std::vector<J2kEncodedPass> passes)
{
    J2kEncodedBlock block;
    block.error = error;
    block.passes = std::move(passes);
    return block;
}

std::vector<int> cutsOf(J2kEncodedBlock block, int style)
{
    findTruncations(block, style);
    std::vector<int> cuts;
    for (const J2kTruncation& truncation : block.truncations) cuts.push_back(truncation.passes);
    EXPECT_TRUE(std::ranges::is_sorted(block.truncations, std::greater(), &J2kTruncation::slope));
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
    std::vector<J2kEncodedPass> passes;
    for (uint32_t i = 1; i <= 14; ++i) passes.push_back({10 * i, 100.0 / i});
    EXPECT_EQ(cutsOf(blockOf(200, passes), j2k_style::kBypass).size(), 14u);
    EXPECT_EQ(cutsOf(blockOf(200, passes), j2k_style::kBypass | j2k_style::kPredictableTermination),
              Cuts({10, 12, 13, 14}));
}

}
