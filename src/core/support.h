// Support primitives: the table of their kernels, and the exported doors.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/exports.h"

namespace qel {

struct SupportKernels {
    // Lengths are in elements of the source, for copies in bytes. The names with Past store past the caches; what they
    // stored is ordered before later stores by finishStores only.
    void (*copyPast)(const uint8_t* src, uint8_t* dst, size_t len);
    void (*finishStores)();
    void (*convert8u16u)(const uint8_t* src, uint16_t* dst, size_t len);
    void (*convert8u16uPast)(const uint8_t* src, uint16_t* dst, size_t len);
    void (*and32s)(const int32_t* src, int32_t value, int32_t* dst, int len);
    void (*set32s)(int32_t value, int32_t* dst, int len);
    void (*mulScaled)(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale);

    static const SupportKernels baseline, avx2, avx512;
    static const SupportKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL void ownsZero_8u(uint8_t* dst, size_t len);
QEL_KERNEL void ownsSet_32s(int32_t value, int32_t* dst, int len);
QEL_KERNEL void ownsCopy_8u(const uint8_t* src, uint8_t* dst, size_t len);
// Copies and converts one row; `past` selects stores that bypass the caches.
QEL_KERNEL void owniCopy_8u_C1(const uint8_t* src, uint8_t* dst, size_t len, int past);
QEL_KERNEL void owniConvert_8u16u(const uint8_t* src, uint16_t* dst, size_t len, int past);
// dst = table * src / 2^scale, to nearest, ties to even, saturated to 16 bits; scale is 0 to 31. May be in place.
QEL_KERNEL void ownsMul_16u16s_PosSfs(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale);
