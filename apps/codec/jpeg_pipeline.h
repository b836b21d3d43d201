// A sequential scan on two threads: one decodes the next rows of MCUs while the other turns those before them into
// lines of the picture.
#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include <tbb/parallel_pipeline.h>

#include "codec/jpeg_block_store.h"
#include "codec/jpeg_row_stream.h"
#include "codec/jpeg_scan.h"

namespace qel::codec {

class ScanPipeline {
public:
    ScanPipeline(const JpegInfo& info, ScanDecoder& coder, RowStream& stream) : coder_(coder), stream_(stream)
    {
        for (Group& group : groups_)
            for (const JpegComponent& c : info.components)
                group.stores.emplace_back(paddedBlocksAcross(info, c), kRows * c.v);
    }

    // Calls `report()` now and then.
    template <class Report> void run(Report report)
    {
        int count = (coder_.layout().mcusDown + kRows - 1) / kRows, begun = 0;
        auto decodeNext = [&](tbb::flow_control& flow) -> Group* {
            if (begun == count) {
                flow.stop();
                return nullptr;
            }
            Group& group = groups_[begun++ % groups_.size()];
            decode(group);
            report();
            return &group;
        };
        constexpr auto kInOrder = tbb::filter_mode::serial_in_order;
        tbb::parallel_pipeline(groups_.size(),
                               tbb::make_filter<void, Group*>(kInOrder, decodeNext) &
                                   tbb::make_filter<Group*, void>(kInOrder, [&](Group* group) { write(*group); }));
    }

private:
    // Rows of MCUs that are handed over at once.
    static constexpr int kRows = 4;
    struct Group {
        std::vector<BlockStore> stores;
        int first = 0, rows = 0;
    };

    void decode(Group& group)
    {
        StoredBlocks places(coder_.layout(), group.stores);
        group.first = next_;
        for (group.rows = 0; group.rows < kRows && next_ < end_; ++group.rows, ++next_) {
            // One row more than there is data: it is interpolated with what is there.
            if (coder_.ended()) end_ = next_ + 1;
            places.startRow(group.rows);
            coder_.decodeRowInto(places);
        }
    }

    void write(Group& group)
    {
        StoredBlocks places(coder_.layout(), group.stores);
        for (int row = 0; row < group.rows; ++row) {
            stream_.row(group.first + row, [&](auto& sink) { handOver(coder_.layout(), places, row, sink); });
            stream_.write(group.first + row);
        }
    }

    ScanDecoder& coder_;
    RowStream& stream_;
    std::array<Group, 8> groups_;
    int next_ = 0, end_ = coder_.layout().mcusDown;
};

}
