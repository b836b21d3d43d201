// SPDX-License-Identifier: Apache-2.0
// The 8x8 DCT, alone and fused with quantization, level shift and clamping: the table of its block kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"
#include "qeljx/types.h"

namespace qel {

// Source and destination may be the same block. Those that return a status return qelStsNoErr, so that public functions
// can end in a tail call.
struct DctKernels {
    void (*forward)(const int16_t* src, int16_t* dst);
    QelStatus (*forwardQuant)(const int16_t* src, int16_t* dst, const uint16_t* encTable);
    QelStatus (*forwardQuantSamples)(const uint8_t* src, int srcStep, int16_t* dst, const uint16_t* encTable);
    void (*inverse)(const int16_t* src, int16_t* dst);
    QelStatus (*inverseQuant)(const int16_t* src, int16_t* dst, const uint16_t* decTable);
    QelStatus (*inverseQuantSamples)(const int16_t* src, uint8_t* dst, int dstStep, const uint16_t* decTable);
    void (*inverseClip)(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max);
    void (*clip)(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max);

    QEL_BUILDS_TO_AVX2(DctKernels);
};

}
