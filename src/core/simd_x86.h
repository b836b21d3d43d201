// SPDX-License-Identifier: Apache-2.0
// Simd<16>, <32> and <64> with x86 intrinsics, as far as this build's instruction set goes. Each has the operations
// that PortableSimd defines.
#pragma once

#include "core/simd_x86_16.h"
#if defined(__AVX2__)
#include "core/simd_x86_32.h"
#endif
#if defined(__AVX512VBMI__) && defined(__AVX512BW__)
#include "core/simd_x86_64.h"
#endif
