// SPDX-License-Identifier: Apache-2.0
// A sequential scan, decoded on several threads. Where a code begins is known at the scan's start, and behind restart
// markers, only; but a decoder that begins anywhere else falls into step after some blocks, as wrong codes end by
// chance where right ones do. So the data are cut into chunks that are decoded at once, each from its first byte as if
// an MCU began there. Then, in order, the decoder of one chunk goes on into the next until it stands where the other
// one has stood: same byte, same bits held, same block of an MCU. From there on the other's blocks are right, but for
// the sums of the DC differences, which are off by the same number for all blocks of a component.
#pragma once

#include <array>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "codec/jpeg/decode/row_stream.h"
#include "codec/jpeg/decode/scan.h"

namespace qel::codec::jpeg {

// Blocks in the order of the scan: one after the other in memory that is taken again when nobody has it any more.
class BlockPool {
public:
    explicit BlockPool(size_t blocksOfEach) : bytesOfEach_(blocksOfEach * 64 * sizeof(int16_t)) {}

    std::shared_ptr<int16_t[]> take();

private:
    struct Release {
        void operator()(int16_t* memory) const { std::free(memory); }
    };
    size_t bytesOfEach_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<int16_t[], Release>> free_;
};

class SplitScan {
public:
    // makeStream(row) gives the RowStream that begins with that row of MCUs; `report(position)` is called now and then.
    using MakeStream = std::function<RowStream(int)>;
    using Report = std::function<void(size_t)>;

    SplitScan(const ScanDecoder& decoder, size_t scanBytes, bool needsRowAbove, int threads);

    // Whether there is enough to be cut, and a state has room in a ScanPlace.
    bool isWorthwhile() const;

    // Writes the picture. False if anything is wrong with the scan: it is then to be decoded from its start by the
    // decoder that knows what to do about that.
    bool run(const MakeStream& makeStream, const Report& report);
    // Behind the scan's last block.
    size_t position() const { return decoder_.positionOf(truth_); }

private:
    static constexpr int kBridgeBlocks = 512;

    struct Chunk {
        std::shared_ptr<int16_t[]> blocks;
        int count = 0;
        std::vector<ScanPlace> before; // of the first blocks, where a decoder may fall into step
        ScanPlace behind;
        bool hasFailed = false; // to decode another block
    };
    // Some of the blocks of the scan, in a row.
    struct Span {
        std::shared_ptr<int16_t[]> owner;
        const int16_t* first = nullptr;
        int count = 0;
    };
    class SpanReader;
    // Rows of MCUs that can be written.
    struct Job {
        int first = 0, count = 0;
        std::vector<Span> spans; // with those of the row above, where that is needed
    };

    int chunks() const { return int(starts_.size()); }
    int endOf(int chunk) const { return chunk + 1 < chunks() ? starts_[size_t(chunk) + 1] : INT32_MAX; }
    void decodeChunk(int chunk);
    bool decodeFrom(int from, int end, Chunk& chunk);
    bool join(int chunk);
    std::optional<size_t> findTruth(const Chunk& chunk, size_t& from) const;
    bool accept(Chunk& chunk, int from);
    void addToDc(int16_t* first, int count, int block, const std::array<int16_t, 4>& missing) const;
    bool bridge();
    void endBridge();
    void makeJob();
    void writeNext(const MakeStream& makeStream);
    void write(const Job& job, const MakeStream& makeStream) const;

    const ScanDecoder& decoder_;
    const ScanLayout& layout_;
    size_t scanBytes_;
    bool needsRowAbove_;
    int64_t blocks_;
    int capacity_;      // blocks of a chunk
    size_t mostPlaces_; // noted of each
    std::vector<int> starts_;
    int threads_;
    BlockPool chunkPool_, bridgePool_; // which outlive all that is taken from them
    std::vector<Chunk> window_;

    // What is known for certain, by one thread at a time.
    ScanPlace truth_;
    int64_t decoded_ = 0;     // blocks
    std::vector<Span> spans_; // from row jobsUntil_ on, or the one above
    int jobsUntil_ = 0;
    Span bridge_; // blocks decoded where no chunk is in step
    std::atomic<bool> isSound_ = true;

    std::mutex jobsMutex_;
    std::deque<Job> jobs_;
};

}
