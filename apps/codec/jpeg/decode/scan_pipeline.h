// SPDX-License-Identifier: Apache-2.0
// A sequential scan goes straight into the picture. On several threads one after the other decodes the next rows of
// MCUs, and turns them into lines of the picture while the next one decodes.
#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

#include "codec/base/parallel.h"
#include "codec/jpeg/block_store.h"
#include "codec/jpeg/decode/row_stream.h"
#include "codec/jpeg/decode/scan.h"

namespace qel::codec::jpeg {

class ScanPipeline {
public:
    ScanPipeline(const Info& info, ScanDecoder& coder, bool needsRowAbove)
        : info_(info), coder_(coder), needsRowAbove_(needsRowAbove)
    {}

    // makeStream(row) gives the RowStream that begins with that row of MCUs. Calls `report()` now and then.
    template <class MakeStream, class Report> void run(int threads, MakeStream makeStream, Report report)
    {
        if (threads == 1) return runAlone(makeStream(0), report);
        above_ = storesFor(1);
        forEachInParallel(threads, threads, [&](int) {
            Group group = {storesFor(1), storesFor(kRows)};
            while (decodeNext(group, report)) write(group, makeStream);
        });
    }

private:
    // Rows of MCUs that are handed over at once. Fewer would let the row above each group, which is transformed for
    // interpolation only, weigh more.
    static constexpr int kRows = 8;
    using Stores = std::vector<BlockStore>;
    struct Group {
        Stores above, rows;
        int first = 0, count = 0;
        bool isLast = false;
    };

    template <class Report> void runAlone(RowStream stream, Report report)
    {
        for (int row = 0; row < coder_.layout().mcusDown; ++row) {
            // Nothing follows, but the row that was interpolated with what would have followed.
            bool onlyGrey = coder_.ended();
            stream.row(row, [&](auto& sink) { coder_.decodeRow(sink); });
            stream.write(row);
            report();
            if (onlyGrey) break;
        }
        stream.fillRest();
    }

    Stores storesFor(int rows) const
    {
        Stores stores;
        for (const Component& c : info_.components)
            stores.emplace_back(paddedBlocksAcross(info_, c), rows * c.v, BlockStore::Fill::none);
        return stores;
    }

    template <class Report> bool decodeNext(Group& group, Report report)
    {
        std::scoped_lock lock(mutex_);
        std::swap(group.above, above_);
        group.first = next_;
        StoredBlocks places(coder_.layout(), group.rows);
        for (group.count = 0; group.count < kRows && next_ < end_; ++group.count, ++next_) {
            // One row more than there is data: it is interpolated with what is there.
            if (coder_.ended()) end_ = next_ + 1;
            places.startRow(group.count);
            coder_.decodeRowInto(places);
        }
        group.isLast = next_ == end_;
        if (group.count == 0) return false;
        if (needsRowAbove_) copyRow(group.rows, group.count - 1, above_);
        report();
        return true;
    }
    void copyRow(Stores& from, int row, Stores& to) const
    {
        for (const ScanShare& share : coder_.layout().shares) {
            BlockStore& store = from[share.component];
            std::copy(store.block(row * share.down, 0), store.block((row + 1) * share.down, 0),
                      to[share.component].block(0, 0));
        }
    }

    template <class MakeStream> void write(Group& group, MakeStream makeStream) const
    {
        const ScanLayout& layout = coder_.layout();
        RowStream stream = makeStream(group.first);
        if (needsRowAbove_ && group.first > 0) {
            StoredBlocks above(layout, group.above);
            stream.row(group.first - 1, [&](auto& sink) { handOver(layout, above, 0, sink); });
        }
        StoredBlocks places(layout, group.rows);
        for (int row = 0; row < group.count; ++row) {
            stream.row(group.first + row, [&](auto& sink) { handOver(layout, places, row, sink); });
            stream.write(group.first + row);
        }
        if (group.isLast) stream.fillRest();
    }

    const Info& info_;
    ScanDecoder& coder_;
    bool needsRowAbove_;
    std::mutex mutex_;
    Stores above_; // what has been decoded last
    int next_ = 0, end_ = coder_.layout().mcusDown;
};

}
