// SPDX-License-Identifier: Apache-2.0
// The 8x8 DCT: exported internal functions.
#include "jpeg/block/dct_doors.h"

#include "core/dispatch.h"
#include "jpeg/block/dct.h"

using namespace qel;

void dct_8x8_fwd_16s(const int16_t* src, int16_t* dst) { kernels<DctKernels>().forward(src, dst); }
void dct_8x8_inv_16s(const int16_t* src, int16_t* dst) { kernels<DctKernels>().inverse(src, dst); }

void own_8x8_LSClip_16s8u(const int16_t* src, uint8_t* dst, int dstStep, int16_t shift, uint8_t min, uint8_t max)
{
    kernels<DctKernels>().clip(src, dst, dstStep, shift, min, max);
}
