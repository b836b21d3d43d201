// Huffman objects: sizes, contents, bad lists, and optimal tables.
#include "jpeg/huffman_tables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "argument_faults.h"
#include "guarded.h"
#include "huffman_reference.h"

using namespace qel::test;

namespace {

// The luminance DC table of T.81 K.3.1: two of its codes are 00 (value 0) and 111111110 (value 11).
const uint8_t kBits[16] = {0, 1, 5, 1, 1, 1, 1, 1, 1};
const uint8_t kValues[12] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};

TEST(HuffmanObjects, SizesAndZeroStates)
{
    int size = 0;
    EXPECT_EQ(qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(&size), qelStsNoErr);
    EXPECT_EQ(size, 1644);
    EXPECT_EQ(qeliEncodeHuffmanSpecGetBufSize_JPEG_8u(&size), qelStsNoErr);
    EXPECT_EQ(size, 1024);
    EXPECT_EQ(qeliDecodeHuffmanStateGetBufSize_JPEG_8u(&size), qelStsNoErr);
    EXPECT_EQ(size, 20);
    Guarded<uint8_t> reading(size);
    EXPECT_EQ(qeliDecodeHuffmanStateInit_JPEG_8u((QelDecodeHuffmanState*)reading.data()), qelStsNoErr);
    EXPECT_EQ(std::accumulate(reading.data(), reading.data() + size, 0), 0);
    EXPECT_EQ(qeliEncodeHuffmanStateGetBufSize_JPEG_8u(&size), qelStsNoErr);
    EXPECT_EQ(size, 1044);
    Guarded<uint8_t> writing(size);
    EXPECT_EQ(qeliEncodeHuffmanStateInit_JPEG_8u((QelEncodeHuffmanState*)writing.data()), qelStsNoErr);
    EXPECT_EQ(std::accumulate(writing.data(), writing.data() + size, 0), 0);
    EXPECT_TRUE(reading.intact() && writing.intact());
}

TEST(HuffmanObjects, NullPointers)
{
    QelDecodeHuffmanSpec* decoding = nullptr;
    QelEncodeHuffmanSpec encoding;
    uint32_t statistics[256] = {};
    uint8_t lists[256];
    expectFaults(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, {kBits, kValues, &decoding}, null<0>, null<1>, null<2>);
    EXPECT_EQ(decoding, nullptr);
    expectFaults(qeliEncodeHuffmanSpecInit_JPEG_8u, {kBits, kValues, &encoding}, null<0>, null<1>, null<2>);
    expectFaults(qeliEncodeHuffmanRawTableInit_JPEG_8u, {statistics, lists, lists}, null<0>, null<1>, null<2>);
    EXPECT_EQ(qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(nullptr), qelStsNullPtrErr);
    EXPECT_EQ(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(nullptr), qelStsNullPtrErr);
    EXPECT_EQ(qeliDecodeHuffmanSpecFree_JPEG_8u(nullptr), qelStsNullPtrErr);
    EXPECT_EQ(qeliEncodeHuffmanStateFree_JPEG_8u(nullptr), qelStsNullPtrErr);
}

TEST(HuffmanObjects, AllocatedOnesAreAlignedAndZero)
{
    QelEncodeHuffmanState* writing = nullptr;
    QelDecodeHuffmanState* reading = nullptr;
    ASSERT_EQ(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(&writing), qelStsNoErr);
    ASSERT_EQ(qeliDecodeHuffmanStateInitAlloc_JPEG_8u(&reading), qelStsNoErr);
    EXPECT_EQ((uintptr_t)writing % 32 + (uintptr_t)reading % 32, 0u);
    EXPECT_EQ(writing->count | reading->count | writing->correctionBits[1023] | (int)reading->positionsLeft, 0);
    EXPECT_EQ(qeliEncodeHuffmanStateFree_JPEG_8u(writing), qelStsNoErr);
    EXPECT_EQ(qeliDecodeHuffmanStateFree_JPEG_8u(reading), qelStsNoErr);
}

TEST(DecodeHuffmanSpec, Contents)
{
    QelDecodeHuffmanSpec* spec = nullptr;
    ASSERT_EQ(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u(kBits, kValues, &spec), qelStsNoErr);
    EXPECT_EQ(spec->values[11], 11);
    EXPECT_EQ(spec->values[12], 0);
    EXPECT_EQ(spec->lookAhead[0x00], (2u << 16) | 0);
    EXPECT_EQ(spec->lookAhead[0x3F], (2u << 16) | 0);
    EXPECT_EQ(spec->lookAhead[0x40], (3u << 16) | 1);
    EXPECT_EQ(spec->lookAhead[0xFE], (8u << 16) | 10);
    EXPECT_EQ(spec->lookAhead[0xFF], 0u); // 111111110 has nine bits
    const uint16_t firstCodes[18] = {0, 0, 0, 2, 14, 30, 62, 126, 254, 510};
    const uint16_t largest[18] = {0,   0xFFFF, 0,      6,      14,     30,     62,     126,    254,
                                  510, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF};
    const uint16_t indices[17] = {0, 0, 0, 1, 6, 7, 8, 9, 10, 11};
    EXPECT_EQ(memcmp(spec->firstCode, firstCodes, sizeof firstCodes), 0);
    EXPECT_EQ(memcmp(spec->largestCode + 1, largest + 1, sizeof largest - 2), 0);
    EXPECT_EQ(memcmp(spec->valueIndex, indices, sizeof indices), 0);
    EXPECT_EQ(qeliDecodeHuffmanSpecFree_JPEG_8u(spec), qelStsNoErr);
}

