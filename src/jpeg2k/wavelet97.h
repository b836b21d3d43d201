// The irreversible 9/7 wavelet: its kernels, and their exported doors.
#pragma once

#include "core/exports.h"
#include "jpeg2k/wavelet.h"
#include "qeljx/types.h"

namespace qel {

struct Wavelet97Kernels {
    LiftingKernels<int16_t> of16s; // fixed point
    LiftingKernels<int32_t> of32s; // single precision between integers
    LiftingKernels<float> of32f;

    static const Wavelet97Kernels baseline, avx2, avx512;
    static const Wavelet97Kernels scalar, wide16, wide32, wide64;
};

}

// A line of `len` samples in place, low and high in turns, with four samples of extension on both sides. A column is
// read into such a line first, so both names do the same.
QEL_KERNEL void ownqj_WTFwd_D97_Row_16s(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_D97_Row_32s(int32_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_D97_Col_16s(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_D97_Col_32s(int32_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_D97_Row_16s(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_D97_Row_32s(int32_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_D97_Col_16s(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_D97_Col_32s(int32_t* line, int len, int phase);
// A row of `len` pairs, and columns of size.height pairs, extended as for the functions of the interface.
QEL_KERNEL void ownqj_WTFwd_D97_32f(const float* src, float* low, float* high, int len, int phase);
QEL_KERNEL void ownqj_WTFwdColStripe_D97_32f(const float* src, int srcStep, float* low, int lowStep, float* high,
                                             int highStep, QelSize size, int phase);
QEL_KERNEL void ownqj_WTInvColStripe_D97_32f(const float* low, int lowStep, const float* high, int highStep,
                                             QelSize size, float* dst, int dstStep, int phase);
