// SPDX-License-Identifier: Apache-2.0
// Parts of scans, what lies between them, and sums of what they have.
#include "codec/jpeg/encode/scan_parts.h"

#include <mutex>

#include "codec/jpeg/markers.h"

namespace qel::codec::jpeg {

namespace {

constexpr size_t kFirstRoom = 1 << 13;

}

ScanPart::ScanPart(const ScanLayout& layout, const ScanSpecs& specs)
    : specs_(specs), keptSize_(64 * layout.blocks.size()), bytes_(kFirstRoom)
{}

void ScanPart::begin()
{
    kept_.clear();
    beginsWithRestart_ = false;
    intervals_.clear();
    begin_ = bits_ = 0;
    lastDc_ = {};
}

void ScanPart::keep(int slot, const int16_t* coefficients)
{
    kept_.insert(kept_.end(), coefficients, coefficients + 64);
    lastDc_[slot] = coefficients[0];
}

void ScanPart::restart()
{
    beginsWithRestart_ |= kept_.empty();
    lastDc_ = {};
    if (kept_.empty()) return;
    intervals_.push_back({begin_, bits_});
    begin_ += (bits_ + 7) / 8;
    bits_ = 0;
}

PartJoiner::PartJoiner(std::vector<uint8_t>& out, const ScanLayout& layout, const ScanSpecs& specs)
    : layout_(layout), specs_(specs), joiner_(out)
{}

void PartJoiner::restart()
{
    joiner_.marker(uint8_t(marker::kRst0 + nextMarker_));
    nextMarker_ = (nextMarker_ + 1) % 8;
    lastDc_ = {};
}

void PartJoiner::append(const ScanPart& part)
{
    if (part.beginsWithRestart_) restart();
    std::array<uint8_t, ScanPart::kMaxBlockBytes> coded;
    const int16_t* block = part.kept_.data();
    for (const McuBlock& place : layout_.blocks) {
        int bits = 0;
        const ScanSpecs::Slot& tables = specs_[place.slot];
        check(qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(block, coded.data(), &bits, &lastDc_[place.slot], tables.dc,
                                                        tables.ac));
        joiner_.append(coded.data(), bits);
        block += 64;
    }
    for (const ScanPart::Interval& interval : part.intervals_) {
        joiner_.append(part.bytes_.data() + interval.begin, interval.bits);
        restart();
    }
    joiner_.append(part.bytes_.data() + part.begin_, part.bits_);
    lastDc_ = part.lastDc_;
}

void countInParts(const ScanHeader& scan, const ScanLayout& layout, std::vector<BlockStore>& stores,
                  int restartInterval, int threads, Progress& progress, ScanStatistics& sum)
{
    std::mutex mutex;
    PartRows rows(layout);
    forEachInParallel(rows.count(), threads, [&](int part) {
        ScanStatistics statistics(scan);
        StoredBlocks blocks(layout, stores);
        if (part > 0) {
            blocks.startRow(rows.first(part) - 1);
            for (int i = 0; i < int(layout.blocks.size()); ++i)
                statistics.follow(layout.blocks[i].slot, blocks(i, layout.mcusAcross - 1)[0]);
        }
        codeRows(layout, restartInterval, rows.first(part), rows.end(part), blocks, statistics, progress);
        std::scoped_lock lock(mutex);
        sum.add(statistics);
    });
}

}
