// SPDX-License-Identifier: Apache-2.0
// All quantized blocks of a picture, for files that are coded in more than one pass.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// Blocks of one component, in whole MCUs of the frame: zero until something is stored, and without cost until then, or
// anything.
class BlockStore {
public:
    enum class Fill { zero, none };

    BlockStore(int across, int down, Fill fill) : across_(across)
    {
        size_t blocks = size_t(across) * down;
        void* memory = fill == Fill::zero ? std::calloc(blocks, kBytesPerBlock) : std::malloc(blocks * kBytesPerBlock);
        values_.reset(static_cast<int16_t*>(memory));
        if (!values_) throw std::bad_alloc();
    }
    BlockStore(const Info& info, const Component& component, Fill fill)
        : BlockStore(paddedBlocksAcross(info, component), paddedBlocksDown(info, component), fill)
    {}

    static constexpr int kBytesPerBlock = 128;

    // 64 coefficients in natural order; the blocks of a row follow one another.
    int16_t* block(int row, int column) { return values_.get() + 64 * (size_t(row) * across_ + column); }

private:
    struct Release {
        void operator()(int16_t* values) const { std::free(values); }
    };
    int across_;
    std::unique_ptr<int16_t[], Release> values_;
};

// The blocks of a scan, where the stores of its components have them.
class StoredBlocks {
public:
    StoredBlocks(const ScanLayout& layout, std::vector<BlockStore>& stores) : layout_(layout), stores_(stores)
    {
        startRow(0);
    }

    void startRow(int mcuRow)
    {
        origins_.clear();
        for (const McuBlock& place : layout_.blocks) {
            const ScanShare& share = layout_.shares[place.slot];
            int16_t* first = stores_[share.component].block(mcuRow * share.down + place.dy, place.dx);
            origins_.push_back({first, ptrdiff_t(64) * share.across});
        }
    }

    int16_t* operator()(int i, int mcuColumn) const { return origins_[i].first + origins_[i].perMcu * mcuColumn; }

private:
    // Where a block of the row's MCUs lies.
    struct Origin {
        int16_t* first;
        ptrdiff_t perMcu;
    };
    const ScanLayout& layout_;
    std::vector<BlockStore>& stores_;
    std::vector<Origin> origins_;
};

// Calls sink(i, column, block) for the blocks of a row of MCUs, in the order of a scan.
template <BlockSink Sink> void handOver(const ScanLayout& layout, StoredBlocks& places, int row, Sink& sink)
{
    places.startRow(row);
    for (int column = 0; column < layout.mcusAcross; ++column)
        for (int i = 0; i < int(layout.blocks.size()); ++i) sink(i, column, places(i, column));
}

}
