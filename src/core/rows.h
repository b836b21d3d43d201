// SPDX-License-Identifier: Apache-2.0
// Rows of a region, and the loop that splits them over threads.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "qeljx/types.h"

namespace qel {

// Row `row` of a plane whose rows lie `step` bytes apart.
template <class T> inline T* rowAt(T* base, int step, int row)
{
    return (T*)(uintptr_t(base) + uintptr_t(ptrdiff_t(step) * row));
}

// Who may walk the rows: the calling thread alone, or all that OpenMP has.
enum class Threads { one, all };

// Regions up to this size are never split.
constexpr int64_t kSerialElements = 8192;

// A thread of its own gets at least this many elements, which are 0.3 to 3 milliseconds of work. Starting a team takes
// microseconds on an idle machine, but on a busy one the call waits for its last worker until the system lets that run.
constexpr int64_t kElementsPerThread = int64_t(1) << 21;
static_assert(kElementsPerThread >= kSerialElements);

// The threads that a region pays for: one where the caller is in a parallel region itself, unless it allows regions
// inside of regions.
inline int threadsFor([[maybe_unused]] QelSize roi)
{
#ifdef _OPENMP
    int64_t paid = int64_t(roi.width) * roi.height / kElementsPerThread;
    if (paid < 2 || omp_get_active_level() >= omp_get_max_active_levels()) return 1;
    int64_t most = omp_get_max_threads() < roi.height ? omp_get_max_threads() : roi.height;
    return int(paid < most ? paid : most);
#else
    return 1;
#endif
}

// Calls block(first, end) for all rows: on the calling thread, or one contiguous block of rows on each thread of a
// team. The team is sized before the pragma: an `if` clause that is false still costs a quarter of a microsecond.
template <Threads kThreads, class Block> inline void forBlocks(QelSize roi, Block block)
{
    [[maybe_unused]] int threads = kThreads == Threads::all ? threadsFor(roi) : 1;
    if (threads <= 1) return block(0, roi.height);
#ifdef _OPENMP
#pragma omp parallel num_threads(threads)
    {
        int64_t thread = omp_get_thread_num(), team = omp_get_num_threads();
        block(int(roi.height * thread / team), int(roi.height * (thread + 1) / team));
    }
#endif
}

// Calls row(r) for every row, in ascending order within each block.
template <Threads kThreads = Threads::one, class Row> inline void forRows(QelSize roi, Row row)
{
    forBlocks<kThreads>(roi, [=](int first, int end) {
        for (int r = first; r < end; ++r) row(r);
    });
}

}
