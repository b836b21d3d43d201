// SPDX-License-Identifier: Apache-2.0
// The scans of a progressive picture on several threads: each follows the one before it through the picture, some rows
// behind, as it refines what that has decoded.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "codec/jpeg/block_store.h"
#include "codec/jpeg/decode/scan.h"

namespace qel::codec::jpeg {

class ScanChain {
public:
    ScanChain(const Info& info, std::vector<BlockStore>& stores) : info_(info), stores_(stores) {}

    // Scans in the order of the file; nothing is decoded before run().
    void add(ScanDecoder scan);
    // Calls report(part) now and then with the part of the work that is done, one thread at a time.
    void run(int threads, const std::function<void(double)>& report);

    const std::deque<ScanDecoder>& scans() const { return scans_; }

private:
    struct Link {
        int height; // of a row of MCUs, in kUnits of a line of the picture
        int next = 0, end = 0;
        bool isBusy = false;
        int64_t reached() const { return next == end ? INT64_MAX : int64_t(next) * height; }
    };
    // Rows of MCUs that a thread decodes at once.
    struct Rows {
        size_t scan;
        int first, end;
    };
    std::optional<Rows> begin();
    std::optional<Rows> nextRows() const;
    bool isDone() const;
    void giveUp();
    void decode(const Rows& rows);
    void finish(const Rows& rows, const std::function<void(double)>& report);

    const Info& info_;
    std::vector<BlockStore>& stores_;
    std::deque<ScanDecoder> scans_;
    std::vector<Link> links_;
    bool hasFailed_ = false;
    int64_t allRows_ = 0, doneRows_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
};

}
