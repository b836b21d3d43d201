// SPDX-License-Identifier: Apache-2.0
// Quantization: the internal functions that the library exports beside its interface. They check nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/block/quantization.h"

using namespace qel;

QEL_KERNEL void ownqj_QuantFwd_8x8_Sfs15_16s(const int16_t* src, int16_t* dst, const uint16_t* encTable)
{
    kernels<QuantizationKernels>().forward(src, dst, encTable);
}

QEL_KERNEL void ownqj_QuantInv_8x8_16s(const int16_t* src, int16_t* dst, const uint16_t* decTable)
{
    kernels<QuantizationKernels>().inverse(src, dst, decTable);
}

QEL_KERNEL void ownqj_QuantInv_8x8_16s_I(int16_t* srcDst, const uint16_t* decTable)
{
    kernels<QuantizationKernels>().inverse(srcDst, srcDst, decTable);
}
