// SPDX-License-Identifier: Apache-2.0
// Lossless prediction: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include "core/exports.h"
#include "jpeg/lossless/prediction.h"

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
