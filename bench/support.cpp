// SPDX-License-Identifier: Apache-2.0
// Copy, convert, logic, division and zig-zag primitives, beside the C library's memcpy.
#include "qeljx/support.h"

#include <string.h>

#include "cases.h"
#include "core/rows.h"
#include "operations.h"

namespace qel::bench {
namespace {

constexpr Layout kBytes = {1, 1, 1}, kWords = {1, 1, 2}, kDoubleWords = {1, 1, 4};

// memcpy row by row.
Peer memcpyOf(int bytes)
{
    auto run = [=](const Pictures& p) {
        forRows(p.roi, [&](int r) {
            memcpy(rowAt((*p.dst)[0], p.dst->step(), r), rowAt((*p.src)[0], p.src->step(), r), p.roi.width * bytes);
        });
    };
    return {"memcpy", run, 0};
}

void andC(const Pictures& p)
{
    succeed(qeliAndC_32s_C1R((const int32_t*)(*p.src)[0], p.src->step(), 0x7FFFFFFF, (int32_t*)(*p.dst)[0],
                             p.dst->step(), p.roi));
}

void divCRev(const Pictures& p)
{
    forRows(p.roi, [&](int r) {
        auto src = rowAt((*p.src)[0], p.src->step(), r), dst = rowAt((*p.dst)[0], p.dst->step(), r);
        succeed(qelsDivCRev_16u((const uint16_t*)src, 32768, (uint16_t*)dst, p.roi.width));
    });
}

}

void addSupportCases()
{
    for (auto& operation : {
             Operation{"Convert_8u16u", kBytes, kWords, call(qeliConvert_8u16u_C1R)},
             Operation{"Copy_16s", kWords, kWords, call(qeliCopy_16s_C1R), nullptr, {memcpyOf(2)}},
             Operation{"Copy_32f", kDoubleWords, kDoubleWords, call(qeliCopy_32f_C1R), nullptr, {memcpyOf(4)}},
             Operation{"AndC_32s", kDoubleWords, kDoubleWords, andC},
             Operation{"DivCRev_16u", kWords, kWords, divCRev},
         })
        addOperation("support", operation);
}

}
