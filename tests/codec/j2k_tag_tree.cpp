// Tag trees: what is written is read, and the standard's example.
#include "codec/j2k_tag_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "random.h"

namespace {

using namespace qel::codec;
using qel::test::Random;

TEST(TagTree, ReadsWhatAnEncoderWrites)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {2, 1}, {1, 7}, {3, 3}, {6, 3}, {16, 16}, {33, 5}};
    for (auto [across, down] : sizes) {
        Random random(across * 100 + down);
        std::vector<int> leaves(size_t(across) * down);
        for (int& leaf : leaves) leaf = random.between(0, 3) ? random.between(0, 9) : 65535;
        TagTreeEncoder encoder(across, down);
        TagTree tree(across, down);
        std::deque<int> bits;
        auto bit = [&] {
            EXPECT_FALSE(bits.empty());
            int next = bits.empty() ? 1 : bits.front();
            if (!bits.empty()) bits.pop_front();
            return next;
        };
        int known = 0; // values are set when the reader asks for them, as a layer at a time is
        for (int threshold : {0, 1, 2, 5, 5, 9, 10, 300}) {
            for (uint32_t i = 0; i < leaves.size(); ++i)
                if (leaves[i] >= known && leaves[i] < threshold)
                    encoder.set(i % across, i / across, uint16_t(leaves[i]));
            known = threshold;
            for (uint32_t i = 0; i < leaves.size(); ++i) {
                uint32_t x = i % across, y = i / across;
                encoder.encode(x, y, uint32_t(threshold), [&](int next) { bits.push_back(next); });
                EXPECT_EQ(tree.isBelow(x, y, uint32_t(threshold), bit), leaves[i] < threshold);
                EXPECT_TRUE(bits.empty());
            }
        }
    }
}

// The example of T.800 B.10.2: leaves 1 3 2 in the first row give 01111 001 101.
TEST(TagTree, KnownBits)
{
    const std::deque<int> known = {0, 1, 1, 1, 1, 0, 0, 1, 1, 0, 1};
    TagTree tree(6, 3);
    TagTreeEncoder encoder(6, 3);
    std::deque<int> bits = known, written;
    auto bit = [&] {
        int next = bits.front();
        bits.pop_front();
        return next;
    };
    const uint16_t values[] = {1, 3, 2, 3, 2, 3, 2, 2, 1, 4, 3, 2, 2, 2, 2, 2, 1, 2};
    for (uint32_t i = 0; i < 18; ++i) encoder.set(i % 6, i / 6, values[i]);
    for (uint32_t x = 0; x < 3; ++x) {
        uint32_t value = 0;
        while (!tree.isBelow(x, 0, value + 1, bit)) ++value;
        EXPECT_EQ(value, values[x]);
        encoder.encode(x, 0, values[x] + 1u, [&](int next) { written.push_back(next); });
    }
    EXPECT_TRUE(bits.empty());
    EXPECT_EQ(written, known);
}

}
