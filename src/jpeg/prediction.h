// Lossless prediction: the table of its row kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

using PredictionRow = void(const int16_t* src, const int16_t* prev, int16_t* dst, int width);

struct PredictionKernels {
    // By predictor, 1 to 7, less 1. Predictor 1 reads the first element of `prev` only.
    PredictionRow* diff[7];
    PredictionRow* reconstruct[7];

    static const PredictionKernels baseline, avx2, avx512;
    static const PredictionKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED1_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED2_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED3_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED4_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED5_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED6_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_DiffRow_PRED7_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED1_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED2_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED3_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED4_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED5_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED6_JPEG_16s_C1;
QEL_KERNEL qel::PredictionRow ownqj_ReconstructRow_PRED7_JPEG_16s_C1;
