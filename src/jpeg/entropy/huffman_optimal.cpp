// SPDX-License-Identifier: Apache-2.0
// The best Huffman table for given statistics (T.81 K.2).
#include <stdint.h>

#include <algorithm>

#include "core/checks.h"
#include "jpeg/entropy/huffman_tables.h"

using namespace qel;

namespace {

// One symbol more than there are: it takes the code of all ones, which no symbol may have.
constexpr int kReserved = 256;
constexpr int kSymbols = 257;
constexpr int kLongestUnlimited = 32;
// A frequency above this is never the smallest.
constexpr uint64_t kCeiling = 1'000'000'000;

// Trees that are joined two at a time, always the two rarest; of equally rare ones that of the highest symbol first,
// where a tree has the symbol of the rarer of the two that it was made of.
class Forest {
public:
    explicit Forest(const uint32_t* statistics)
    {
        for (int i = 0; i < kSymbols; ++i) {
            uint64_t frequency = i == kReserved ? 1 : statistics[i];
            if (frequency > 0) leaves_[leafCount_++] = {frequency, i, i};
        }
        std::sort(leaves_, leaves_ + leafCount_, isRarer);
    }

    void joinAll()
    {
        Tree a, b;
        while (takeRarest(a) && takeRarest(b)) {
            int node = kSymbols + madeCount_;
            parent_[a.node] = parent_[b.node] = int16_t(node);
            insert({a.frequency + b.frequency, a.symbol, node});
        }
    }

    // Of the code of each symbol, once all are joined; 0 for one without a code.
    void measure(int* lengths) const
    {
        int depth[kNodes] = {};
        for (int node = kSymbols + madeCount_ - 1; node >= 0; --node)
            if (parent_[node] != 0) depth[node] = depth[parent_[node]] + 1;
        std::copy(depth, depth + kSymbols, lengths);
    }

private:
    struct Tree {
        uint64_t frequency;
        int symbol;
        int node;
    };
    static bool isRarer(const Tree& a, const Tree& b)
    {
        return a.frequency != b.frequency ? a.frequency < b.frequency : a.symbol > b.symbol;
    }

    bool takeRarest(Tree& tree)
    {
        bool hasLeaf = nextLeaf_ < leafCount_, hasMade = nextMade_ < madeCount_;
        if (!hasLeaf && !hasMade) return false;
        bool isLeaf = hasLeaf && (!hasMade || isRarer(leaves_[nextLeaf_], made_[nextMade_]));
        tree = isLeaf ? leaves_[nextLeaf_++] : made_[nextMade_++];
        return tree.frequency <= kCeiling;
    }

    // A new tree is no rarer than those made before it, but may come before some that are as rare.
    void insert(const Tree& tree)
    {
        int at = madeCount_++;
        for (; at > nextMade_ && isRarer(tree, made_[at - 1]); --at) made_[at] = made_[at - 1];
        made_[at] = tree;
    }

    static constexpr int kNodes = 2 * kSymbols;
    Tree leaves_[kSymbols], made_[kSymbols]; // each from its rarest on
    int leafCount_ = 0, nextLeaf_ = 0, madeCount_ = 0, nextMade_ = 0;
    int16_t parent_[kNodes] = {}; // 0 for a root
};

// False if a code is too long even for the table that is to be limited.
bool countLengths(const int* lengths, int* counts)
{
    for (int i = 0; i < kSymbols; ++i) {
        int length = lengths[i];
        if (length > kLongestUnlimited) return false;
        if (length > 0) ++counts[length];
    }
    return true;
}

// The symbols in order of code length, and in their own among equally long ones.
void listValues(const int* lengths, uint8_t* values)
{
    uint8_t* next[kLongestUnlimited + 1] = {};
    int counts[kLongestUnlimited + 1] = {};
    for (int symbol = 0; symbol < kReserved; ++symbol) ++counts[lengths[symbol]];
    for (int length = 1; length <= kLongestUnlimited; values += counts[length++]) next[length] = values;
    for (int symbol = 0; symbol < kReserved; ++symbol)
        if (lengths[symbol] > 0) *next[lengths[symbol]]++ = uint8_t(symbol);
}

// T.81 Figure K.3: two codes that are too long become one a bit shorter and two below a shorter prefix.
void limitLengths(int* counts)
{
    for (int length = kLongestUnlimited; length > kLongestCode; --length)
        while (counts[length] > 0) {
            int prefix = length - 2;
            while (counts[prefix] == 0) --prefix;
            counts[length] -= 2;
            counts[length - 1] += 1;
            counts[prefix + 1] += 2;
            counts[prefix] -= 1;
        }
}

void removeReserved(int* counts)
{
    int length = kLongestCode;
    while (length > 0 && counts[length] == 0) --length;
    if (length > 0) --counts[length];
}

}

QelStatus qeliEncodeHuffmanRawTableInit_JPEG_8u(const uint32_t* pStatistics, uint8_t* pBits, uint8_t* pVals)
{
    if (QelStatus bad = pointers(pStatistics, pBits, pVals)) return bad;
    Forest forest(pStatistics);
    forest.joinAll();
    int lengths[kSymbols];
    forest.measure(lengths);
    int counts[kLongestUnlimited + 1] = {};
    if (!countLengths(lengths, counts)) return qelStsJPEGHuffSpecErr;
    limitLengths(counts);
    removeReserved(counts);
    for (int length = 1; length <= kLongestCode; ++length) pBits[length - 1] = uint8_t(counts[length]);
    listValues(lengths, pVals);
    return qelStsNoErr;
}
