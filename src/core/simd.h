// SPDX-License-Identifier: Apache-2.0
// Simd<N>: the operations on registers of N bytes, by intrinsics where this build has them, else as they are defined.
#pragma once

#include "core/portable_simd.h"
#if QEL_INTRINSICS && QEL_X86
#include "core/simd_x86.h"
#elif QEL_INTRINSICS
#include "core/simd_neon.h"
#endif
