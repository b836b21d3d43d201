// SPDX-License-Identifier: Apache-2.0
// Output that no cache can hold is streamed: non-temporal stores write it to memory and leave the caches to others.
// This is the one place that decides it.
#pragma once

#include <stddef.h>

#include "core/dispatch.h"
#include "core/kernel_tables.h"
#include "core/rows.h"
#include "core/support.h"

namespace qel {

// From this many bytes on, output is far over the size of most caches; below, streaming loses.
constexpr size_t kStreamedBytes = size_t(24) << 20;

inline bool isStreamed(QelSize roi, size_t bytesPerElement)
{
    return size_t(roi.width) * size_t(roi.height) * bytesPerElement >= kStreamedBytes;
}

// Calls block(kernel, first, end) for all rows of an output that may be streamed, with the kernel that suits its size,
// and orders what was streamed before all later stores: once for each block, for it costs as much as a row.
template <Threads kThreads, class Row, class Block>
inline void forBlocksOfOutput(QelSize roi, bool streams, Streamable<Row> kernels, Block block)
{
    Row* kernel = streams ? kernels.streamed : kernels.cached;
    forBlocks<kThreads>(roi, [=](int first, int end) {
        block(kernel, first, end);
        if (streams) qel::kernels<SupportKernels>().fence();
    });
}

}
