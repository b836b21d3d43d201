// SPDX-License-Identifier: Apache-2.0
#include "codec/jpeg/decode/split_scan.h"

#include <algorithm>
#include <functional>
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

// Appends the chunk's blocks from this one on, with their true DC.
bool SplitScan::accept(Chunk& chunk, int from)
{
    int count = chunk.count - from;
    int64_t left = blocks_ - decoded_;
    if (count > left || (chunk.hasFailed && count < left)) return false;
    endBridge();
    int16_t* first = chunk.blocks.get() + ptrdiff_t(64) * from;
    std::array<int16_t, 4> wrong = chunk.before[size_t(from)].lastDc, right = truth_.lastDc, missing;
    std::ranges::transform(right, wrong, missing.begin(), std::minus());
    addToDc(first, count, truth_.block, missing);
    truth_ = chunk.behind;
    std::ranges::transform(truth_.lastDc, missing, truth_.lastDc.begin(), std::plus());
    spans_.push_back({chunk.blocks, first, count});
    decoded_ += count;
    return true;
}

// Adds what is missing for its component to each block; `block` is the number of the first one in its MCU.
void SplitScan::addToDc(int16_t* first, int count, int block, const std::array<int16_t, 4>& missing) const
{
    if (missing == std::array<int16_t, 4>{}) return;
    std::array<int16_t, kMaxBlocksOfMcu> ofBlock;
    int blocks = int(layout_.blocks.size());
    for (int i = 0; i < blocks; ++i)
        ofBlock[size_t(i)] = missing[size_t(layout_.blocks[size_t((block + i) % blocks)].slot)];
    int16_t* end = first + ptrdiff_t(64) * count;
    for (int i = 0; first != end; first += 64) {
        *first = int16_t(*first + ofBlock[size_t(i)]);
        if (++i == blocks) i = 0;
    }
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

// One block after the other, across spans.
class SplitScan::SpanReader {
public:
    explicit SpanReader(const std::vector<Span>& spans) : span_(spans.begin()) { enter(); }

    const int16_t* next()
    {
        while (left_ == 0) {
            ++span_;
            enter();
        }
        --left_;
        const int16_t* block = at_;
        at_ += 64;
        return block;
    }

private:
    void enter()
    {
        at_ = span_->first;
        left_ = span_->count;
    }

    std::vector<Span>::const_iterator span_;
    const int16_t* at_;
    int left_;
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
    SpanReader blocks(job.spans);
    auto fill = [&](auto& sink) {
        for (int column = 0; column < layout_.mcusAcross; ++column)
            for (int i = 0; i < int(layout_.blocks.size()); ++i) sink(i, column, blocks.next());
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
