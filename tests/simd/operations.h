// SPDX-License-Identifier: Apache-2.0
// Each register operation of a build beside its definition; see operations_kernels.cpp.
#pragma once

#include <stdint.h>

namespace qel {

struct SimdOperation {
    const char* name;
    int inputBytes;
    int outputBytes;
    void (*run)(const uint8_t* in, uint8_t* out);    // what kernels of this build use
    void (*define)(const uint8_t* in, uint8_t* out); // PortableSimd
};

struct SimdOperations {
    const SimdOperation* list;
    int count;

    static const SimdOperations baseline, avx2, avx512;
    static const SimdOperations scalar, wide16, wide32, wide64;
};

}
