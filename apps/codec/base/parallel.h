// SPDX-License-Identifier: Apache-2.0
// Work on several threads, by oneTBB. Its workers are optional: what nobody has begun is done by who waits for it, so
// that a busy machine costs no more than the help it does not give.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include <tbb/global_control.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

namespace qel::codec {

// While it lives, the codec takes so many threads, the calling one included; the innermost one holds. With 0, as
// without any, it takes one for each processor that the process may use and no other program is using when the work
// begins.
class ThreadLimit {
public:
    explicit ThreadLimit(int threads);
    ThreadLimit(const ThreadLimit&) = delete;
    ThreadLimit& operator=(const ThreadLimit&) = delete;
    ~ThreadLimit();

private:
    int outer_;
    std::optional<tbb::global_control> control_;
};

// How many threads are worth their start for a picture of so many pixels. Within withThreads(), what that says.
int threadsFor(uint64_t pixels);

// The same for JPEG 2000, where a sample costs many times what a pixel in a JPEG file does.
inline int threadsForSamples(uint64_t samples) { return threadsFor(16 * samples); }

// Says that parallel work goes on in so many threads, from here on to the end of the scope.
class Team {
public:
    explicit Team(int threads);
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;
    ~Team();

private:
    int outer_;
};

// Calls body(), whose parallel work then shares so many threads. Everything of this file with more than one thread is
// called inside.
template <class Body> auto withThreads(int threads, Body body)
{
    Team team(threads);
    if (threads == 1) return body();
    tbb::task_arena arena(threads);
    return arena.execute(body);
}

// How often work has been handed over to other threads. oneTBB sees to it that they see what was done before; by this,
// tools that look for races, and do not see into oneTBB, know it as well.
inline std::atomic<unsigned> handOvers = 0;

// Calls body(0) to body(count - 1) on so many threads; each begins with the next one that nobody has.
template <class Body> void forEachInParallel(int count, int threads, Body body)
{
    if (threads == 1 || count == 1) {
        for (int i = 0; i < count; ++i) body(i);
        return;
    }
    std::atomic<int> next = 0;
    auto work = [&] {
        try {
            for (int i; (i = next++) < count;) body(i);
        } catch (...) {
            next = count;
            throw;
        }
    };
    tbb::task_group group;
    for (int helpers = std::min(count, threads) - 1; helpers > 0; --helpers) {
        tbb::task_handle helper = group.defer([&work] {
            handOvers.load();
            work();
        });
        ++handOvers;
        group.run(std::move(helper));
    }
    group.run_and_wait(work);
    // As above, what the others did comes before what follows.
    next.load();
}

// Who does what of makeInOrder.
class OrderOfWork {
public:
    OrderOfWork(int count, int window) : count_(count), made_(size_t(window), false) {}

    // What the calling thread is to make; nothing where nothing is left. Waits while the window is full.
    std::optional<int> begin();
    void made(int i);
    // What it is to take; nothing where another thread is taking, or the next one is not made. taken() follows.
    std::optional<int> beginTaking();
    void taken();
    // Nothing is begun from now on.
    void giveUp();

private:
    int window() const { return int(made_.size()); }

    std::mutex mutex_;
    std::condition_variable changed_;
    int count_, begun_ = 0, taken_ = 0;
    bool isTaking_ = false;
    std::vector<char> made_; // of those in the window
};

// Calls make(i) for 0 to count - 1 on so many threads and take(i), in ascending order and one at a time, on whichever
// of them has made something. At most `window` are begun and not taken, so that i % window can be their place.
template <class Make, class Take> void makeInOrder(int count, int window, int threads, Make make, Take take)
{
    OrderOfWork order(count, window);
    forEachInParallel(threads, threads, [&](int) {
        try {
            while (std::optional<int> next = order.begin()) {
                make(*next);
                order.made(*next);
                while (std::optional<int> ready = order.beginTaking()) {
                    take(*ready);
                    order.taken();
                }
            }
        } catch (...) {
            order.giveUp();
            throw;
        }
    });
}

}
