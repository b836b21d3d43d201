// SPDX-License-Identifier: Apache-2.0
// Wavelets: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "qeljx/types.h"

// --- 5/3.

// A row of `len` pairs, extended as for the row functions of the interface.
QEL_KERNEL void ownqj_WTFwd_B53_16s(const int16_t* src, int16_t* low, int16_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_B53_32s(const int32_t* src, int32_t* low, int32_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_16s(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_32s(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase);
// The same with non-temporal stores.
QEL_KERNEL void ownqj_WTFwd_B53_16s_NT(const int16_t* src, int16_t* low, int16_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTFwd_B53_32s_NT(const int32_t* src, int32_t* low, int32_t* high, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_16s_NT(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WTInv_B53_32s_NT(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase);
// A line of `len` samples in place, low and high interleaved, with its extension on both sides (see
// line_mover_doors.h).
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

// --- 9/7.

// A line of `len` samples in place, low and high interleaved, with four samples of extension on both sides. A column is
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
