// SPDX-License-Identifier: Apache-2.0
// Lossless prediction: the internal functions that the library exports beside its interface. They check nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/lossless/prediction.h"

using namespace qel;

#define QEL_DOOR(NAME, KERNEL)                                                                                         \
    QEL_KERNEL void NAME(const int16_t* src, const int16_t* prev, int16_t* dst, int width)                             \
    {                                                                                                                  \
        kernels<PredictionKernels>().KERNEL(src, prev, dst, width);                                                    \
    }
QEL_DOOR(ownqj_DiffRow_PRED1_JPEG_16s_C1, diff[0])
QEL_DOOR(ownqj_DiffRow_PRED2_JPEG_16s_C1, diff[1])
QEL_DOOR(ownqj_DiffRow_PRED3_JPEG_16s_C1, diff[2])
QEL_DOOR(ownqj_DiffRow_PRED4_JPEG_16s_C1, diff[3])
QEL_DOOR(ownqj_DiffRow_PRED5_JPEG_16s_C1, diff[4])
QEL_DOOR(ownqj_DiffRow_PRED6_JPEG_16s_C1, diff[5])
QEL_DOOR(ownqj_DiffRow_PRED7_JPEG_16s_C1, diff[6])
QEL_DOOR(ownqj_ReconstructRow_PRED1_JPEG_16s_C1, reconstruct[0])
QEL_DOOR(ownqj_ReconstructRow_PRED2_JPEG_16s_C1, reconstruct[1])
QEL_DOOR(ownqj_ReconstructRow_PRED3_JPEG_16s_C1, reconstruct[2])
QEL_DOOR(ownqj_ReconstructRow_PRED4_JPEG_16s_C1, reconstruct[3])
QEL_DOOR(ownqj_ReconstructRow_PRED5_JPEG_16s_C1, reconstruct[4])
QEL_DOOR(ownqj_ReconstructRow_PRED6_JPEG_16s_C1, reconstruct[5])
QEL_DOOR(ownqj_ReconstructRow_PRED7_JPEG_16s_C1, reconstruct[6])
