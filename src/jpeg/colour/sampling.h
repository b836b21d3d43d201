// SPDX-License-Identifier: Apache-2.0
// Chroma sampling by two: the table of its row kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

// Kernels of planes take the width of the destination, those of single rows the width of the source.
struct SamplingKernels {
    void (*downH2V1)(const uint8_t* src, uint8_t* dst, int dstWidth);
    void (*downH2V2)(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth);
    // These read one sample before the row and one after it.
    Streamable<void(const uint8_t* src, uint8_t* dst, int dstWidth)> upH2V1;
    Streamable<void(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth)> upH2V2;
    // Both destination rows between two source rows: the first is nearer to the upper one.
    void (*upBothH2V2)(const uint8_t* upper, const uint8_t* lower, uint8_t* dst1, uint8_t* dst2, int dstWidth);

    void (*downRowH2V1)(const uint8_t* src, int srcWidth, uint8_t* dst);
    void (*downRowH2V2)(const uint8_t* src1, const uint8_t* src2, int srcWidth, uint8_t* dst);
    void (*upRowH2V1)(const uint8_t* src, int srcWidth, uint8_t* dst);
    void (*upRowH2V2)(const uint8_t* near, const uint8_t* far, int srcWidth, uint8_t* dst);

    QEL_BUILDS(SamplingKernels);
};

}
