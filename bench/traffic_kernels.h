// SPDX-License-Identifier: Apache-2.0
// Loops that read and write memory and compute nothing.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace qel {

// Reads from `src` and writes to `dst` in steps of `in` and `out` registers; in:out is 1:1, 1:2, 1:4, 2:1, 2:3, 3:1,
// 3:2 or 4:1. `plain` stores through the caches, `streaming` by non-temporal stores; `dst` is aligned to 64 bytes.
// Returns what depends on every byte read.
struct TrafficKernels {
    using Move = uint64_t (*)(const uint8_t* src, uint8_t* dst, size_t steps);
    struct Ratio {
        int in, out;
        Move plain, streaming;
    };
    int width; // bytes of a register
    Ratio ratios[8];

    static const TrafficKernels baseline, avx2, avx512;
};

}
