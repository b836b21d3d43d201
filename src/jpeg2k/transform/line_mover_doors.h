// SPDX-License-Identifier: Apache-2.0
// Moves lines between a picture and a line buffer, with their symmetric extension: internal functions that the
// library exports beside its interface. They check nothing.
//
// A line is `len` samples, low and high interleaved; the first is high if `phase` is not 0. The extension lies
// around it: of ReadExt as many samples on each side as 5/3 forward needs, of ReadInterleaveExt as 5/3 inverse needs (1
// or 2, by the phase and the length), of the Ext4 forms four. Interleave forms go from or to the low half, which is
// followed by the high half. Row forms move neighbouring samples, Col forms those `step` bytes apart.
#pragma once

#include <stdint.h>

#include "core/exports.h"

QEL_KERNEL void ownqj_ReadExt_Row_16s(const int16_t* src, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadExt_Row_32s(const int32_t* src, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadExt_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadExt_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadExt4_Row_16s(const int16_t* src, int16_t* dst, int len);
QEL_KERNEL void ownqj_ReadExt4_Row_32s(const int32_t* src, int32_t* dst, int len);
QEL_KERNEL void ownqj_ReadExt4_Col_16s(const int16_t* src, int step, int16_t* dst, int len);
QEL_KERNEL void ownqj_ReadExt4_Col_32s(const int32_t* src, int step, int32_t* dst, int len);
QEL_KERNEL void ownqj_ReadInterleaveExt_Row_16s(const int16_t* src, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt_Row_32s(const int32_t* src, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt4_Row_16s(const int16_t* src, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt4_Row_32s(const int32_t* src, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt4_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_ReadInterleaveExt4_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WriteInterleave_Row_16s(const int16_t* src, int16_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WriteInterleave_Row_32s(const int32_t* src, int32_t* dst, int len, int phase);
QEL_KERNEL void ownqj_WriteInterleave_Col_16s(const int16_t* src, int16_t* dst, int step, int len, int phase);
QEL_KERNEL void ownqj_WriteInterleave_Col_32s(const int32_t* src, int32_t* dst, int step, int len, int phase);
QEL_KERNEL void ownqj_Write_Row_16s(const int16_t* src, int16_t* dst, int len);
QEL_KERNEL void ownqj_Write_Row_32s(const int32_t* src, int32_t* dst, int len);
QEL_KERNEL void ownqj_Write_Col_16s(const int16_t* src, int16_t* dst, int step, int len);
QEL_KERNEL void ownqj_Write_Col_32s(const int32_t* src, int32_t* dst, int step, int len);
