// SPDX-License-Identifier: Apache-2.0
// Level shift: the internal functions that the library exports beside its interface. They check nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "core/rows.h"
#include "jpeg/block/level_shift.h"

using namespace qel;

QEL_KERNEL void ownqj_Sub128_JPEG_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, QelSize roi)
{
    auto sub = kernels<LevelShiftKernels>().sub128.cached;
    forRows(roi, [=](int r) { sub(rowAt(src, srcStep, r), rowAt(dst, dstStep, r), roi.width); });
}

QEL_KERNEL void ownqj_Add128_JPEG_16s8u_C1R(const int16_t* src, int srcStep, uint8_t* dst, int dstStep, QelSize roi)
{
    auto add = kernels<LevelShiftKernels>().add128.cached;
    forRows(roi, [=](int r) { add(rowAt(src, srcStep, r), rowAt(dst, dstStep, r), roi.width); });
}

QEL_KERNEL void ownqj_Sub128_JPEG_8u16s_C1(const uint8_t* src, int16_t* dst, int len)
{
    kernels<LevelShiftKernels>().sub128(src, dst, len);
}

QEL_KERNEL void ownqj_Add128_JPEG_16s8u_C1(const int16_t* src, uint8_t* dst, int len)
{
    kernels<LevelShiftKernels>().add128(src, dst, len);
}

// 8 rows of 8 samples to and from a contiguous block.
QEL_KERNEL void ownqj_Sub128_8x8_8u16s(const uint8_t* src, int srcStep, int16_t* dst)
{
    kernels<LevelShiftKernels>().sub128Block(src, srcStep, dst);
}

QEL_KERNEL void ownqj_Add128_8x8_16s8u(const int16_t* src, uint8_t* dst, int dstStep)
{
    kernels<LevelShiftKernels>().add128Block(src, dst, dstStep);
}
