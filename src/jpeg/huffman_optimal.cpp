// The best Huffman table for given statistics (T.81 K.2).
#include <stdint.h>
#include <string.h>

#include "core/checks.h"
#include "jpeg/huffman_tables.h"

using namespace qel;

namespace {

// One symbol more than there are: it takes the code of all ones, which no symbol may have.
constexpr int kReserved = 256;
constexpr int kSymbols = 257;
constexpr int kLongestUnlimited = 32;
constexpr int kNone = -1;
// A frequency above this is never the smallest.
constexpr int64_t kCeiling = 1'000'000'000;

// Trees that are joined two at a time. The symbols of a tree form a chain that starts at the one with its frequency.
struct Forest {
    int64_t frequency[kSymbols]; // 0 for a symbol that is no chain's start
    int length[kSymbols];
    int next[kSymbols];

    explicit Forest(const uint32_t* statistics)
    {
        for (int i = 0; i < kSymbols; ++i) {
            frequency[i] = i == kReserved ? 1 : statistics[i];
            length[i] = 0;
            next[i] = kNone;
        }
    }

    // The rarest tree but `other`; of equally rare ones the last.
    int rarest(int other) const
    {
        int found = kNone;
        int64_t least = kCeiling;
        for (int i = 0; i < kSymbols; ++i)
            if (frequency[i] != 0 && frequency[i] <= least && i != other) {
                least = frequency[i];
                found = i;
            }
        return found;
    }

    // Makes every code of a tree one bit longer; returns the last symbol of its chain.
    int lengthen(int tree)
    {
        ++length[tree];
        while (next[tree] != kNone) ++length[tree = next[tree]];
        return tree;
    }

    void joinAll()
    {
        for (;;) {
            int a = rarest(kNone);
            if (a == kNone) return;
            int b = rarest(a);
            if (b == kNone) return;
            frequency[a] += frequency[b];
            frequency[b] = 0;
            int last = lengthen(a);
            lengthen(b);
            next[last] = b;
        }
    }
};

// False if a code is too long even for the table that is to be limited.
bool countLengths(const Forest& forest, int* counts)
{
    for (int length : forest.length) {
        if (length > kLongestUnlimited) return false;
        if (length > 0) ++counts[length];
    }
    return true;
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
    int counts[kLongestUnlimited + 1] = {};
    if (!countLengths(forest, counts)) return qelStsJPEGHuffSpecErr;
    limitLengths(counts);
    removeReserved(counts);
    for (int length = 1; length <= kLongestCode; ++length) pBits[length - 1] = (uint8_t)counts[length];
    for (int length = 1; length <= kLongestUnlimited; ++length)
        for (int symbol = 0; symbol < kReserved; ++symbol)
            if (forest.length[symbol] == length) *pVals++ = (uint8_t)symbol;
    return qelStsNoErr;
}
