// The reversible 5/3 wavelet: its kernels, and their exported doors.
#pragma once

#include "core/exports.h"
#include "jpeg2k/wavelet.h"
#include "qeljx/types.h"

namespace qel {

struct Wavelet53Kernels {
    LiftingKernels<int16_t> of16s;
    LiftingKernels<int32_t> of32s;

    static const Wavelet53Kernels baseline, avx2, avx512;
    static const Wavelet53Kernels scalar, wide16, wide32, wide64;
};

}

// A row of `len` pairs, extended as for the row functions of the interface.
QEL_KERNEL void ownqj_WTFwd_B53_16s(const int16_t* src, int16_t* low, int16_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_B53_32s(const int32_t* src, int32_t* low, int32_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_16s(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_32s(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase);
// The same, past the caches.
QEL_KERNEL void ownqj_WTFwd_B53_16s_NT(const int16_t* src, int16_t* low, int16_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_B53_32s_NT(const int32_t* src, int32_t* low, int32_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_16s_NT(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_32s_NT(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase);
// A line of `len` samples in place, low and high in turns, with its extension on both sides (see line_movers.h).
QEL_KERNEL void ownqj_WTFwd_B53_16s_I(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_B53_32s_I(int32_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_16s_I(int16_t* line, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_32s_I(int32_t* line, int len, int phase);
// Columns of size.height pairs.
QEL_KERNEL void ownqj_WTFwdColStrip_B53_16s(const int16_t* src, int srcStep, int16_t* low, int lowStep, int16_t* high,
                                            int highStep, QelSize size, int phase);
QEL_KERNEL void ownqj_WTFwdColStrip_B53_32s(const int32_t* src, int srcStep, int32_t* low, int lowStep, int32_t* high,
                                            int highStep, QelSize size, int phase);
QEL_KERNEL void ownqj_WTInvColStrip_B53_16s(const int16_t* low, int lowStep, const int16_t* high, int highStep,
                                            QelSize size, int16_t* dst, int dstStep, int phase);
QEL_KERNEL void ownqj_WTInvColStrip_B53_32s(const int32_t* low, int lowStep, const int32_t* high, int highStep,
                                            QelSize size, int32_t* dst, int dstStep, int phase);
