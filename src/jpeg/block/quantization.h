// Quantization: the table of its block kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "core/kernel_tables.h"

namespace qel {

struct QuantizationKernels {
    // Source and destination may be the same block.
    void (*forward)(const int16_t* src, int16_t* dst, const uint16_t* encTable);
    void (*inverse)(const int16_t* src, int16_t* dst, const uint16_t* decTable);

    QEL_BUILDS(QuantizationKernels);
};

}

QEL_KERNEL void ownqj_QuantFwd_8x8_Sfs15_16s(const int16_t* src, int16_t* dst, const uint16_t* encTable);
QEL_KERNEL void ownqj_QuantInv_8x8_16s(const int16_t* src, int16_t* dst, const uint16_t* decTable);
QEL_KERNEL void ownqj_QuantInv_8x8_16s_I(int16_t* srcDst, const uint16_t* decTable);
