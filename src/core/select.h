// SPDX-License-Identifier: Apache-2.0
// Choices between values that are never branches: for those that no processor can predict.
#pragma once

#include <stdint.h>

#include "core/inline.h"

namespace qel {

// Compilers make branches of their own choices again, hence the instructions.
#if QEL_X86 && defined(__x86_64__)
// `a` if the condition is not 0, else `b`.
QEL_INLINE uint64_t select(uint32_t condition, uint64_t a, uint64_t b)
{
    asm("test %1, %1\n\tcmovne %2, %0" : "+r"(b) : "r"(condition), "r"(a) : "cc");
    return b;
}
// x, y, z become a, b, c if the condition is not 0.
QEL_INLINE void replaceIf(uint32_t condition, uint32_t& x, uint32_t a, uint32_t& y, uint32_t b, uint32_t& z, uint32_t c)
{
    asm("test %3, %3\n\tcmovne %4, %0\n\tcmovne %5, %1\n\tcmovne %6, %2"
        : "+&r"(x), "+&r"(y), "+&r"(z)
        : "r"(condition), "r"(a), "r"(b), "r"(c)
        : "cc");
}
#elif defined(__aarch64__)
QEL_INLINE uint64_t select(uint32_t condition, uint64_t a, uint64_t b)
{
    asm("cmp %w1, #0\n\tcsel %0, %2, %0, ne" : "+r"(b) : "r"(condition), "r"(a) : "cc");
    return b;
}
QEL_INLINE void replaceIf(uint32_t condition, uint32_t& x, uint32_t a, uint32_t& y, uint32_t b, uint32_t& z, uint32_t c)
{
    asm("cmp %w3, #0\n\tcsel %w0, %w4, %w0, ne\n\tcsel %w1, %w5, %w1, ne\n\tcsel %w2, %w6, %w2, ne"
        : "+&r"(x), "+&r"(y), "+&r"(z)
        : "r"(condition), "r"(a), "r"(b), "r"(c)
        : "cc");
}
#else
QEL_INLINE uint64_t select(uint32_t condition, uint64_t a, uint64_t b) { return condition ? a : b; }
QEL_INLINE void replaceIf(uint32_t condition, uint32_t& x, uint32_t a, uint32_t& y, uint32_t b, uint32_t& z, uint32_t c)
{
    x = condition ? a : x;
    y = condition ? b : y;
    z = condition ? c : z;
}
#endif

}
