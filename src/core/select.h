// Choices between values that are never branches: for those that no processor can predict.
#pragma once

#include <stdint.h>

#include "core/inline.h"

namespace qel {

// `a` if the condition is not 0, else `b`. Compilers make branches of their own choices again, hence the instruction.
#if QEL_X86 && defined(__x86_64__)
QEL_INLINE uint64_t select(uint32_t condition, uint64_t a, uint64_t b)
{
    asm("test %1, %1\n\tcmovne %2, %0" : "+r"(b) : "r"(condition), "r"(a) : "cc");
    return b;
}
#else
QEL_INLINE uint64_t select(uint32_t condition, uint64_t a, uint64_t b) { return condition ? a : b; }
#endif

}
