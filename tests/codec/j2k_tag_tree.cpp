// Tag trees against a plain encoder.
#include "codec/j2k_tag_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "random.h"

namespace {

using namespace qel::codec;
using qel::test::Random;

// Writes what a reader needs to tell whether a leaf is below a threshold: at each node from the root on a 0 for each
// number up to its value, and a 1 there.
class PlainEncoder {
public:
    PlainEncoder(uint32_t across, uint32_t down, std::vector<int> leaves) : levels_{{across, down, leaves, {}}}
    {
        while (levels_.back().across * levels_.back().down > 1) levels_.push_back(above(levels_.back()));
        for (Level& level : levels_) level.told.resize(level.values.size());
    }

    void encode(uint32_t x, uint32_t y, int threshold, std::deque<int>& bits)
    {
        int low = 0;
        for (size_t l = levels_.size(); l-- > 0;) {
            Level& level = levels_[l];
            size_t node = (y >> l) * level.across + (x >> l);
            int &told = level.told[node], value = level.values[node];
            for (told = std::max(told, low); told < threshold && told <= value; ++told) bits.push_back(told == value);
            low = std::min(told, value);
        }
    }

private:
    struct Level {
        uint32_t across, down;
        std::vector<int> values, told; // numbers below `told` have been compared with the value
    };

    static Level above(const Level& level)
    {
        Level next = {(level.across + 1) / 2, (level.down + 1) / 2, {}, {}};
        next.values.assign(size_t(next.across) * next.down, INT32_MAX);
        for (uint32_t i = 0; i < level.values.size(); ++i) {
            int& least = next.values[i / level.across / 2 * next.across + i % level.across / 2];
            least = std::min(least, level.values[i]);
        }
        return next;
    }

    std::vector<Level> levels_;
};

TEST(TagTree, ReadsWhatAnEncoderWrites)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {2, 1}, {1, 7}, {3, 3}, {6, 3}, {16, 16}, {33, 5}};
    for (auto [across, down] : sizes) {
        Random random(across * 100 + down);
        std::vector<int> leaves(size_t(across) * down);
        for (int& leaf : leaves) leaf = random.between(0, 3) ? random.between(0, 9) : 65535;
        PlainEncoder encoder(across, down, leaves);
        TagTree tree(across, down);
        std::deque<int> bits;
        auto bit = [&] {
            EXPECT_FALSE(bits.empty());
            int next = bits.empty() ? 1 : bits.front();
            if (!bits.empty()) bits.pop_front();
            return next;
        };
        for (int threshold : {0, 1, 2, 5, 5, 9, 10, 300})
            for (uint32_t y = 0; y < down; ++y)
                for (uint32_t x = 0; x < across; ++x) {
                    encoder.encode(x, y, threshold, bits);
                    EXPECT_EQ(tree.isBelow(x, y, uint32_t(threshold), bit), leaves[y * across + x] < threshold);
                    EXPECT_TRUE(bits.empty());
                }
    }
}

// The example of T.800 B.10.2: leaves 1 3 2 in the first row give 01111 001 101.
TEST(TagTree, KnownBits)
{
    TagTree tree(6, 3);
    std::deque<int> bits = {0, 1, 1, 1, 1, 0, 0, 1, 1, 0, 1};
    auto bit = [&] {
        int next = bits.front();
        bits.pop_front();
        return next;
    };
    const uint32_t values[] = {1, 3, 2};
    for (uint32_t x = 0; x < 3; ++x) {
        uint32_t value = 0;
        while (!tree.isBelow(x, 0, value + 1, bit)) ++value;
        EXPECT_EQ(value, values[x]);
    }
    EXPECT_TRUE(bits.empty());
}

}
