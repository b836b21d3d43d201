// SPDX-License-Identifier: Apache-2.0
// The 8x8 DCT: the internal functions that the library exports beside its interface. They check nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/block/dct.h"

using namespace qel;

QEL_KERNEL void dct_8x8_fwd_16s(const int16_t* src, int16_t* dst) { kernels<DctKernels>().forward(src, dst); }
QEL_KERNEL void dct_8x8_inv_16s(const int16_t* src, int16_t* dst) { kernels<DctKernels>().inverse(src, dst); }

QEL_KERNEL void own_8x8_LSClip_16s8u(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min,
                                     uint8_t max)
{
    kernels<DctKernels>().clip(src, dst, dstStep, shift, min, max);
}
