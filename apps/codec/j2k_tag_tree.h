// Tag trees: numbers of code-blocks, coded as far as the reader asks (T.800 B.10.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qel::codec {

class TagTree {
public:
    TagTree() = default;
    // For across x down leaves.
    TagTree(uint32_t across, uint32_t down);

    // True if the value of a leaf is below `threshold`, 0 to 65535. Reads the bits that are needed to tell, by calling
    // `bit()`.
    template <class Bit> bool isBelow(uint32_t x, uint32_t y, uint32_t threshold, Bit bit)
    {
        uint32_t low = 0;
        const Node* node = nullptr;
        for (size_t level = levels_.size(); level-- > 0;) {
            Node& next = nodes_[levels_[level].first + size_t(y >> level) * levels_[level].across + (x >> level)];
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
    struct Level {
        size_t first = 0; // node
        uint32_t across = 0;
    };

    std::vector<Level> levels_; // from the leaves to the root
    std::vector<Node> nodes_;
};

}
