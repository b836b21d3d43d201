// Lossless prediction: the table of its row kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

struct PredictionKernels {
    using Row = void (*)(const int16_t* src, const int16_t* prev, int16_t* dst, int width);

    // By predictor, 1 to 7, less 1. Predictor 1 reads the first element of `prev` only.
    Row diff[7];
    Row reconstruct[7];

    static const PredictionKernels baseline, avx2, avx512;
    static const PredictionKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL void ownqj_DiffRow_PRED1_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED2_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED3_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED4_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED5_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED6_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_DiffRow_PRED7_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED1_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED2_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED3_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED4_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED5_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED6_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
QEL_KERNEL void ownqj_ReconstructRow_PRED7_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst,
                                                       int width);
