// SPDX-License-Identifier: Apache-2.0
#include "codec/jpeg/decode/split_scan.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "codec/base/parallel.h"
#include "codec/jpeg/markers.h"

namespace qel::codec::jpeg {

namespace {

// What a chunk has on average. Where blocks take few bits it has more, up to so many times that; the rest is left to
// whoever comes from there into the next chunk.
constexpr int64_t kUsualBlocks = 3072, kRowsOfChunk = 6;
constexpr int kMostTimesUsual = 4;
constexpr int64_t kLeastBytes = 1024;
// A decoder that has not fallen into step by then is not waited for. Behind restart markers it is from the start.
constexpr size_t kMostPlaces = 500;

}

std::shared_ptr<int16_t[]> BlockPool::take()
{
    std::unique_ptr<int16_t[], Release> memory;
    {
        std::scoped_lock lock(mutex_);
        if (!free_.empty()) {
            memory = std::move(free_.back());
            free_.pop_back();
        }
    }
    if (!memory) memory.reset(static_cast<int16_t*>(std::aligned_alloc(64, bytesOfEach_)));
    if (!memory) throw std::bad_alloc();
    return {memory.release(), [this](int16_t* released) {
                std::scoped_lock lock(mutex_);
                free_.emplace_back(released);
            }};
}

namespace {

int64_t blocksOfRow(const ScanLayout& layout) { return int64_t(layout.mcusAcross) * int64_t(layout.blocks.size()); }

int64_t usualBlocks(const ScanLayout& layout) { return std::max(kUsualBlocks, kRowsOfChunk * blocksOfRow(layout)); }

int capacityFor(const ScanLayout& layout)
{
    return int(std::min(kMostTimesUsual * usualBlocks(layout), blocksOfRow(layout) * layout.mcusDown));
}

// Where the next chunk can begin: behind a restart marker; or, where there are none, behind any byte but 0xFF, whose
// next one is none of the scan's bits.
size_t startFrom(const ScanDecoder& decoder, size_t from, size_t scanBytes)
{
    Bytes data = decoder.data();
    if (decoder.hasRestarts()) return findMarker(data, from) + 2;
    while (from < scanBytes && data[from - 1] == 0xFF) ++from;
    return from;
}

std::vector<int> startsOf(const ScanDecoder& decoder, size_t scanBytes, int64_t bytesOfEach)
{
    std::vector<int> starts = {0};
    for (;;) {
        size_t from = size_t(starts.back() + std::max(bytesOfEach, kLeastBytes));
        size_t next = from < scanBytes ? startFrom(decoder, from, scanBytes) : scanBytes;
        if (next >= scanBytes) return starts;
        starts.push_back(int(next));
    }
}

}

SplitScan::SplitScan(const ScanDecoder& decoder, size_t scanBytes, bool needsRowAbove, int threads)
    : decoder_(decoder), layout_(decoder.layout()), scanBytes_(scanBytes), needsRowAbove_(needsRowAbove),
      blocks_(blocksOfRow(layout_) * layout_.mcusDown), capacity_(capacityFor(layout_)),
      mostPlaces_(decoder.hasRestarts() ? 1 : kMostPlaces),
      starts_(startsOf(decoder, scanBytes, int64_t(scanBytes) * usualBlocks(layout_) / blocks_)),
      threads_(std::clamp(chunks() / 2, 1, threads)), chunkPool_(size_t(capacity_)), bridgePool_(kBridgeBlocks),
      window_(size_t(3) * size_t(threads_)), truth_(decoder.placeAt(0))
{}

bool SplitScan::isWorthwhile() const
{
    int bytes;
    check(qeliDecodeHuffmanStateGetBufSize_JPEG_8u(&bytes));
    return threads_ > 1 && size_t(bytes) <= truth_.state.size();
}

bool SplitScan::run(const MakeStream& makeStream, const Report& report)
{
    auto make = [&](int chunk) {
        writeNext(makeStream);
        if (isSound_) decodeChunk(chunk);
    };
    auto take = [&](int chunk) {
        if (isSound_ && !join(chunk)) isSound_ = false;
        report(position());
    };
    makeInOrder(chunks(), int(window_.size()), threads_, make, take);
    forEachInParallel(int(jobs_.size()), threads_, [&](int) { writeNext(makeStream); });
    return isSound_ && decoded_ == blocks_;
}

// Decodes from the chunk's first byte to where the next one has begun, or until there is no further block.
void SplitScan::decodeChunk(int i)
{
    Chunk& chunk = window_[size_t(i) % window_.size()];
    chunk.blocks = chunkPool_.take();
    int from = starts_[size_t(i)];
    while (!decodeFrom(from, endOf(i), chunk)) {
        // Out of step, most likely: another try from there.
        size_t next = startFrom(decoder_, size_t(std::max(chunk.behind.at, from + 1)), scanBytes_);
        chunk.hasFailed = next >= std::min(scanBytes_, size_t(endOf(i)));
        if (chunk.hasFailed) return;
        from = int(next);
    }
    chunk.hasFailed = false;
}

// False if a block has failed.
bool SplitScan::decodeFrom(int from, int end, Chunk& chunk)
{
    chunk.before.clear();
    ScanPlace place = decoder_.placeAt(from);
    int16_t* block = chunk.blocks.get();
    bool isSound = true;
    for (chunk.count = 0; isSound && chunk.count < capacity_ && place.at < end; block += 64) {
        if (chunk.before.size() < mostPlaces_) chunk.before.push_back(place);
        isSound = decoder_.decodeAt(place, block);
        chunk.count += isSound;
    }
    chunk.behind = place;
    return isSound;
}

// Appends the chunk's blocks, and before and behind them those that nobody else has decoded rightly. False if the scan
// is damaged.
bool SplitScan::join(int i)
{
    Chunk& chunk = window_[size_t(i) % window_.size()];
    bool isInStep = false;
    for (size_t next = 0; decoded_ < blocks_ && truth_.at < endOf(i);) {
        std::optional<size_t> found = isInStep ? std::nullopt : findTruth(chunk, next);
        if (!(found ? accept(chunk, int(*found)) : bridge())) return false;
        isInStep |= found.has_value();
    }
    endBridge();
    chunk.blocks.reset();
    makeJob();
    return true;
}

// Which of the chunk's blocks begins where the truth stands. `from` follows both, which go ahead only.
std::optional<size_t> SplitScan::findTruth(const Chunk& chunk, size_t& from) const
{
    while (from < chunk.before.size() && chunk.before[from].at < truth_.at) ++from;
    for (size_t i = from; i < chunk.before.size() && chunk.before[i].at == truth_.at; ++i)
        if (chunk.before[i].isInStepWith(truth_)) return i;
    return {};
}

// Appends the chunk's blocks from this one on.
bool SplitScan::accept(const Chunk& chunk, int from)
{
    int count = chunk.count - from;
    int64_t left = blocks_ - decoded_;
    if (count > left || (chunk.hasFailed && count < left)) return false;
    endBridge();
    Span span = {chunk.blocks, chunk.blocks.get() + ptrdiff_t(64) * from, count};
    std::array<int16_t, 4> wrong = chunk.before[size_t(from)].lastDc, right = truth_.lastDc;
    truth_ = chunk.behind;
    for (size_t c = 0; c < span.dc.size(); ++c) {
        span.dc[c] = int16_t(right[c] - wrong[c]);
        truth_.lastDc[c] = int16_t(truth_.lastDc[c] + span.dc[c]);
    }
    spans_.push_back(std::move(span));
    decoded_ += count;
    return true;
}

// Appends the next block, decoded here.
bool SplitScan::bridge()
{
    if (!bridge_.owner) {
        bridge_.owner = bridgePool_.take();
        bridge_.first = bridge_.owner.get();
    }
    if (!decoder_.decodeAt(truth_, bridge_.owner.get() + ptrdiff_t(64) * bridge_.count)) return false;
    ++decoded_;
    if (++bridge_.count == kBridgeBlocks) endBridge();
    return true;
}

void SplitScan::endBridge()
{
    if (bridge_.count) spans_.push_back(std::move(bridge_));
    bridge_ = {};
}

// Hands over the rows that are whole.
void SplitScan::makeJob()
{
    auto rows = int(decoded_ / blocksOfRow(layout_));
    if (rows == jobsUntil_) return;
    {
        std::scoped_lock lock(jobsMutex_);
        jobs_.push_back({jobsUntil_, rows - jobsUntil_, spans_});
    }
    int firstKept = rows - needsRowAbove_, first = std::max(jobsUntil_ - needsRowAbove_, 0);
    int64_t past = (firstKept - first) * blocksOfRow(layout_);
    auto span = spans_.begin();
    for (; span != spans_.end() && past >= span->count; ++span) past -= span->count;
    spans_.erase(spans_.begin(), span);
    if (past > 0) {
        spans_.front().first += 64 * past;
        spans_.front().count -= int(past);
    }
    jobsUntil_ = rows;
}

// One MCU after the other, with the true DC of its blocks. They are mended one MCU ahead: a load of what has just been
// stored in part would wait.
class SplitScan::SpanReader {
public:
    SpanReader(const ScanLayout& layout, const std::vector<Span>& spans)
        : layout_(layout), span_(spans.begin()), end_(spans.end())
    {
        prepare();
    }

