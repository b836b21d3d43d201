// SPDX-License-Identifier: Apache-2.0
// Quantization: the table of its block kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

struct QuantizationKernels {
    // Source and destination may be the same block.
    void (*forward)(const int16_t* src, int16_t* dst, const uint16_t* encTable);
    void (*inverse)(const int16_t* src, int16_t* dst, const uint16_t* decTable);

    QEL_BUILDS(QuantizationKernels);
};

}
