// SPDX-License-Identifier: Apache-2.0
// Tag trees: numbers of code-blocks, coded as far as the reader asks (T.800 B.10.2).
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel::codec::j2k {

// Where the nodes of a tree are in one list.
class TagTreeShape {
public:
    TagTreeShape() = default;
    // For across x down leaves.
    TagTreeShape(uint32_t across, uint32_t down);

    // From the leaves to the root.
    size_t levels() const { return levels_.size(); }
    size_t nodes() const { return nodes_; }
    // Of the node in a level above, or at, a leaf.
    size_t index(size_t level, uint32_t x, uint32_t y) const
    {
        return levels_[level].first + size_t(y >> level) * levels_[level].across + (x >> level);
    }

private:
    struct Level {
        size_t first = 0; // node
        uint32_t across = 0;
    };

    std::vector<Level> levels_;
    size_t nodes_ = 0;
};

class TagTree {
public:
    TagTree() = default;
    TagTree(uint32_t across, uint32_t down) : shape_(across, down), nodes_(shape_.nodes()) {}

    // True if the value of a leaf is below `threshold`, 0 to 65535. Reads the bits that are needed to tell, by calling
    // `bit()`.
    template <class Bit> bool isBelow(uint32_t x, uint32_t y, uint32_t threshold, Bit bit)
    {
        uint32_t low = 0;
        const Node* node = nullptr;
        for (size_t level = shape_.levels(); level-- > 0;) {
            Node& next = nodes_[shape_.index(level, x, y)];
            if (next.low < low) next.low = uint16_t(low);
            while (next.low < threshold && !next.isKnown)
                if (bit())
                    next.isKnown = true;
                else
                    ++next.low;
            low = next.low;
            node = &next;
        }
        return node->isKnown && low < threshold;
    }

private:
    struct Node {
        uint16_t low = 0; // the value is not below
        bool isKnown = false;
    };

    TagTreeShape shape_;
    std::vector<Node> nodes_;
};

// The writing side. Values may be set late: as long as nothing is coded that they would have made different.
class TagTreeEncoder {
public:
    TagTreeEncoder() = default;
    // All leaves have the highest value.
    TagTreeEncoder(uint32_t across, uint32_t down) : shape_(across, down), nodes_(shape_.nodes()) {}

    // Lowers the value of a leaf.
    void set(uint32_t x, uint32_t y, uint16_t value)
    {
        for (size_t level = 0; level < shape_.levels(); ++level) {
            uint16_t& least = nodes_[shape_.index(level, x, y)].value;
            least = std::min(least, value);
        }
    }

    // Writes the bits that the reader needs to tell whether the value of a leaf is below `threshold`, 0 to 65535, by
    // calling `put(bit)`.
    template <class Put> void encode(uint32_t x, uint32_t y, uint32_t threshold, Put put)
    {
        uint32_t low = 0;
        for (size_t level = shape_.levels(); level-- > 0;) {
            Node& node = nodes_[shape_.index(level, x, y)];
            low = std::max<uint32_t>(low, node.low);
            while (low < threshold && !node.isTold) {
                node.isTold = node.value == low;
                put(int(node.isTold));
                low += !node.isTold;
            }
            node.low = uint16_t(low);
        }
    }

private:
    struct Node {
        uint16_t value = UINT16_MAX; // the least of the leaves below
        uint16_t low = 0;            // the reader knows that the value is not below
        bool isTold = false;         // the reader knows that it is `low`
    };

    TagTreeShape shape_;
    std::vector<Node> nodes_;
};

}
