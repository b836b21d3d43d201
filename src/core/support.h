// SPDX-License-Identifier: Apache-2.0
// Support primitives: the table of their kernels.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

// Lengths are in elements of the source.
struct SupportKernels {
    Streamable<void(const uint8_t* src, uint8_t* dst, size_t len)> copy;
    Streamable<void(const uint8_t* src, uint16_t* dst, size_t len)> convert8u16u;
    // Orders streamed stores before all later ones.
    void (*fence)();
    void (*and32s)(const int32_t* src, int32_t value, int32_t* dst, int len);
    void (*set32s)(int32_t value, int32_t* dst, int len);
    // dst = table * src / 2^scale, to nearest, ties to even, saturated to 16 bits; scale is 0 to 31. May be in place.
    void (*mulScaled)(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale);

    QEL_BUILDS(SupportKernels);
};

}
