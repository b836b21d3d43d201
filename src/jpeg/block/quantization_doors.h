// SPDX-License-Identifier: Apache-2.0
// Quantization: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include <stdint.h>

#include "core/exports.h"

QEL_KERNEL void ownqj_QuantFwd_8x8_Sfs15_16s(const int16_t* src, int16_t* dst, const uint16_t* encTable);
QEL_KERNEL void ownqj_QuantInv_8x8_16s(const int16_t* src, int16_t* dst, const uint16_t* decTable);
QEL_KERNEL void ownqj_QuantInv_8x8_16s_I(int16_t* srcDst, const uint16_t* decTable);
