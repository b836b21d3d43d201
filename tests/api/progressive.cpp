// Blocks through all scans of a progressive picture, there and back.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "guarded.h"
#include "jpeg/huffman_tables.h"
#include "qeljx.h"
#include "random.h"
#include "scan_scripts.h"

using namespace qel::test;

namespace {

using Block = std::array<int16_t, 64>;
using Blocks = std::vector<Block>;

// Codes and decodes one scan after the other, with tables made from its own statistics, and a new interval after every
// `interval` blocks.
class ScanPath {
public:
    ScanPath(Blocks source, int interval) : source_(std::move(source)), interval_(interval), result_(source_.size()) {}

    void run(const Band& band)
    {
        band_ = band;
        statistics_.fill(0);
        isCounting_ = true;
        forBlocks([&](const int16_t* block, int flush) { return count(block, flush); });
        isCounting_ = false;
        std::array<uint8_t, 16> bits;
        std::array<uint8_t, 256> values;
        ASSERT_EQ(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics_.data(), bits.data(), values.data()), qelStsNoErr);
        ASSERT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(bits.data(), values.data(), &encodeSpec_), qelStsNoErr);
        ASSERT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(bits.data(), values.data(), &decodeSpec_), qelStsNoErr);
        bytes_.assign(source_.size() * 512 + 4096, 0);
        ends_.clear();
        position_ = 0;
        forBlocks([&](const int16_t* block, int flush) { return encode(block, flush); });
        decodeAll();
    }

    const Blocks& result() const { return result_; }

private:
    bool isDc() const { return band_.first == 0; }

    // Calls step(block, 0) for each block, and step(nullptr, 1) behind each interval.
    template <class Step> void forBlocks(Step step)
    {
        ASSERT_EQ(qeliEncodeHuffmanStateInit_JPEG_8u(&encodeState_), qelStsNoErr);
        for (size_t i = 0; i < source_.size(); ++i) {
            if (i % interval_ == 0) lastDc_ = 0;
            ASSERT_EQ(step(source_[i].data(), 0), qelStsNoErr) << i;
            if ((i + 1) % interval_ != 0 && i + 1 != source_.size()) continue;
            ASSERT_EQ(step(nullptr, 1), qelStsNoErr);
            if (!isCounting_) ends_.push_back(position_);
        }
    }

    QelStatus count(const int16_t* block, int flush)
    {
        auto [ss, se, high, al] = band_;
        if (isDc())
            return high || flush
                       ? qelStsNoErr
                       : qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(block, statistics_.data(), &lastDc_, al);
        auto* function =
            high ? qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1 : qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1;
        return function(block, statistics_.data(), ss, se, al, &encodeState_, flush);
    }

    QelStatus encode(const int16_t* block, int flush)
    {
        auto [ss, se, high, al] = band_;
        uint8_t* dst = bytes_.data();
        int room = int(bytes_.size());
        if (isDc() && high)
            return qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(block, dst, room, &position_, al, &encodeState_, flush);
        if (isDc())
            return qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(block, dst, room, &position_, &lastDc_, al, &encodeSpec_,
                                                              &encodeState_, flush);
        auto* function =
            high ? qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1 : qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1;
        return function(block, dst, room, &position_, ss, se, al, &encodeSpec_, &encodeState_, flush);
    }

    // Each interval lies before a page that faults.
    void decodeAll()
    {
        int start = 0;
        size_t block = 0;
        for (int end : ends_) {
            Guarded<uint8_t> src(size_t(end - start));
            std::copy(bytes_.begin() + start, bytes_.begin() + end, src.data());
            start = end;
            QelDecodeHuffmanState state = {};
            int position = 0;
            uint32_t marker = 0;
            lastDc_ = 0;
            for (int i = 0; i < interval_ && block < result_.size(); ++i, ++block)
                ASSERT_EQ(decode(src, position, result_[block].data(), marker, state), qelStsNoErr) << block;
            ASSERT_EQ(position, int(src.size()));
        }
        ASSERT_EQ(block, result_.size());
    }

    QelStatus decode(const Guarded<uint8_t>& src, int& position, int16_t* block, uint32_t& marker,
                     QelDecodeHuffmanState& state)
    {
        auto [ss, se, high, al] = band_;
        int length = int(src.size());
        if (isDc() && high)
            return qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(src.data(), length, &position, block, &marker, al,
                                                               &state);
        if (isDc())
            return qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(src.data(), length, &position, block, &lastDc_, &marker,
                                                              al, &decodeSpec_, &state);
        auto* function =
            high ? qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1 : qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1;
        return function(src.data(), length, &position, block, &marker, ss, se, al, &decodeSpec_, &state);
    }

    Blocks source_;
    int interval_;
    Blocks result_;
    Band band_ = {};
    bool isCounting_ = false;
    std::array<uint32_t, 256> statistics_;
    QelEncodeHuffmanSpec encodeSpec_;
    QelDecodeHuffmanSpec decodeSpec_;
    QelEncodeHuffmanState encodeState_;
    std::vector<uint8_t> bytes_;
    std::vector<int> ends_;
    int position_ = 0;
    int16_t lastDc_ = 0;
};

// Flat stretches, sparse and dense blocks in turns; magnitudes up to what 8-bit samples give.
Blocks randomBlocks(Random& random, int count)
{
    Blocks blocks(count);
    for (int i = 0; i < count;) {
        int stretch = random.between(1, 60), kind = random.between(0, 3);
        for (; stretch > 0 && i < count; --stretch, ++i) {
            blocks[i][0] = int16_t(random.between(-1024, 1023));
            for (int k = 1; k < 64; ++k)
                if (kind > 0 && random.between(0, 12) < (kind == 1 ? 1 : kind == 2 ? 3 : 12)) {
                    int limit = (1 << random.between(0, 10)) - 1;
                    blocks[i][k] = int16_t(random.between(-limit, limit));
                }
        }
    }
    return blocks;
}

TEST(Progressive, EveryScanOrderEndsInTheCoefficientsItBeganWith)
{
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        Random random(round);
        Blocks blocks = randomBlocks(random, random.between(1, 400));
        int interval = random.between(0, 2) ? int(blocks.size()) : random.between(1, 50);
        ScanPath path(blocks, interval);
        int mostLeft = random.between(0, 3) ? 3 : 13;
        for (const Band& band : randomDcBands(random, mostLeft)) path.run(band);
        for (const Band& band : randomAcBands(random, mostLeft)) path.run(band);
        if (HasFatalFailure()) return;
        ASSERT_EQ(path.result(), blocks);
    }
}

}
