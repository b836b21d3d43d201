// SPDX-License-Identifier: Apache-2.0
// Huffman objects: sizes, bad lists, and optimal tables. What is in them shows when they are used.
#include "jpeg/entropy/huffman_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "argument_faults.h"
#include "guarded.h"
#include "huffman_reference.h"

using namespace qel;
using namespace qel::test;

namespace {

// A state, or a table of lists: in memory of the size asked for, and in the library's own.
template <class Object, class Init, class InitAlloc, class... Lists>
void checkObject(int bytes, QelStatus (*getBufSize)(int*), Init init, InitAlloc initAlloc, QelStatus (*free)(Object*),
                 Lists... lists)
{
    int size = 0;
    EXPECT_EQ(getBufSize(&size), qelStsNoErr);
    ASSERT_EQ(size, bytes);
    Guarded<uint8_t> memory(static_cast<size_t>(bytes));
    EXPECT_EQ(init(lists..., (Object*)memory.data()), qelStsNoErr);
    EXPECT_TRUE(memory.intact());
    Object* allocated = nullptr;
    ASSERT_EQ(initAlloc(lists..., &allocated), qelStsNoErr);
    EXPECT_EQ((uintptr_t)allocated % 32, 0u);
    EXPECT_EQ(memcmp(allocated, memory.data(), size_t(bytes)), 0);
    bool isZero = std::count(memory.data(), memory.data() + bytes, 0) == bytes;
    EXPECT_EQ(isZero, sizeof...(lists) == 0);
    EXPECT_EQ(free(allocated), qelStsNoErr);
    expectFaults(init, {lists..., (Object*)memory.data()}, null<sizeof...(lists)>);
    expectFaults(initAlloc, {lists..., &allocated}, null<sizeof...(lists)>);
    EXPECT_EQ(getBufSize(nullptr), qelStsNullPtrErr);
    EXPECT_EQ(free(nullptr), qelStsNullPtrErr);
}

TEST(HuffmanObjects, StatesBeginAsZero)
{
    checkObject(20, qeliDecodeHuffmanStateGetBufSize_JPEG_8u, qeliDecodeHuffmanStateInit_JPEG_8u,
                qeliDecodeHuffmanStateInitAlloc_JPEG_8u, qeliDecodeHuffmanStateFree_JPEG_8u);
    checkObject(1044, qeliEncodeHuffmanStateGetBufSize_JPEG_8u, qeliEncodeHuffmanStateInit_JPEG_8u,
                qeliEncodeHuffmanStateInitAlloc_JPEG_8u, qeliEncodeHuffmanStateFree_JPEG_8u);
}

// From the luminance DC table of T.81 K.3.1. No more values are read than the list of counts says. A rejected table is
// handed over all the same, to be freed.
TEST(HuffmanObjects, Specs)
{
    const uint8_t bits[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1}, tooMany[16] = {2, 1};
    Guarded<uint8_t> values(12);
    std::iota(values.data(), values.data() + 12, uint8_t(0));
    const uint8_t* list = values.data();
    checkObject(1644, qeliDecodeHuffmanSpecGetBufSize_JPEG_8u, qeliDecodeHuffmanSpecInit_JPEG_8u,
                qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, qeliDecodeHuffmanSpecFree_JPEG_8u, bits, list);
    checkObject(1024, qeliEncodeHuffmanSpecGetBufSize_JPEG_8u, qeliEncodeHuffmanSpecInit_JPEG_8u,
                qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, qeliEncodeHuffmanSpecFree_JPEG_8u, bits, list);
    QelDecodeHuffmanSpec decoding, *newDecoding = nullptr;
    QelEncodeHuffmanSpec encoding, *newEncoding = nullptr;
    expectFaults(qeliDecodeHuffmanSpecInit_JPEG_8u, {bits, list, &decoding}, null<0>, null<1>);
    expectFaults(qeliEncodeHuffmanSpecInit_JPEG_8u, {bits, list, &encoding}, null<0>, null<1>);
    expectFaults(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, {bits, list, &newDecoding}, null<0>, null<1>);
    expectFaults(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, {bits, list, &newEncoding}, null<0>, null<1>);
    EXPECT_TRUE(newDecoding == nullptr && newEncoding == nullptr);
    EXPECT_EQ(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(tooMany, list, &newEncoding), qelStsJPEGHuffSpecErr);
    EXPECT_EQ(qeliEncodeHuffmanSpecFree_JPEG_8u(newEncoding), qelStsNoErr);
}

TEST(HuffmanSpecs, OddLists)
{
    uint8_t values[256];
    std::iota(values, values + 256, uint8_t(0));
    const struct {
        const char* what;
        uint8_t bits[16];
        QelStatus encoder, decoder;
    } table[] = {
        {"none", {}, qelStsNoErr, qelStsNoErr},
        {"256 codes", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 128, 128, 0}, qelStsNoErr, qelStsNoErr},
        {"257", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 128, 128, 0}, qelStsJPEGHuffSpecErr, qelStsJPEGHuffSpecErr},
        {"more than fit", {2, 1}, qelStsJPEGHuffSpecErr, qelStsNoErr},
        {"all ones in use", {1, 2}, qelStsJPEGHuffSpecErr, qelStsNoErr},
        {"255 codes of one bit",
         {255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
         qelStsJPEGHuffSpecErr,
         qelStsNoErr},
    };
    for (auto& row : table) {
        Guarded<QelEncodeHuffmanSpec> encoding(1);
        Guarded<QelDecodeHuffmanSpec> decoding(1);
        EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(row.bits, values, encoding.data()), row.encoder) << row.what;
        EXPECT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(row.bits, values, decoding.data()), row.decoder) << row.what;
        EXPECT_TRUE(encoding.intact() && decoding.intact()) << row.what;
        EXPECT_TRUE(row.decoder != qelStsNoErr || decoding.data()->largestCode[17] == kNoCodeOfLength) << row.what;
    }
    // A value that is listed twice has its later code.
    const uint8_t bits[16] = {0, 3}, twice[3] = {7, 8, 7};
    QelEncodeHuffmanSpec spec;
    ASSERT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(bits, twice, &spec), qelStsNoErr);
    EXPECT_EQ(spec.entries[7], (2u << 16) | 2);
}

