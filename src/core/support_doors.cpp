// SPDX-License-Identifier: Apache-2.0
// Support primitives: exported internal functions.
#include "core/support_doors.h"

#include <string.h>

#include "core/dispatch.h"
#include "core/support.h"

using namespace qel;

void ownsZero_8u(uint8_t* dst, size_t len) { memset(dst, 0, len); }

void ownsSet_32s(int32_t value, int32_t* dst, int len) { kernels<SupportKernels>().set32s(value, dst, len); }

void ownsCopy_8u(const uint8_t* src, uint8_t* dst, size_t len) { memcpy(dst, src, len); }

void owniCopy_8u_C1(const uint8_t* src, uint8_t* dst, size_t len, int streams)
{
    auto& table = kernels<SupportKernels>();
    if (!streams) return table.copy(src, dst, len);
    table.copy.streamed(src, dst, len);
    table.fence();
}

void owniConvert_8u16u(const uint8_t* src, uint16_t* dst, size_t len, int streams)
{
    auto& table = kernels<SupportKernels>();
    if (!streams) return table.convert8u16u(src, dst, len);
    table.convert8u16u.streamed(src, dst, len);
    table.fence();
}

void ownsMul_16u16s_PosSfs(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale)
{
    kernels<SupportKernels>().mulScaled(table, src, dst, len, scale);
}
