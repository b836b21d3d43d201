// Work on several threads, by oneTBB. Its workers are optional: what nobody has begun is done by who waits for it, so
// that a busy machine costs no more than the help it does not give.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace qel::codec {

// While it lives, the codec takes so many threads, the calling one included; the innermost one holds. Without any, it
// takes one for each processor that the process may use.
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

// How many threads are worth their start for a picture of so many pixels.
int threadsFor(uint64_t pixels);

// The same for JPEG 2000, where a sample costs many times what a pixel in a JPEG file does.
inline int threadsForJ2k(uint64_t samples) { return threadsFor(16 * samples); }

// Calls body(), whose parallel work then shares so many threads. Everything of this file with more than one thread is
// called inside.
template <class Body> auto withThreads(int threads, Body body)
{
    if (threads == 1) return body();
    tbb::task_arena arena(threads);
    return arena.execute(body);
}

// Calls body(0) to body(count - 1) on so many threads; each begins with the next one that nobody has.
template <class Body> void forEachInParallel(int count, int threads, Body body)
{
    if (threads == 1 || count == 1) {
        for (int i = 0; i < count; ++i) body(i);
        return;
    }
    std::atomic<int> next = 0;
    tbb::parallel_for(0, std::min(count, threads), [&](int) {
        try {
            for (int i; (i = next++) < count;) body(i);
        } catch (...) {
            next = count;
            throw;
        }
    });
}

}
