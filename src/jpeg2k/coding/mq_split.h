// SPDX-License-Identifier: Apache-2.0
// A decision of the MQ decoder (T.800 C.3.2) but for renormalisation. For kernels.
#pragma once

#include "core/inline.h"
#include "jpeg2k/coding/mq_rows.h"

namespace qel::QEL_BUILD {
namespace {

QEL_INLINE const MqRow& rowAt(uint64_t row) { return *(const MqRow*)((const uint8_t*)&kMqRows + row); }

#if QEL_INTRINSICS && QEL_X86 && defined(__x86_64__)

// Compilers make branches of the selections, which processors then cannot predict.
QEL_INLINE unsigned splitInterval(uint64_t& code, uint64_t& interval, uint64_t& context)
{
    const MqRow& row = rowAt(context);
    uint64_t upper = code, next = context, nextOfUpper = row.afterLps, sum = context / sizeof(MqRow);
    asm("sub %[qe], %[interval]\n\t"
        "cmovnsl %[afterMps], %k[next]\n\t"
        "cmp %[qe], %[interval]\n\t"
        "cmovbl %[afterLps], %k[next]\n\t"
        "cmovbl %[afterMps], %k[nextOfUpper]\n\t"
        "adc $0, %[sum]\n\t" // the interval is smaller than Qe
        "sub %[interval], %[upper]\n\t"
        "cmovae %[upper], %[code]\n\t"
        "cmovae %[qe], %[interval]\n\t"
        "cmovae %[nextOfUpper], %[next]\n\t"
        "sbb $-1, %[sum]" // the code is in the upper part
        : [interval] "+&r"(interval), [next] "+&r"(next), [nextOfUpper] "+&r"(nextOfUpper), [upper] "+&r"(upper),
          [code] "+&r"(code), [sum] "+&r"(sum)
        : [qe] "r"(row.qe), [afterMps] "m"(row.afterMps), [afterLps] "m"(row.afterLps)
        : "cc");
    context = next;
    return unsigned(sum) & 1;
}

#elif QEL_INTRINSICS && defined(__aarch64__)

QEL_INLINE unsigned splitInterval(uint64_t& code, uint64_t& interval, uint64_t& context)
{
    const MqRow& row = rowAt(context);
    uint64_t next = context, nextOfUpper = row.afterLps, upper;
    uint32_t sum = uint32_t(context / sizeof(MqRow));
    asm("subs %[interval], %[interval], %[qe]\n\t"
        "csel %[next], %[next], %[afterMps], mi\n\t"
        "cmp %[interval], %[qe]\n\t"
        "csel %[next], %[afterLps], %[next], lo\n\t"
        "csel %[nextOfUpper], %[afterMps], %[nextOfUpper], lo\n\t"
        "cinc %w[sum], %w[sum], lo\n\t" // the interval is smaller than Qe
        "subs %[upper], %[code], %[interval]\n\t"
        "csel %[code], %[upper], %[code], hs\n\t"
        "csel %[interval], %[qe], %[interval], hs\n\t"
        "csel %[next], %[nextOfUpper], %[next], hs\n\t"
        "cinc %w[sum], %w[sum], hs" // the code is in the upper part
        : [interval] "+&r"(interval), [next] "+&r"(next), [nextOfUpper] "+&r"(nextOfUpper), [upper] "=&r"(upper),
          [code] "+&r"(code), [sum] "+&r"(sum)
        : [qe] "r"(row.qe), [afterMps] "r"(uint64_t(row.afterMps)), [afterLps] "r"(uint64_t(row.afterLps))
        : "cc");
    context = next;
    return sum & 1;
}

#else

// Code and interval in the upper 16 bits; the code may have more below. Returns the decision.
QEL_INLINE unsigned splitInterval(uint64_t& code, uint64_t& interval, uint64_t& context)
{
    const MqRow& row = rowAt(context);
    uint64_t lower = interval - row.qe;
    bool isUpper = code >= lower, isLps = isUpper != (lower < row.qe);
    unsigned mps = context / sizeof(MqRow) % 2;
    if (isLps)
        context = row.afterLps;
    else if (isUpper || lower >> 63 == 0)
        context = row.afterMps;
    code -= isUpper ? lower : 0;
    interval = isUpper ? row.qe : lower;
    return mps ^ isLps;
}

#endif

}
}
