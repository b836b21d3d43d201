// SPDX-License-Identifier: Apache-2.0
// A sequential scan in parts, some rows of MCUs each, which are coded or counted beside each other. Where a part begins
// is known only when those before it are coded: its bits are shifted there then.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "codec/base/parallel.h"
#include "codec/jpeg/block_store.h"
#include "codec/jpeg/encode/bit_joiner.h"
#include "codec/jpeg/encode/scan_writer.h"

namespace qel::codec::jpeg {

// Codes a part from a byte on, but for its first MCU: that has DC differences to the part before, and is kept as it is.
// Parts on different threads have no cache line in common, nor two that are fetched together.
class alignas(128) ScanPart {
public:
    ScanPart(const ScanLayout& layout, const ScanSpecs& specs);

    // As of ScanEncoder, for codeRows.
    void begin();
    void startRow() {}
    void block(int slot, const int16_t* coefficients)
    {
        if (kept_.size() < keptSize_) return keep(slot, coefficients);
        if (bytes_.size() < size_t(begin_) + size_t(bits_ / 8) + kMaxBlockBytes) bytes_.resize(2 * bytes_.size());
        check(qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(coefficients, bytes_.data() + begin_, &bits_, &lastDc_[slot],
                                                        specs_[slot].dc, specs_[slot].ac));
    }
    void restart();

private:
    friend class PartJoiner;
    static constexpr size_t kMaxBlockBytes = 513;
    // What stands between restart markers.
    struct Interval {
        int begin, bits;
    };
    void keep(int slot, const int16_t* coefficients);

    const ScanSpecs& specs_;
    size_t keptSize_;
    std::vector<int16_t> kept_;
    bool beginsWithRestart_ = false;
    std::vector<Interval> intervals_; // all but the last one
    std::vector<uint8_t> bytes_;
    int begin_ = 0, bits_ = 0; // of the last one
    std::array<int16_t, 4> lastDc_;
};

// Writes parts behind each other.
class PartJoiner {
public:
    PartJoiner(std::vector<uint8_t>& out, const ScanLayout& layout, const ScanSpecs& specs);

    void append(const ScanPart& part);
    void finish() { joiner_.finish(); }

private:
    void restart();

    const ScanLayout& layout_;
    const ScanSpecs& specs_;
    BitJoiner joiner_;
    int nextMarker_ = 0;
    std::array<int16_t, 4> lastDc_{};
};

// Which rows of MCUs the parts of a scan have.
class PartRows {
public:
    explicit PartRows(const ScanLayout& layout)
        : down_(layout.mcusDown), rows_(std::max(1, kBlocks / (layout.mcusAcross * int(layout.blocks.size())))),
          count_((down_ + rows_ - 1) / rows_)
    {}
    int count() const { return count_; }
    int first(int part) const { return part * rows_; }
    int end(int part) const { return std::min(down_, first(part + 1)); }

private:
    // Few enough for the second cache, and worth their hand-over many times.
    static constexpr int kBlocks = 2048;
    int down_, rows_, count_;
};

// Many where a thread that other programs interrupt should not stop the others.
inline constexpr int kPartsPerThread = 6;

// Codes a scan at the end of `out`, with some parts for each thread in memory at once. withSource(body) calls
// body(source), for codeRows.
template <class WithSource> void codeScanInParts(std::vector<uint8_t>& out, const ScanLayout& layout,
                                                 const ScanSpecs& specs, int restartInterval, int threads,
                                                 Progress& progress, WithSource withSource)
{
    PartRows rows(layout);
    std::vector<ScanPart> parts(size_t(std::min(kPartsPerThread * threads, rows.count())), ScanPart(layout, specs));
    PartJoiner joiner(out, layout, specs);
    auto place = [&](int part) -> ScanPart& { return parts[size_t(part) % parts.size()]; };
    auto code = [&](int part) {
        place(part).begin();
        withSource([&](auto& source) {
            codeRows(layout, restartInterval, rows.first(part), rows.end(part), source, place(part), progress);
        });
    };
    makeInOrder(rows.count(), int(parts.size()), threads, code, [&](int part) { joiner.append(place(part)); });
    joiner.finish();
}

// Adds the symbols of a scan whose blocks are stored to `sum`.
void countInParts(const ScanHeader& scan, const ScanLayout& layout, std::vector<BlockStore>& stores,
                  int restartInterval, int threads, Progress& progress, ScanStatistics& sum);

}