// T.81 Figures K.1 to K.4, step by step.
struct SlowTable {
    std::array<int64_t, 257> frequency{};
    std::array<std::vector<int>, 257> symbols;
    std::array<int, 257> length{};
    std::array<int, 64> counts{};
    std::vector<uint8_t> bits, values;

    explicit SlowTable(const std::array<uint32_t, 256>& statistics)
    {
        std::copy(statistics.begin(), statistics.end(), frequency.begin());
        frequency[256] = 1;
        for (int i = 0; i < 257; ++i) symbols[i] = {i};
        for (int a, b; (a = rarest(-1)) >= 0 && (b = rarest(a)) >= 0;) {
            frequency[a] += std::exchange(frequency[b], 0);
            symbols[a].insert(symbols[a].end(), symbols[b].begin(), symbols[b].end());
            for (int i : symbols[a]) ++length[i];
        }
        for (int n : length) ++counts[std::min(n, 63)];
        if (isTooDeep()) return;
        limit();
        bits.assign(counts.begin() + 1, counts.begin() + 17);
        for (int n = 1; n <= 32; ++n)
            for (int i = 0; i < 256; ++i)
                if (length[i] == n) values.push_back(uint8_t(i));
    }
    bool isTooDeep() const
    {
        return std::any_of(length.begin(), length.end(), [](int n) { return n > 32; });
    }

private:
    int rarest(int other) const
    {
        int found = -1;
        int64_t least = 1'000'000'000;
        for (int i = 0; i < 257; ++i)
            if (i != other && frequency[i] != 0 && frequency[i] <= least) least = frequency[found = i];
        return found;
    }
    void limit()
    {
        for (int i = 32; i > 16; --i)
            while (counts[i] > 0) {
                int j = i - 2;
                while (counts[j] == 0) --j;
                counts[i] -= 2, counts[i - 1] += 1, counts[j + 1] += 2, counts[j] -= 1;
            }
        int longest = 16;
        while (longest > 0 && counts[longest] == 0) --longest;
        if (longest > 0) --counts[longest];
    }
};

// Statistics as steep as they may be and steeper, none and one, equally rare symbols, many and few, and counters above
// the ceiling.
TEST(OptimalTable, EqualsTheStepByStepOne)
{
    Random random(9);
    int tooDeep = 0;
    for (int round = 0; round < 1000; ++round) {
        std::array<uint32_t, 256> statistics{};
        int kind = random.between(0, 3), scale = random.between(0, 31), gaps = random.between(0, 9);
        for (int i = 0; i < 256; ++i) {
            if (kind != 0 && random.between(0, gaps) != 0) continue;
            statistics[i] = kind == 0   ? i < 43 ? uint32_t(std::pow(1.45 + scale / 150.0, i)) : 0
                            : kind == 1 ? 1u << random.between(0, scale)
                            : kind == 2 ? uint32_t(random.between(0, 1 << random.between(0, scale % 8)))
                                        : uint32_t(random.between(0, 1'200'000'000));
        }
        // Fibonacci numbers make a chain, the deepest tree with the slowest growth.
        if (round < 40) statistics = {};
        for (uint32_t i = 0, a = 1, b = 2; round < 40 && i < uint32_t(round); ++i, b += a, a = b - a) statistics[i] = a;
        SlowTable expected(statistics);
        std::vector<uint8_t> bits(16), values(256, 77);
        QelStatus status = qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), bits.data(), values.data());
        ASSERT_EQ(status, expected.isTooDeep() ? qelStsJPEGHuffSpecErr : qelStsNoErr);
        tooDeep += expected.isTooDeep();
        if (expected.isTooDeep()) continue;
        ASSERT_EQ(bits, expected.bits);
        expected.values.resize(256, 77); // nothing is written after the last symbol
        ASSERT_EQ(values, expected.values);
    }
    EXPECT_GT(tooDeep, 5);
    uint32_t statistics[256] = {};
    uint8_t lists[256];
    expectFaults(qeliEncodeHuffmanRawTableInit_JPEG_8u, {statistics, lists, lists}, null<0>, null<1>, null<2>);
}

}
