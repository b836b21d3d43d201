// SPDX-License-Identifier: Apache-2.0
// The limit on threads, and work that is taken in order.
#include "codec/base/parallel.h"

#include <chrono>

#include <tbb/info.h>

#include "codec/base/processors.h"

namespace qel::codec {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<int> limit = 0;    // 0 where there is none
thread_local int teamSize = 0; // 0 outside

// Of the last team.
std::atomic<int> workers = 0;
std::atomic<Clock::time_point> endOfWork;

// Workers look for more work for a while: then they are still running, but for nobody.
int workersAtRest()
{
    constexpr auto kLongest = std::chrono::milliseconds(2);
    return Clock::now() - endOfWork.load() < kLongest ? workers.load() : 0;
}

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
    // Two milliseconds on one thread. A worker that wakes late costs a tenth of one, and one that is put aside for
    // another program several.
    constexpr uint64_t kWorthwhile = 1 << 20;
    static const int kUsable = usableProcessors();
    if (pixels < kWorthwhile) return 1;
    if (teamSize) return teamSize;
    int limited = limit;
    return limited ? limited : std::clamp(idleProcessors("/") + workersAtRest(), 1, kUsable);
}

Team::Team(int threads) : outer_(std::exchange(teamSize, threads)) {}

Team::~Team()
{
    workers = teamSize - 1;
    endOfWork = Clock::now();
    teamSize = outer_;
}

std::optional<int> OrderOfWork::begin()
{
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return begun_ == count_ || begun_ - taken_ < window(); });
    if (begun_ == count_) return {};
    return begun_++;
}

void OrderOfWork::made(int i)
{
    std::scoped_lock lock(mutex_);
    made_[size_t(i % window())] = true;
}

std::optional<int> OrderOfWork::beginTaking()
{
    std::scoped_lock lock(mutex_);
    if (isTaking_ || !made_[size_t(taken_ % window())]) return {};
    isTaking_ = true;
    return taken_;
}

void OrderOfWork::taken()
{
    std::scoped_lock lock(mutex_);
    isTaking_ = false;
    made_[size_t(taken_++ % window())] = false;
    changed_.notify_all();
}

void OrderOfWork::giveUp()
{
    std::scoped_lock lock(mutex_);
    begun_ = count_;
    changed_.notify_all();
}

}
