// SPDX-License-Identifier: Apache-2.0
// Tells a caller how far the work is, where it wants to know; steps may be made by several threads.
#pragma once

#include <functional>
#include <mutex>

namespace qel::codec {

// Called now and then with the part of the work that is done, 0 to 1; may be empty.
using ProgressReport = std::function<void(double)>;

class Progress {
public:
    Progress(const ProgressReport& report, int steps) : report_(report), steps_(steps) {}

    void step()
    {
        if (!report_) return;
        std::scoped_lock lock(mutex_);
        report_(double(++done_) / steps_);
    }

private:
    const ProgressReport& report_;
    int steps_, done_ = 0;
    std::mutex mutex_;
};

}
