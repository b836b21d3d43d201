// SPDX-License-Identifier: Apache-2.0
// Lossless prediction: the table of its row kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

using PredictionRow = void(const int16_t* src, const int16_t* prev, int16_t* dst, int width);

struct PredictionKernels {
    // By predictor, 1 to 7, less 1. Predictor 1 reads the first element of `prev` only.
    PredictionRow* diff[7];
    PredictionRow* reconstruct[7];

    QEL_BUILDS_TO_AVX2(PredictionKernels);
};

}
