// SPDX-License-Identifier: Apache-2.0
// Which rows may be decoded next.
#include "codec/jpeg/decode/scan_chain.h"

#include <algorithm>

#include "codec/base/parallel.h"

namespace qel::codec::jpeg {

namespace {

// Rows of blocks are whole numbers of these, at all sampling factors from 1 to 4.
constexpr int kUnits = 12;
// What a thread decodes before it looks again.
constexpr int kHeightAtOnce = 64 * kUnits;

}

void ScanChain::add(ScanDecoder scan)
{
    const ScanLayout& layout = scan.layout();
    // A scan of one component has rows of its blocks.
    bool isAlone = layout.shares.size() == 1;
    int rows = isAlone ? info_.components[layout.shares[0].component].v : 1;
    links_.push_back({8 * kUnits * info_.maxV() / rows, 0, layout.mcusDown});
    allRows_ += layout.mcusDown;
    scans_.push_back(std::move(scan));
}

std::optional<ScanChain::Rows> ScanChain::nextRows() const
{
    int64_t before = INT64_MAX;
    for (size_t i = 0; i < links_.size(); ++i) {
        const Link& link = links_[i];
        int64_t allowed = std::min<int64_t>(link.end, before / link.height);
        if (!link.isBusy && allowed > link.next) {
            int count = std::max(1, kHeightAtOnce / link.height);
            return Rows{i, link.next, int(std::min<int64_t>(allowed, link.next + count))};
        }
        before = link.reached();
    }
    return {};
}

bool ScanChain::isDone() const
{
    return hasFailed_ || std::ranges::all_of(links_, [](const Link& link) { return link.next == link.end; });
}

std::optional<ScanChain::Rows> ScanChain::begin()
{
    std::unique_lock lock(mutex_);
    std::optional<Rows> rows;
    changed_.wait(lock, [&] { return isDone() || (rows = nextRows()); });
    if (rows) links_[rows->scan].isBusy = true;
    return rows;
}

void ScanChain::decode(const Rows& rows)
{
    ScanDecoder& scan = scans_[rows.scan];
    StoredBlocks places(scan.layout(), stores_);
    for (int row = rows.first; row < rows.end && !scan.ended(); ++row) {
        places.startRow(row);
        scan.decodeRowInto(places);
    }
}

void ScanChain::finish(const Rows& rows, const std::function<void(double)>& report)
{
    std::scoped_lock lock(mutex_);
    Link& link = links_[rows.scan];
    link.isBusy = false;
    link.next = scans_[rows.scan].ended() ? link.end : rows.end;
    doneRows_ += link.next - rows.first;
    if (report) report(double(doneRows_) / double(allRows_));
    changed_.notify_all();
}

void ScanChain::giveUp()
{
    std::scoped_lock lock(mutex_);
    hasFailed_ = true;
    changed_.notify_all();
}

void ScanChain::run(int threads, const std::function<void(double)>& report)
{
    forEachInParallel(threads, threads, [&](int) {
        try {
            while (std::optional<Rows> rows = begin()) {
                decode(*rows);
                finish(*rows, report);
            }
        } catch (...) {
            giveUp();
            throw;
        }
    });
}

}
