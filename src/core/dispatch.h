// SPDX-License-Identifier: Apache-2.0
// Chooses the kernels for this processor. Nothing is stored: each call asks the CPU model that the compiler's runtime
// read at load time, which costs less than a nanosecond; take the table before a loop, not inside it.
#pragma once

namespace qel {

// Every feature that the build is compiled with (cmake/kernels.cmake) is tested, but for LZCNT, which all processors
// with BMI have: compilers have no common name for it.
template <class Family> inline const Family& kernels()
{
#if QEL_X86
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
        __builtin_cpu_supports("popcnt")) {
        if constexpr (requires { Family::avx512; })
            if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
                __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi") &&
                __builtin_cpu_supports("avx512vbmi2"))
                return Family::avx512;
        return Family::avx2;
    }
#endif
    return Family::baseline;
}

}
