// SPDX-License-Identifier: Apache-2.0
// Support primitives: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/exports.h"

QEL_KERNEL void ownsZero_8u(uint8_t* dst, size_t len);
QEL_KERNEL void ownsSet_32s(int32_t value, int32_t* dst, int len);
QEL_KERNEL void ownsCopy_8u(const uint8_t* src, uint8_t* dst, size_t len);
// Copies and converts one row; `streams` selects stores that bypass the caches.
QEL_KERNEL void owniCopy_8u_C1(const uint8_t* src, uint8_t* dst, size_t len, int streams);
QEL_KERNEL void owniConvert_8u16u(const uint8_t* src, uint16_t* dst, size_t len, int streams);
// dst = table * src / 2^scale, to nearest, ties to even, saturated to 16 bits; scale is 0 to 31. May be in place.
QEL_KERNEL void ownsMul_16u16s_PosSfs(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale);
