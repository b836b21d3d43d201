// Output that no cache can hold, and that goes to memory past the caches.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/dispatch.h"
#include "core/rows.h"
#include "core/support.h"

namespace qel {

// From this many bytes on, output is far over the size of most caches; below, storing past them loses.
constexpr size_t kPastCaches = size_t(24) << 20;

inline bool isBeyondCaches(QelSize size, size_t bytesPerElement)
{
    return (size_t)size.width * (size_t)size.height * bytesPerElement >= kPastCaches;
}

// block(first, end) for all rows, by all threads or one, which order their stores in the end if these go past the
// caches; and row(r) for each row.
enum Loop { kSerial, kParallel };
template <Loop kLoop, class Block> inline void forBlocksOfOutput(QelSize roi, bool goesPast, Block block)
{
    auto orderedBlock = [=](int first, int end) {
        block(first, end);
        if (goesPast) kernels<SupportKernels>().finishStores();
    };
    if (kLoop == kParallel)
        forBlocksInParallel(roi, orderedBlock);
    else
        orderedBlock(0, roi.height);
}
template <Loop kLoop, class Row> inline void forRowsOfOutput(QelSize roi, bool goesPast, Row row)
{
    forBlocksOfOutput<kLoop>(roi, goesPast, [=](int first, int end) {
        for (int r = first; r < end; ++r) row(r);
    });
}

// Elements of a piece: a multiple of every kernel's step, so that a row in pieces gives what a whole row gives.
constexpr int kPieceElements = 1024;
constexpr size_t kLargestPiece = 4 * kPieceElements;

// One row of output that is made piece by piece in a buffer which stays in the first-level cache, and goes from there
// to memory in whole cache lines: for those who cannot store past the caches themselves, which is faster. Write up to
// kLargestPiece bytes at room(), say how many with add(), and at the end finish(). After all rows of a thread
// finishStores() of the support kernels: once for each row it would cost as much as the row.
class RowPastCaches {
public:
    explicit RowPastCaches(void* dst)
        : before_((uintptr_t)dst % kLine), held_(before_), line_((uint8_t*)dst - before_),
          copyPast_(kernels<SupportKernels>().copyPast)
    {}

    uint8_t* room() { return buffer_ + held_; }

    void add(size_t bytes)
    {
        held_ += bytes;
        size_t whole = held_ / kLine * kLine;
        if (whole == 0) return;
        size_t start = 0;
        if (before_ > 0) {
            memcpy(line_ + before_, buffer_ + before_, kLine - before_);
            start = kLine;
            before_ = 0;
        }
        copyPast_(buffer_ + start, line_ + start, whole - start);
        line_ += whole;
        held_ -= whole;
        memcpy(buffer_, buffer_ + whole, held_);
    }

    void finish() { memcpy(line_ + before_, buffer_ + before_, held_ - before_); }

private:
    static constexpr size_t kLine = 64;

    size_t before_; // bytes of the first line that lie before the row
    size_t held_;   // bytes in the buffer, those before the row included
    uint8_t* line_; // the destination's line that the buffer begins with
    void (*copyPast_)(const uint8_t*, uint8_t*, size_t);
    alignas(kLine) uint8_t buffer_[kLine + kLargestPiece];
};

// Calls convert(first, count) for the pieces of a row of `width` elements.
template <class Convert> inline void eachPiece(int width, Convert convert)
{
    for (int i = 0, count; i < width; i += count) {
        count = width - i < kPieceElements ? width - i : kPieceElements;
        convert(i, count);
    }
}

}
