// The limit on threads.
#include "codec/parallel.h"

#include <tbb/info.h>

#include "codec/processors.h"

namespace qel::codec {

namespace {

std::atomic<int> limit = 0; // 0 where there is none

}

ThreadLimit::ThreadLimit(int threads) : outer_(limit.exchange(threads))
{
    // More threads than processors are made only where they are allowed.
    if (threads > tbb::info::default_concurrency())
        control_.emplace(tbb::global_control::max_allowed_parallelism, size_t(threads));
}

ThreadLimit::~ThreadLimit() { limit = outer_; }

int threadsFor(uint64_t pixels)
{
    constexpr uint64_t kWorthwhile = 1 << 18;
    static const int kUsable = usableProcessors();
    if (pixels < kWorthwhile) return 1;
    int limited = limit;
    return limited ? limited : kUsable;
}

}
