// Chroma sampling by two: the table of its row kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

// Kernels of planes take the width of the destination, those of single rows the width of the source.
struct SamplingKernels {
    void (*downH2V1)(const uint8_t* src, uint8_t* dst, int dstWidth);
    void (*downH2V2)(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth);
    // These read one sample before the row and one behind it.
    void (*upH2V1)(const uint8_t* src, uint8_t* dst, int dstWidth);
    void (*upH2V2)(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth);
    // Both destination rows between two source rows: the first is nearer to the upper one.
    void (*upBothH2V2)(const uint8_t* upper, const uint8_t* lower, uint8_t* dst1, uint8_t* dst2, int dstWidth);
    // Past the caches.
    void (*upH2V1Past)(const uint8_t* src, uint8_t* dst, int dstWidth);
    void (*upH2V2Past)(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth);

    void (*downRowH2V1)(const uint8_t* src, int srcWidth, uint8_t* dst);
    void (*downRowH2V2)(const uint8_t* src1, const uint8_t* src2, int srcWidth, uint8_t* dst);
    void (*upRowH2V1)(const uint8_t* src, int srcWidth, uint8_t* dst);
    void (*upRowH2V2)(const uint8_t* near, const uint8_t* far, int srcWidth, uint8_t* dst);

    static const SamplingKernels baseline, avx2, avx512;
    static const SamplingKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL void ownqj_SampleDownH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleDownH2V2_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleUpH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleUpH2V2_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst);
// A second name of the same kernel.
QEL_KERNEL void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1_SSE2(const uint8_t* src, int srcWidth, uint8_t* dst);
QEL_KERNEL void ownqj_SampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, int srcWidth,
                                                       uint8_t* dst);
QEL_KERNEL void ownqj_SampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst);
QEL_KERNEL void ownqj_SampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, int srcWidth,
                                                          uint8_t* dst);
