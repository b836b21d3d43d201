// SPDX-License-Identifier: Apache-2.0
#include "mispredictions.h"

#ifdef __linux__
#include <linux/perf_event.h>
#include <stdint.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace qel::bench {

#ifdef __linux__

std::optional<double> mispredictionsOf(const std::function<void()>& run)
{
    perf_event_attr event = {};
    event.type = PERF_TYPE_HARDWARE;
    event.size = sizeof event;
    event.config = PERF_COUNT_HW_BRANCH_MISSES;
    event.disabled = event.exclude_kernel = event.exclude_hv = 1;
    int counter = int(syscall(SYS_perf_event_open, &event, 0, -1, -1, 0));
    if (counter < 0) return {};
    ioctl(counter, PERF_EVENT_IOC_ENABLE, 0);
    run();
    ioctl(counter, PERF_EVENT_IOC_DISABLE, 0);
    uint64_t count = 0;
    bool isRead = read(counter, &count, sizeof count) == sizeof count;
    close(counter);
    return isRead ? std::optional(double(count)) : std::nullopt;
}

#else

std::optional<double> mispredictionsOf(const std::function<void()>&) { return {}; }

#endif

}
