// Level shift: the table of its row and block kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "qeljx/types.h"

namespace qel {

struct LevelShiftKernels {
    void (*sub128)(const uint8_t* src, int16_t* dst, int len);
    void (*add128)(const int16_t* src, uint8_t* dst, int len);
    // Past the caches.
    void (*sub128Past)(const uint8_t* src, int16_t* dst, int len);
    void (*add128Past)(const int16_t* src, uint8_t* dst, int len);
    void (*sub128Block)(const uint8_t* src, int srcStep, int16_t* dst);
    void (*add128Block)(const int16_t* src, uint8_t* dst, int dstStep);

    static const LevelShiftKernels baseline, avx2, avx512;
    static const LevelShiftKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL void ownqj_Sub128_JPEG_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, QelSize roi);
QEL_KERNEL void ownqj_Add128_JPEG_16s8u_C1R(const int16_t* src, int srcStep, uint8_t* dst, int dstStep, QelSize roi);
QEL_KERNEL void ownqj_Sub128_JPEG_8u16s_C1(const uint8_t* src, int16_t* dst, int len);
QEL_KERNEL void ownqj_Add128_JPEG_16s8u_C1(const int16_t* src, uint8_t* dst, int len);
// 8 rows of 8 samples to and from a contiguous block.
QEL_KERNEL void ownqj_Sub128_8x8_8u16s(const uint8_t* src, int srcStep, int16_t* dst);
QEL_KERNEL void ownqj_Add128_8x8_16s8u(const int16_t* src, uint8_t* dst, int dstStep);
