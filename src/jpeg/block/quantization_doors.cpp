// SPDX-License-Identifier: Apache-2.0
// Quantization: exported internal functions.
#include "jpeg/block/quantization_doors.h"

#include "core/dispatch.h"
#include "jpeg/block/quantization.h"

using namespace qel;

void ownqj_QuantFwd_8x8_Sfs15_16s(const int16_t* src, int16_t* dst, const uint16_t* encTable)
{
    kernels<QuantizationKernels>().forward(src, dst, encTable);
}

void ownqj_QuantInv_8x8_16s(const int16_t* src, int16_t* dst, const uint16_t* decTable)
{
    kernels<QuantizationKernels>().inverse(src, dst, decTable);
}

void ownqj_QuantInv_8x8_16s_I(int16_t* srcDst, const uint16_t* decTable)
{
    kernels<QuantizationKernels>().inverse(srcDst, srcDst, decTable);
}
