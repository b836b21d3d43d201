// SPDX-License-Identifier: Apache-2.0
// Chroma sampling by two: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include <stdint.h>

#include "core/exports.h"

QEL_KERNEL void ownqj_SampleDownH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleDownH2V2_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleUpH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleUpH2V2_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth);
QEL_KERNEL void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst);
// A second name of the same kernel.
QEL_KERNEL void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1_SSE2(const uint8_t* src, int srcWidth, uint8_t* dst);
QEL_KERNEL void ownqj_SampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, int srcWidth,
                                                       uint8_t* dst);
QEL_KERNEL void ownqj_SampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst);
QEL_KERNEL void ownqj_SampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, int srcWidth,
                                                          uint8_t* dst);