TEST(EncodeHuffmanSpec, Contents)
{
    QelEncodeHuffmanSpec* spec = nullptr;
    ASSERT_EQ(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(kBits, kValues, &spec), qelStsNoErr);
    EXPECT_EQ(spec->entries[0], (2u << 16) | 0);
    EXPECT_EQ(spec->entries[1], (3u << 16) | 2);
    EXPECT_EQ(spec->entries[11], (9u << 16) | 510);
    EXPECT_EQ(spec->entries[12], 0u);
    EXPECT_EQ(qeliEncodeHuffmanSpecFree_JPEG_8u(spec), qelStsNoErr);

    // A value that is listed twice has its later code.
    const uint8_t bits[16] = {0, 3}, values[3] = {7, 8, 7};
    QelEncodeHuffmanSpec twice;
    ASSERT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(bits, values, &twice), qelStsNoErr);
    EXPECT_EQ(twice.entries[7], (2u << 16) | 2);
}

TEST(HuffmanSpecs, EmptyLists)
{
    const uint8_t bits[16] = {};
    QelEncodeHuffmanSpec encoding;
    QelDecodeHuffmanSpec decoding;
    ASSERT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(bits, kValues, &encoding), qelStsNoErr);
    ASSERT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(bits, kValues, &decoding), qelStsNoErr);
    for (int i = 0; i < 256; ++i) ASSERT_EQ(encoding.entries[i] | decoding.lookAhead[i], 0u);
    for (int length = 1; length <= 17; ++length) ASSERT_EQ(decoding.largestCode[length], 0xFFFF);
}

TEST(HuffmanSpecs, BadLists)
{
    std::vector<uint8_t> values(256);
    std::iota(values.begin(), values.end(), 0);
    const struct {
        const char* what;
        uint8_t bits[16];
        QelStatus encoder, decoder;
    } table[] = {
        {"256 codes", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 128, 128, 0}, qelStsNoErr, qelStsNoErr},
        {"257 codes",
         {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 128, 128, 0},
         qelStsJPEGHuffSpecErr,
         qelStsJPEGHuffSpecErr},
        {"more than fit", {2, 1}, qelStsJPEGHuffSpecErr, qelStsNoErr},
        {"all ones in use", {1, 2}, qelStsJPEGHuffSpecErr, qelStsNoErr},
        {"256 codes of one bit",
         {255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
         qelStsJPEGHuffSpecErr,
         qelStsNoErr},
    };
    for (auto& row : table) {
        Guarded<QelEncodeHuffmanSpec> encoding(1);
        Guarded<QelDecodeHuffmanSpec> decoding(1);
        EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(row.bits, values.data(), encoding.data()), row.encoder) << row.what;
        EXPECT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(row.bits, values.data(), decoding.data()), row.decoder) << row.what;
        EXPECT_TRUE(encoding.intact() && decoding.intact()) << row.what;
    }
    // A rejected table is handed over all the same, to be freed.
    QelEncodeHuffmanSpec* spec = nullptr;
    EXPECT_EQ(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(table[2].bits, values.data(), &spec), qelStsJPEGHuffSpecErr);
    EXPECT_EQ(qeliEncodeHuffmanSpecFree_JPEG_8u(spec), qelStsNoErr);
}

// Values are read only as far as the list of counts says.
TEST(HuffmanSpecs, ReadNoValueTooMany)
{
    Guarded<uint8_t> values(12);
    memcpy(values.data(), kValues, 12);
    QelEncodeHuffmanSpec encoding;
    QelDecodeHuffmanSpec decoding;
    EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(kBits, values.data(), &encoding), qelStsNoErr);
    EXPECT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(kBits, values.data(), &decoding), qelStsNoErr);
}

TEST(OptimalTable, NothingCounted)
{
    uint32_t statistics[256] = {};
    uint8_t bits[16], values[1] = {77};
    ASSERT_EQ(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics, bits, values), qelStsNoErr);
    EXPECT_EQ(std::accumulate(bits, bits + 16, 0), 0);
    EXPECT_EQ(values[0], 77);
}

// T.81 Figures K.1 to K.4, step by step.
struct SlowTable {
    std::array<int64_t, 257> frequency{};
    std::array<int, 257> length{}, next{};
    std::array<int, 64> counts{};
    std::vector<uint8_t> bits, values;

    explicit SlowTable(const std::array<uint32_t, 256>& statistics)
    {
        std::copy(statistics.begin(), statistics.end(), frequency.begin());
        frequency[256] = 1;
        next.fill(-1);
        for (int a, b; (a = rarest(-1)) >= 0 && (b = rarest(a)) >= 0;) join(a, b);
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
    void join(int a, int b)
    {
        frequency[a] += frequency[b];
        frequency[b] = 0;
        for (++length[a]; next[a] >= 0;) ++length[a = next[a]];
        next[a] = b;
        for (++length[b]; next[b] >= 0;) ++length[b = next[b]];
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
        std::vector<uint8_t> bits(16), values(256);
        QelStatus status = qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), bits.data(), values.data());
        ASSERT_EQ(status, expected.isTooDeep() ? qelStsJPEGHuffSpecErr : qelStsNoErr);
        tooDeep += expected.isTooDeep();
        if (expected.isTooDeep()) continue;
        ASSERT_EQ(bits, expected.bits);
        values.resize(expected.values.size());
        ASSERT_EQ(values, expected.values);
    }
    EXPECT_GT(tooDeep, 5);
}

}
