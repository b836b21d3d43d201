// SPDX-License-Identifier: Apache-2.0
// Level shift: the table of its row and block kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

struct LevelShiftKernels {
    Streamable<void(const uint8_t* src, int16_t* dst, int len)> sub128;
    Streamable<void(const int16_t* src, uint8_t* dst, int len)> add128;
    // 8 rows of 8 samples to and from a contiguous block.
    void (*sub128Block)(const uint8_t* src, int srcStep, int16_t* dst);
    void (*add128Block)(const int16_t* src, uint8_t* dst, int dstStep);

    QEL_BUILDS_TO_AVX2(LevelShiftKernels);
};

}
