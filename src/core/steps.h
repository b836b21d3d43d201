// How kernels walk a row: in steps of whole registers, down to single elements. Included by core/simd.h.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/inline.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// A number of bytes as a type: the width of one step of inSteps.
template <int N> struct Bytes {
    static constexpr int value = N;
};

// Walks a row of n elements: body(Bytes<N>(), i) is to do the N elements from i on. First the widest registers that
// fit, then 16 bytes (without that step a short row takes as long as several hundred elements), then one at a time.
template <class Count, class Body> QEL_INLINE void inSteps(Count n, Body body)
{
    Count i = 0;
    if constexpr (QEL_WIDTH > 16)
        for (; n - i >= QEL_WIDTH; i += QEL_WIDTH) body(Bytes<QEL_WIDTH>(), i);
    if constexpr (QEL_WIDTH >= 16)
        for (; n - i >= 16; i += 16) body(Bytes<16>(), i);
    for (; i < n; ++i) body(Bytes<1>(), i);
}

// The same for elements T, of which body(Bytes<N>(), i) is to do one register full: N / sizeof(T), or one where N is 1.
template <class T, class Body> QEL_INLINE void inRegisters(ptrdiff_t n, Body body)
{
    ptrdiff_t i = 0;
    constexpr int kWide = QEL_WIDTH / sizeof(T), kNarrow = 16 / sizeof(T);
    if constexpr (QEL_WIDTH > 16)
        for (; n - i >= kWide; i += kWide) body(Bytes<QEL_WIDTH>(), i);
    if constexpr (QEL_WIDTH >= 16)
        for (; n - i >= kNarrow; i += kNarrow) body(Bytes<16>(), i);
    for (; i < n; ++i) body(Bytes<1>(), i);
}

// Like inSteps, but from `begin` to `end` for a body that may do elements twice: what is left of the row is done by a
// step that ends with it, so that only rows of less than 16 elements go one at a time. All steps between the first and
// the last start where i + phase is a multiple of their width.
template <class Body> QEL_INLINE void inOverlappingSteps(ptrdiff_t begin, ptrdiff_t end, ptrdiff_t phase, Body body)
{
    auto walk = [=](auto step) {
        ptrdiff_t i = begin, stride = step.value - ((begin + phase) & (step.value - 1)), last = end - step.value;
        for (; i < last; i += stride, stride = step.value) body(step, i);
        body(step, last);
    };
    if constexpr (QEL_WIDTH > 16)
        if (end - begin >= QEL_WIDTH) return walk(Bytes<QEL_WIDTH>());
    if constexpr (QEL_WIDTH >= 16)
        if (end - begin >= 16) return walk(Bytes<16>());
    for (ptrdiff_t i = begin; i < end; ++i) body(Bytes<1>(), i);
}

// Bytes of a cache line.
constexpr ptrdiff_t kLine = 64;

// For a row of output past the caches, kBytes for each of its n elements from `dst` on: past(Bytes<N>(), i) fills whole
// lines, plain(Bytes<N>(), i, out) writes to `out` what lies in others. A line that is stored both ways costs more than
// a row gains, and so does waiting for the line at the end, which has to be read.
template <int kBytes, class Plain, class Past>
QEL_INLINE void inLines(ptrdiff_t n, uint8_t* dst, Plain plain, Past past)
{
    constexpr ptrdiff_t kWidth = QEL_WIDTH < 16 ? 16 : QEL_WIDTH,
                        kUnit = kWidth < kLine / kBytes ? kLine / kBytes : kWidth;
    if (n < kWidth) return inSteps(n, [=](auto step, ptrdiff_t i) { plain(step, i, dst + kBytes * i); });

    __builtin_prefetch(dst + kBytes * n, 1);
    auto partOfLine = [=](ptrdiff_t i, ptrdiff_t end) {
        for (; end - i >= kWidth; i += kWidth) plain(Bytes<kWidth>(), i, dst + kBytes * i);
        ptrdiff_t from = i < n - kWidth ? i : n - kWidth;
        uint8_t room[kBytes * kWidth];
        plain(Bytes<kWidth>(), from, room);
        __builtin_memcpy(dst + kBytes * i, room + kBytes * (i - from), size_t(kBytes * (end - i)));
    };
    auto before = ptrdiff_t(-(uintptr_t)dst % kLine);
    ptrdiff_t first = before % kBytes != 0 || before / kBytes > n ? n : before / kBytes;
    ptrdiff_t last = first + (n - first) / kUnit * kUnit;
    partOfLine(0, first);
    for (ptrdiff_t i = first; i < last; i += kWidth) past(Bytes<kWidth>(), i);
    partOfLine(last, n);
}

}
}
}