    // The blocks of the next MCU, which stay until the next call.
    const int16_t* const* next()
    {
        auto blocks = mcus_[ahead_].data();
        ahead_ ^= 1;
        prepare();
        return blocks;
    }

private:
    void prepare()
    {
        for (size_t i = 0; i < layout_.blocks.size(); ++i) {
            while (span_ != end_ && at_ == span_->count) {
                ++span_;
                at_ = 0;
            }
            if (span_ == end_) return;
            const int16_t*& block = mcus_[ahead_][i] = span_->first + ptrdiff_t(64) * at_++;
            int16_t wrong = span_->dc[size_t(layout_.blocks[i].slot)];
            if (wrong == 0) continue;
            int16_t* mended = mended_[ahead_][i].data();
            std::memcpy(mended, block, kBlockBytes);
            mended[0] = int16_t(mended[0] + wrong);
            block = mended;
        }
    }

    const ScanLayout& layout_;
    std::vector<Span>::const_iterator span_, end_;
    int at_ = 0;
    size_t ahead_ = 0; // of the two, which is prepared
    std::array<std::array<const int16_t*, kMaxBlocksOfMcu>, 2> mcus_;
    alignas(64) std::array<std::array<std::array<int16_t, 64>, kMaxBlocksOfMcu>, 2> mended_;
};

void SplitScan::writeNext(const MakeStream& makeStream)
{
    Job job;
    {
        std::scoped_lock lock(jobsMutex_);
        if (jobs_.empty()) return;
        job = std::move(jobs_.front());
        jobs_.pop_front();
    }
    write(job, makeStream);
}

void SplitScan::write(const Job& job, const MakeStream& makeStream) const
{
    RowStream stream = makeStream(job.first);
    SpanReader mcus(layout_, job.spans);
    auto fill = [&](auto& sink) {
        for (int column = 0; column < layout_.mcusAcross; ++column) {
            const int16_t* const* blocks = mcus.next();
            for (int i = 0; i < int(layout_.blocks.size()); ++i) sink(i, column, blocks[i]);
        }
    };
    if (needsRowAbove_ && job.first > 0) stream.row(job.first - 1, fill);
    int end = job.first + job.count;
    for (int row = job.first; row < end; ++row) {
        stream.row(row, fill);
        stream.write(row);
    }
    if (end == layout_.mcusDown) stream.fillRest();
}

}
